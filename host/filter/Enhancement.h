#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// Enhancements that a user can request. Each is one filter of the backend, or a short chain of them. kIsPointwise: an
/// output pixel depends on the input pixel at the same place alone. kMayColour: grey may become colour.
namespace enhancement {

/// Unsharp mask. The gain is rounded toward zero to steps of 1/32.
struct Sharpen {
    static constexpr bool kIsPointwise = false;
    static constexpr bool kMayColour = false;

    double gain = 1.0;
};

/// Each row of three gives one output colour: red' = m[0] * red + m[1] * green + m[2] * blue.
struct ColourMatrix {
    static constexpr bool kIsPointwise = true;
    static constexpr bool kMayColour = true;

    std::array<double, 9> rows = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double strength = 1.0; ///< multiplies every coefficient
};

/// The highest code of a file's samples.
constexpr std::uint64_t kLargestCode = 65535;

/// A black point, a white point and a gamma. In 8-bit pictures the points count linear light in 4096 codes, of which
/// 3500 is the white of sRGB; in 16-bit pictures they are codes of the file.
struct Gamma {
    static constexpr bool kIsPointwise = true;
    static constexpr bool kMayColour = false;

    double gamma = 1.0;
    std::uint64_t black = 0;
    std::uint64_t white = 0;
};

/// Linear codes to sRGB.
struct LinearToSrgb {
    static constexpr bool kIsPointwise = true;
    static constexpr bool kMayColour = false;
};

/// Contrast-limited adaptive histogram equalisation of the luma. 1.0 is the weakest limit.
struct Equalise {
    static constexpr bool kIsPointwise = false;
    static constexpr bool kMayColour = false;

    double clipLimit = 1.0;
};

/// Cuts samples to multiples of 2^bits, toward zero; bits count in the file's own codes. rounding sets the result to
/// the middle of its step.
struct Truncate {
    static constexpr bool kIsPointwise = true;
    static constexpr bool kMayColour = false;

    std::uint32_t bits = 0;
    bool rounding = false;
};

using Step = std::variant<Sharpen, ColourMatrix, Gamma, LinearToSrgb, Equalise, Truncate>;

// Parsers of command line texts: numbers between commas. Each throws std::invalid_argument with a sentence for the
// user.

/// "G"
Sharpen parseSharpen(std::string const& text);
/// "m1,...,m9" or "m1,...,m9,strength"; coefficients from -8 to 8, strength from -8 to 8.
ColourMatrix parseColourMatrix(std::string const& text);
/// "G,black,white"
Gamma parseGamma(std::string const& text);
/// "CLIP"
Equalise parseEqualise(std::string const& text);
/// "BITS" or "BITS,round", 0 to 16 bits
Truncate parseTruncate(std::string const& text);

} // namespace enhancement
