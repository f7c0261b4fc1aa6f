#include "conformance/Trial.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace conformance {

namespace {

constexpr size_t kTexelBytes = 4;
constexpr int kCommonLength = 8192;
constexpr int kBeyondHalfPrecision = 4112; // a half float's whole numbers end at 2048, its halves at 1024

std::string placeOf(size_t byte, Comparison const& comparison) {
    size_t const texel = byte / kTexelBytes;
    auto const width = static_cast<size_t>(comparison.expected.width);
    return "byte " + std::to_string(byte % kTexelBytes) + " of texel (" + std::to_string(texel % width) + ", " +
           std::to_string(texel / width) + ") is " + std::to_string(comparison.actual.bytes[byte]) + ", not " +
           std::to_string(comparison.expected.bytes[byte]);
}

} // namespace

Trial::Trial(TexelRunner& runner, Scope const& scope, PointwiseVisitor visitor)
    : runner_(runner), scope_(scope), visitor_(std::move(visitor)) {}

Trial::~Trial() {
    runner_.eraseTargets();
    for (Filter& filter : filters_)
        runner_.instance()->destroyFilterInstance(filter);
}

std::vector<int> Trial::stripLengths() const {
    int const longest = scope_.longestTexels / 4 * 4;
    if (!thorough() && !scope_.longStrips) return {std::min(kBeyondHalfPrecision, longest)};
    if (longest <= kCommonLength) return {longest};
    return {kCommonLength, longest};
}

Filter Trial::prepared(Filter const& description) {
    filters_.push_back(runner_.instantiated(description));
    return filters_.back();
}

void Trial::expect(Filter const& filter, std::vector<size_t> const& sources, reference::Texels const& expected,
                   Layout layout, SingleFilterParameters const& params) {
    count(runner_.compare(filter, runner_.wholeRun(sources), expected, layout, params), layout);
    runner_.eraseTargets();
}

void Trial::expectWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected, Layout layout,
                         SingleFilterParameters const& params) {
    count(runner_.compareWithin(filter, run, expected, layout, params), layout);
    runner_.eraseTargets();
}

void Trial::count(Comparison const& comparison, Layout layout) {
    ++comparisons_;
    reference::Texels const& expected = comparison.expected;
    if (comparison.actual.bytes.size() != expected.bytes.size())
        throw std::logic_error("the backend returned a picture of another size");
    tally_.pixels += logicalWidth(layout, expected.width) * static_cast<size_t>(expected.height);
    for (size_t i = 0; i < expected.bytes.size(); ++i) {
        if (comparison.actual.bytes[i] == expected.bytes[i]) continue;
        if (tally_.differingBytes++ == 0)
            tally_.firstDifference = "picture " + std::to_string(comparisons_) + ": " + placeOf(i, comparison);
    }
}

} // namespace conformance
