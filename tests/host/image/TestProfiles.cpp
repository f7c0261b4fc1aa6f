#include "tests/host/image/TestProfiles.h"

#include <lcms2.h>
#include <stdexcept>
#include <utility>

namespace {

std::vector<std::uint8_t> saved(cmsHPROFILE profile, std::string const& name) {
    if (!name.empty()) {
        cmsMLU* const text = cmsMLUalloc(nullptr, 1);
        cmsMLUsetASCII(text, "en", "US", name.c_str());
        cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
        cmsMLUfree(text);
    }
    cmsUInt32Number bytes = 0;
    bool isSaved = cmsSaveProfileToMem(profile, nullptr, &bytes) != 0;
    std::vector<std::uint8_t> made(bytes);
    isSaved = isSaved && cmsSaveProfileToMem(profile, made.data(), &bytes) != 0;
    cmsCloseProfile(profile);
    if (!isSaved) throw std::runtime_error("no profile is made");
    return made;
}

// Takes the curve over.
std::vector<std::uint8_t> ofCurve(testprofiles::Primaries const& primaries, cmsToneCurve* curve,
                                  std::string const& name) {
    cmsCIExyY const white{primaries.white[0], primaries.white[1], 1};
    cmsCIExyYTRIPLE const colours{{primaries.red[0], primaries.red[1], 1},
                                  {primaries.green[0], primaries.green[1], 1},
                                  {primaries.blue[0], primaries.blue[1], 1}};
    std::array<cmsToneCurve*, 3> const curves{curve, curve, curve};
    cmsHPROFILE const profile = cmsCreateRGBProfile(&white, &colours, curves.data());
    cmsFreeToneCurve(curve);
    return saved(profile, name);
}

} // namespace

std::vector<std::uint8_t> testprofiles::rgb(Primaries const& primaries, double gamma, std::string const& name) {
    return ofCurve(primaries, cmsBuildGamma(nullptr, gamma), name);
}

std::vector<std::uint8_t> testprofiles::grey(double gamma, std::string const& name) {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    cmsHPROFILE const profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return saved(profile, name);
}

std::vector<std::uint8_t> testprofiles::srgb() {
    return saved(cmsCreate_sRGBProfile(), "");
}

std::vector<std::uint8_t> testprofiles::exchanged(std::string const& name) {
    Primaries primaries = kSrgb;
    std::swap(primaries.red, primaries.blue);
    // IEC 61966-2-1.
    std::array<double, 5> const parameters{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return ofCurve(primaries, cmsBuildParametricToneCurve(nullptr, 4, parameters.data()), name);
}
