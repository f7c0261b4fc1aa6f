#include "host/image/PixelDensity.h"

#include "host/image/OmeXml.h"

#include <algorithm>
#include <array>
#include <cmath>

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

} // namespace

void pixeldensity::set(ImageFacts& facts, Origin origin, double pixelsPerMillimetreX, double pixelsPerMillimetreY) {
    if (pixelsPerMillimetreX == 0 || pixelsPerMillimetreY == 0) return; // at least one is unknown
    if (!counts(origin, pixelsPerMillimetreX) || !counts(origin, pixelsPerMillimetreY)) return;
    facts.pixelsPerMillimetreX = pixelsPerMillimetreX;
    facts.pixelsPerMillimetreY = pixelsPerMillimetreY;
}

bool pixeldensity::setFromOme(ImageFacts& facts, std::string const& description) {
    auto const image = omexml::parse(description);
    if (!image || image->millimetresX == 0 || image->millimetresY == 0) return false;
    double const x = 1 / image->millimetresX;
    double const y = 1 / image->millimetresY;
    if (!isPossible(x) || !isPossible(y)) return false;
    set(facts, Origin::Instrument, x, y);
    return true;
}
