#pragma once

#include <cstdint>
#include <string>

/// How samples become brightness: those up to `low` are black, those from `high` on are full, and a curve leads from
/// one to the other. With s = (sample - low) / (high - low), clipped to 0 to 1:
///
///     Linear    s
///     Log       ln(1 + 1000 s) / ln(1001)
///     Asinh     asinh(10 s) / asinh(10)
///
/// and that to the power of 1 / gamma. The logarithm and the hyperbolic sine are those that astronomers' programs know,
/// with their usual strength.
struct Tone {
    enum class Curve { Linear, Log, Asinh };

    /// Limit of both ends' magnitude: their distance stays finite.
    static constexpr double kFarthest = 1e300;

    double low = 0;
    double high = 255; ///< above low
    Curve curve = Curve::Linear;
    double gamma = 1; ///< above 0

    /// 0 to 1; not a number, if the sample is not.
    double share(double sample) const;
    /// 255 * share, rounded, halves up; 0 if the sample is not a number.
    std::uint8_t byteOf(double sample) const;

    bool operator==(Tone const& other) const;
    bool operator!=(Tone const& other) const { return !(*this == other); }
};

namespace tone {

/// "linear", "log" or "asinh". Throws std::invalid_argument with a sentence for the user.
Tone::Curve parseCurve(std::string const& text);
char const* toText(Tone::Curve curve);

} // namespace tone
