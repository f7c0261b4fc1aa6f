// An input is the numbers of a filter's description and ranges to ask it for.
#include "renderbackend/VelmoraException.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/renderbackend/FilterDescription.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace {

using fuzz::require;
using Range = std::vector<size_t>;
// Wide enough for every step: where one leaves 64 bits, the filter's own arithmetic is documented to wrap.
using Wide = __int128;

struct Axis {
    size_t before, after, origin, stride, alignIn, alignOut, num, den;

    size_t grid() const { return std::max(stride, alignIn); }
};

// Small ones mostly, and those at the ends of 64 bits.
size_t anyNumber(fuzz::Input& input) {
    switch (input.below(8)) {
    case 0:
        return input.number<size_t>();
    case 1:
        return std::numeric_limits<size_t>::max() - input.byte();
    case 2:
        return (size_t{1} << input.below(64)) + input.byte() - 128;
    default:
        return input.byte();
    }
}

// No strides, denominators and alignments of 0: those must not be given.
size_t notZero(fuzz::Input& input) {
    return std::max<size_t>(anyNumber(input), 1);
}

Axis anyAxis(fuzz::Input& input) {
    return {anyNumber(input), anyNumber(input), anyNumber(input), notZero(input),
            notZero(input),   notZero(input),   anyNumber(input), notZero(input)};
}

bool fits(Wide number) {
    return number >= 0 && number <= static_cast<Wide>(std::numeric_limits<size_t>::max());
}

// Beyond every bound where the product is.
Wide times(Wide a, size_t b) {
    Wide product = 0;
    return __builtin_mul_overflow(a, Wide{b}, &product) ? std::numeric_limits<Wide>::max() / 4 : product;
}

Wide rounded(Wide number, Wide step) {
    return number / step * step;
}

using Ends = std::array<size_t, 2>;

// The input that an output takes, on paper; nothing where a step leaves 64 bits.
std::optional<Ends> inputOf(Axis const& a, Ends const& out) {
    Wide const scaled = times(Wide{out[0]} - a.before, a.den);
    Wide const scaledEnd = times(Wide{out[1]} + a.after, a.den) + a.num - 1;
    if (!fits(scaled) || !fits(scaledEnd) || !fits(Wide{out[1]} + a.after)) return std::nullopt;
    Wide const start = scaled / a.num - a.origin;
    Wide const pastEnd = scaledEnd / a.num + a.grid() - a.origin;
    if (start < 0 || pastEnd < 0 || !fits(scaledEnd / a.num + a.grid())) return std::nullopt;
    Wide const first = rounded(start, a.grid()) + a.origin;
    Wide const last = rounded(pastEnd, a.grid()) + a.origin - 1;
    if (!fits(first) || !fits(last)) return std::nullopt;
    return Ends{static_cast<size_t>(first), static_cast<size_t>(last)};
}

std::optional<Ends> outputOf(Axis const& a, Ends const& in) {
    Wide const scaled = times(in[0], a.num) + a.den - 1;
    Wide const scaledEnd = times(in[1], a.num);
    if (!fits(scaled) || !fits(scaledEnd)) return std::nullopt;
    Wide const start = scaled / a.den + a.before + a.alignOut - 1;
    Wide const pastEnd = scaledEnd / a.den - a.after + 1;
    if (!fits(start) || !fits(pastEnd)) return std::nullopt;
    Wide const last = rounded(pastEnd, a.alignOut) - 1;
    return Ends{static_cast<size_t>(rounded(start, a.alignOut)), static_cast<size_t>(last)};
}

void requireAxis(std::optional<Ends> const& expected, Range const& range, size_t first) {
    require(!expected || (range.at(first) == (*expected)[0] && range.at(first + 1) == (*expected)[1]),
            "a range is what it is on paper");
}

bool startsInBorder(size_t start, size_t border) {
    return static_cast<std::int64_t>(start) < static_cast<std::int64_t>(border);
}

void requireInput(Filter const& filter, Axis const& x, Axis const& y, Range const& range) {
    bool const refused =
        x.num == 0 || y.num == 0 || startsInBorder(range[0], x.before) || startsInBorder(range[2], y.before);
    Range found;
    bool const given = fuzz::succeeds<VelmoraException>([&] { found = filter.inputRange(range); });
    require(given != refused, "an input range is refused where the documentation says so");
    if (!given) return;
    requireAxis(inputOf(x, {range[0], range[1]}), found, 0);
    requireAxis(inputOf(y, {range[2], range[3]}), found, 2);
}

void requireOutput(Filter const& filter, Axis const& x, Axis const& y, Range const& range) {
    bool const refused = range[0] < x.origin || range[2] < y.origin;
    Range found;
    bool const given = fuzz::succeeds<VelmoraException>([&] { found = filter.outputRange(range); });
    require(given != refused, "an output range is refused where the documentation says so");
    if (!given) return;
    requireAxis(outputOf(x, {range[0], range[1]}), found, 0);
    requireAxis(outputOf(y, {range[2], range[3]}), found, 2);
}

bool alignmentFits(Axis const& a) {
    size_t const larger = std::max(a.alignIn, a.stride);
    size_t const smaller = std::min(a.alignIn, a.stride);
    return larger % smaller == 0 && a.origin % smaller == 0;
}

FilterDescription described(Axis const& x, Axis const& y) {
    FilterDescription d;
    d.invalidLeft = x.before;
    d.invalidRight = x.after;
    d.inputPosX0 = x.origin;
    d.inputPosXStride = x.stride;
    d.alignXIn = x.alignIn;
    d.alignXOut = x.alignOut;
    d.scaleXNum = x.num;
    d.scaleXDen = x.den;
    d.invalidTop = y.before;
    d.invalidBottom = y.after;
    d.inputPosY0 = y.origin;
    d.inputPosYStride = y.stride;
    d.alignYIn = y.alignIn;
    d.alignYOut = y.alignOut;
    d.scaleYNum = y.num;
    d.scaleYDen = y.den;
    return d;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    Axis const x = anyAxis(input);
    Axis const y = anyAxis(input);
    FilterDescription d = described(x, y);
    d.numTexturesIn = input.below(4);
    d.signedIn.assign(input.below(4), true);
    // The product wraps here as it does there: that it does is documented.
    bool const possible = x.num * x.stride % x.den == 0 && y.num * y.stride % y.den == 0 && alignmentFits(x) &&
                          alignmentFits(y) && d.signedIn.size() == d.numTexturesIn;
    std::optional<Filter> filter;
    bool const made = fuzz::succeeds<VelmoraException>([&] { filter = d.filter(); });
    require(made == possible, "a description is refused where the documentation says so");
    if (!made) return 0;
    while (input.left() > 0) {
        Range range(input.below(6));
        for (size_t& end : range)
            end = anyNumber(input);
        if (range.size() >= 4) {
            requireInput(*filter, x, y, range);
            requireOutput(*filter, x, y, range);
            continue;
        }
        require(!fuzz::succeeds<VelmoraException>([&] { filter->inputRange(range); }) &&
                    !fuzz::succeeds<VelmoraException>([&] { filter->outputRange(range); }),
                "a range has four values");
    }
    return 0;
}
