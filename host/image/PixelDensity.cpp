#include "host/image/PixelDensity.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace {

constexpr double kMillimetresPerInch = 25.4;
// Cameras, scanners for paper and programs write these, whatever the picture shows.
constexpr std::array<double, 7> kPrintDensities{72, 96, 150, 180, 240, 300, 350};
constexpr double kPrintTolerance = 0.005; // relative error of values that were converted and rounded
constexpr double kFinestPrint = 1200;
// Pixel sizes from a picometre to a kilometre.
constexpr double kFewest = 1e-6;
constexpr double kMost = 1e9;

bool isPossible(double pixelsPerMillimetre) {
    return pixelsPerMillimetre >= kFewest && pixelsPerMillimetre <= kMost;
}

bool isForPrint(double dotsPerInch) {
    return std::any_of(kPrintDensities.begin(), kPrintDensities.end(),
                       [=](double density) { return std::abs(dotsPerInch - density) <= kPrintTolerance * density; });
}

bool counts(pixeldensity::Origin origin, double pixelsPerMillimetre) {
    double const dotsPerInch = pixelsPerMillimetre * kMillimetresPerInch;
    switch (origin) {
    case pixeldensity::Origin::Instrument:
        return true;
    case pixeldensity::Origin::Tag:
        return dotsPerInch > kPrintDensities.front() && !isForPrint(dotsPerInch);
    case pixeldensity::Origin::Hint:
        return dotsPerInch > kFinestPrint;
    }
    return false;
}

// The value of an attribute of an XML element, the first if it occurs twice.
std::optional<std::string> attributeOf(std::string const& element, std::string const& name) {
    size_t const start = element.find(" " + name + "=\"");
    if (start == std::string::npos) return std::nullopt;
    size_t const first = start + name.size() + 3;
    size_t const end = element.find('"', first);
    return end == std::string::npos ? std::nullopt : std::optional(element.substr(first, end - first));
}

struct Unit {
    char const* name;
    double millimetres;
};

// Micrometres if no unit is stated. The letter mu comes as micro sign, as Greek mu, or escaped for XML.
constexpr std::array<Unit, 11> kUnits{{{"", 1e-3},
                                       {"\xc2\xb5m", 1e-3},
                                       {"\xce\xbcm", 1e-3},
                                       {"&#181;m", 1e-3},
                                       {"&#xB5;m", 1e-3},
                                       {"um", 1e-3},
                                       {"nm", 1e-6},
                                       {"pm", 1e-9},
                                       {"mm", 1},
                                       {"cm", 10},
                                       {"m", 1000}}};

double pixelsPerMillimetre(std::string const& element, std::string const& name) {
    std::string const unit = attributeOf(element, name + "Unit").value_or("");
    std::string const text = attributeOf(element, name).value_or("");
    auto const* const known =
        std::find_if(kUnits.begin(), kUnits.end(), [&](Unit const& one) { return unit == one.name; });
    double size = 0;
    auto const end = std::from_chars(text.data(), text.data() + text.size(), size);
    if (known == kUnits.end() || end.ec != std::errc() || !(size > 0)) return 0;
    return 1 / (size * known->millimetres);
}

} // namespace

void pixeldensity::set(ImageFacts& facts, Origin origin, double pixelsPerMillimetreX, double pixelsPerMillimetreY) {
    if (pixelsPerMillimetreX == 0 || pixelsPerMillimetreY == 0) return; // at least one is unknown
    if (!counts(origin, pixelsPerMillimetreX) || !counts(origin, pixelsPerMillimetreY)) return;
    facts.pixelsPerMillimetreX = pixelsPerMillimetreX;
    facts.pixelsPerMillimetreY = pixelsPerMillimetreY;
}

bool pixeldensity::setFromOme(ImageFacts& facts, std::string const& description) {
    if (description.find("<OME") == std::string::npos) return false;
    size_t const start = description.find("<Pixels ");
    if (start == std::string::npos) return false;
    std::string const element = description.substr(start, description.find('>', start) - start);
    double const x = pixelsPerMillimetre(element, "PhysicalSizeX");
    double const y = pixelsPerMillimetre(element, "PhysicalSizeY");
    if (!isPossible(x) || !isPossible(y)) return false;
    set(facts, Origin::Instrument, x, y);
    return true;
}
