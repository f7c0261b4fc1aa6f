#pragma once

#include "renderbackend/Export.h"

#include <cstddef>
#include <string>
#include <vector>

/// A way in which a GL call fails.
enum class GlFault {
    /// Nothing is done, no error is raised, and the answer says so: name 0, null, GL_FALSE, a status of 0, an
    /// incomplete framebuffer. glUnmapBuffer loses the mapping; GL_MAX_TEXTURE_SIZE is as small as kSmallTexture.
    Refused,
    /// GL_OUT_OF_MEMORY is raised. Calls that take memory, and queries, do nothing; what takes none, such as binding
    /// and deleting, is carried out all the same.
    OutOfMemory,
    /// The context is lost, for ever: nothing is done and no query is answered any more, and each glGetError returns
    /// GL_CONTEXT_LOST. Deleting alone is carried out, so that what the library keeps can be counted.
    ContextLost
};

/// Which call of GL fails, and how: the recording GL and the one that stands before a real GL play it. GL thread only.
class VELMORA_EXPORT GlFaultPlan {
public:
    static constexpr int kSmallTexture = 2;
    static constexpr unsigned kContextLost = 0x0507; ///< GL_CONTEXT_LOST, which OpenGL ES 3.0 does not have

    /// The one of this program.
    static GlFaultPlan& instance();

    /// How calls of a function can fail. None: glGetError, and queries of state that only checked builds make.
    static std::vector<GlFault> waysOf(std::string const& function);

    /// Counts calls from now on; none fails.
    void count();
    /// The same, and the n-th call fails, n from 0; forEver: so do all behind it, those of the same function where it
    /// is Refused, all where memory is out or the context lost.
    void play(size_t n, GlFault fault, bool forEver);
    /// Nothing fails or is counted any more.
    void stop() { counting_ = false; }

    /// Whether a call has come by now with which the context was lost.
    bool isContextLost() const {
        return counting_ && playing_ && fault_ == GlFault::ContextLost && calls_.size() > failing_;
    }

    /// The functions called since then, in their order.
    std::vector<std::string> const& calls() const { return calls_; }
    /// The calls that failed since then.
    size_t failures() const { return failures_; }

    enum class Verdict {
        Right,
        Refused,      ///< do nothing
        OutOfMemory,  ///< raise the error and do nothing
        PendingError, ///< raise the error and carry the call out
        Lost          ///< do nothing, for the context is lost
    };
    /// Asked once by each call.
    Verdict next(char const* function);

private:
    bool isDue(std::string const& function) const;

    bool counting_ = false;
    bool playing_ = false;
    size_t failing_ = 0;
    GlFault fault_ = GlFault::Refused;
    bool forEver_ = false;
    size_t failures_ = 0;
    std::vector<std::string> calls_;
};
