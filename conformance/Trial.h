#pragma once

#include "conformance/TexelRunner.h"

#include <cstdint>
#include <functional>
#include <string>

namespace conformance {

struct Pointwise;

/// Is shown a filter, its model and its parameters.
using PointwiseVisitor = std::function<void(Filter const&, Pointwise const&, SingleFilterParameters const&)>;

/// What was found of one filter.
struct Tally {
    std::uint64_t pixels = 0;         ///< output pixels that were compared
    std::uint64_t differingBytes = 0; ///< of them; a texel has four
    std::string firstDifference;      ///< where the first one lies, for a person; empty where there is none
};

/// How deep a trial goes; each depth runs what the one before runs, or more of its kind.
enum class Depth {
    kSharp,    ///< small pointed pictures, together sharp enough to notice every wrong word in a filter's GLSL
    kThorough, ///< and every value, strips as long as textures get, parts at many places, odd sizes and parameters
    kFull      ///< and the exhaustive sets instead of samples of them
};

/// How much a trial runs.
struct Scope {
    Depth depth = Depth::kThorough;
    /// The longest side that a texture can have and a viewport can show; at least 2048 on OpenGL ES 3.
    int longestTexels = 2048;
    /// A sharp trial too has strips as long as that: where it is about places, not about values.
    bool longStrips = false;
};

/// One filter's trial: runs it, and counts the bytes that differ from what a plain integer model gives.
class Trial {
public:
    /// With a visitor no pointwise filter is run: each is shown to the visitor instead, with its program.
    Trial(TexelRunner& runner, Scope const& scope, PointwiseVisitor visitor = nullptr);
    ~Trial();

    Trial(Trial const&) = delete;
    Trial& operator=(Trial const&) = delete;

    bool thorough() const { return scope_.depth != Depth::kSharp; }
    bool full() const { return scope_.depth == Depth::kFull; }
    /// Sides of strips in texels, as long as coordinates must stay apart: 8192, and the longest there is; a sharp trial
    /// has one, longer than floats of 16 bits count. Multiples of four, so that every layout fills them.
    std::vector<int> stripLengths() const;
    TexelRunner& runner() { return runner_; }
    Tally const& tally() const { return tally_; }

    PointwiseVisitor const& visitor() const { return visitor_; }

    /// The filter with its program; the trial gives it back.
    Filter prepared(Filter const& description);

    /// Over all of the sources, into a destination of just the expected size. Gives back every target made so far.
    void expect(Filter const& filter, std::vector<size_t> const& sources, reference::Texels const& expected,
                Layout layout, SingleFilterParameters const& params = {});
    /// A part into a place of a larger destination: what lies around must stay as it is.
    void expectWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected, Layout layout,
                      SingleFilterParameters const& params = {});
    /// Counts what differs; for results that do not come from executeFilter.
    void count(Comparison const& comparison, Layout layout);

private:
    TexelRunner& runner_;
    Scope scope_;
    PointwiseVisitor visitor_;
    std::vector<Filter> filters_;
    std::uint64_t comparisons_ = 0;
    Tally tally_;
};

} // namespace conformance
