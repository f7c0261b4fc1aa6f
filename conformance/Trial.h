#pragma once

#include "conformance/TexelRunner.h"

#include <cstdint>
#include <functional>
#include <string>

namespace conformance {

struct Pointwise;

/// Receives a filter, its model and its parameters.
using PointwiseVisitor = std::function<void(Filter const&, Pointwise const&, SingleFilterParameters const&)>;

/// The result of one filter's comparisons.
struct Tally {
    std::uint64_t pixels = 0;         ///< output pixels compared
    std::uint64_t differingBytes = 0; ///< among them; a texel has four
    std::string firstDifference;      ///< human-readable place of the first one; empty: none
};

/// The depth of a trial; each includes the runs of the depths before, or larger ones.
enum class Depth {
    kSharp,    ///< small targeted pictures, together sharp enough to notice every wrong token in a filter's GLSL
    kThorough, ///< also every value, strips of the longest textures, parts at many places, odd sizes and parameters
    kFull      ///< also exhaustive sets instead of samples of them
};

/// The extent of a trial.
struct Scope {
    Depth depth = Depth::kThorough;
    /// The longest side of a texture and of a viewport; at least 2048 on OpenGL ES 3.
    int longestTexels = 2048;
    /// A sharp trial too has strips of that length: for trials of places rather than of values.
    bool longStrips = false;
};

/// One filter's trial: runs it, and counts the bytes that differ from a plain integer model's.
class Trial {
public:
    /// With a visitor no pointwise filter is run: the visitor receives each of them instead, with its program.
    Trial(TexelRunner& runner, Scope const& scope, PointwiseVisitor visitor = nullptr);
    ~Trial();

    Trial(Trial const&) = delete;
    Trial& operator=(Trial const&) = delete;

    bool thorough() const { return scope_.depth != Depth::kSharp; }
    bool full() const { return scope_.depth == Depth::kFull; }
    /// Lengths of strips in texels, along which coordinates must be exact: 8192, and the longest possible; a sharp
    /// trial has one, beyond the precision of 16-bit floats. Multiples of four, so that every layout fills them.
    std::vector<int> stripLengths() const;
    TexelRunner& runner() { return runner_; }
    Tally const& tally() const { return tally_; }

    PointwiseVisitor const& visitor() const { return visitor_; }

    /// The filter with its program, which the trial destroys.
    Filter prepared(Filter const& description);

    /// Compares a run over all of the sources, into a destination of exactly the expected size. Erases every target
    /// made so far.
    void expect(Filter const& filter, std::vector<size_t> const& sources, reference::Texels const& expected,
                Layout layout, SingleFilterParameters const& params = {});
    /// Compares a run of a part into a place of a larger destination: the surroundings must not change.
    void expectWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected, Layout layout,
                      SingleFilterParameters const& params = {});
    /// Counts the differences of results that do not come from executeFilter.
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
