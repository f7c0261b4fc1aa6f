#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// ICC profiles, made with Little CMS.
namespace testprofiles {

/// Chromaticities of white, red, green and blue.
struct Primaries {
    std::array<double, 2> white{0.3127, 0.3290};
    std::array<double, 2> red{};
    std::array<double, 2> green{};
    std::array<double, 2> blue{};
};

/// Adobe RGB (1998), 4.3.1.1.
constexpr Primaries kAdobe{{0.3127, 0.3290}, {0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}};
/// IEC 61966-2-1.
constexpr Primaries kSrgb{{0.3127, 0.3290}, {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};

std::vector<std::uint8_t> rgb(Primaries const& primaries, double gamma, std::string const& name);
std::vector<std::uint8_t> grey(double gamma, std::string const& name);
std::vector<std::uint8_t> srgb();
/// sRGB whose red is blue, and whose blue is red: converting exchanges both.
std::vector<std::uint8_t> exchanged(std::string const& name);

} // namespace testprofiles
