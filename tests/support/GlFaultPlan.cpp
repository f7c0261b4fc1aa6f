#include "tests/support/GlFaultPlan.h"

#include <algorithm>
#include <set>

namespace {

// Their answer can say that they were not carried out.
std::set<std::string> const& refusable() {
    static std::set<std::string> const functions{
        "glGenTextures",    "glGenBuffers",  "glGenFramebuffers", "glCreateShader", "glCreateProgram",
        "glMapBufferRange", "glUnmapBuffer", "glGetShaderiv",     "glGetProgramiv", "glCheckFramebufferStatus",
        "glGetIntegerv"};
    return functions;
}

// They take memory, or deliver what GL has.
std::set<std::string> const& failing() {
    static std::set<std::string> const functions{"glGenTextures",          "glGenBuffers",
                                                 "glGenFramebuffers",      "glCreateShader",
                                                 "glCreateProgram",        "glMapBufferRange",
                                                 "glUnmapBuffer",          "glGetShaderiv",
                                                 "glGetProgramiv",         "glCheckFramebufferStatus",
                                                 "glGetIntegerv",          "glBufferData",
                                                 "glBufferSubData",        "glTexImage2D",
                                                 "glTexSubImage2D",        "glGenerateMipmap",
                                                 "glFramebufferTexture2D", "glReadPixels",
                                                 "glDrawElements",         "glClear",
                                                 "glShaderSource",         "glCompileShader",
                                                 "glAttachShader",         "glLinkProgram",
                                                 "glGetShaderInfoLog",     "glGetProgramInfoLog",
                                                 "glGetActiveAttrib",      "glGetActiveUniform",
                                                 "glGetAttribLocation",    "glGetUniformLocation"};
    return functions;
}

// A refused one is no failure that GL knows of, or only a checked build asks.
std::set<std::string> const& faultless() {
    static std::set<std::string> const functions{"glGetError", "glIsEnabled", "glGetBooleanv", "glGetVertexAttribiv"};
    return functions;
}

bool isDeletion(std::string const& function) {
    return function.rfind("glDelete", 0) == 0;
}

} // namespace

GlFaultPlan& GlFaultPlan::instance() {
    static GlFaultPlan plan;
    return plan;
}

std::vector<GlFault> GlFaultPlan::waysOf(std::string const& function) {
    if (faultless().count(function) != 0) return {};
    if (refusable().count(function) != 0) return {GlFault::Refused, GlFault::OutOfMemory};
    return {GlFault::OutOfMemory};
}

void GlFaultPlan::count() {
    calls_.clear();
    failures_ = 0;
    playing_ = false;
    counting_ = true;
}

void GlFaultPlan::play(size_t n, GlFault fault, bool forEver) {
    count();
    failing_ = n;
    fault_ = fault;
    forEver_ = forEver;
    playing_ = true;
}

bool GlFaultPlan::isDue(std::string const& function) const {
    size_t const index = calls_.size() - 1;
    if (!playing_ || index < failing_) return false;
    if (index == failing_) return true;
    return forEver_ && (fault_ != GlFault::Refused || function == calls_[failing_]);
}

GlFaultPlan::Verdict GlFaultPlan::next(char const* function) {
    if (!counting_) return Verdict::Right;
    if (faultless().count(function) != 0) return isContextLost() ? Verdict::Lost : Verdict::Right;
    calls_.emplace_back(function);
    if (!isDue(function)) return Verdict::Right;
    ++failures_;
    if (fault_ == GlFault::Refused) return Verdict::Refused;
    if (fault_ == GlFault::ContextLost) return isDeletion(function) ? Verdict::Right : Verdict::Lost;
    return failing().count(function) != 0 ? Verdict::OutOfMemory : Verdict::PendingError;
}
