#include "host/store/ColourPlanes.h"

#include <algorithm>
#include <cstring>
#include <limits>

// `>> n` is floor division by 2^n: right shifts of negative ints are arithmetic on all our compilers (and by C++20).

namespace {

using Sample = ColourPlanes::Sample;

template <class Stored>
Stored sampleAt(std::uint8_t const* pixels, size_t index) {
    Stored sample = 0;
    std::memcpy(&sample, pixels + index * sizeof(Stored), sizeof(Stored));
    return sample;
}

template <class Stored>
void splitBand(std::uint8_t const* pixels, size_t bands, size_t residualBits, std::vector<Sample>& plane,
               std::vector<Sample>& residual) {
    for (size_t x = 0; x < plane.size(); ++x)
        plane[x] = static_cast<Sample>(sampleAt<Stored>(pixels, x * bands) >> residualBits);
    auto const mask = (1u << residualBits) - 1;
    for (size_t x = 0; x < residual.size(); ++x)
        residual[x] = static_cast<Sample>(sampleAt<Stored>(pixels, x * bands) & mask);
}

template <class Stored>
void joinBand(std::vector<Sample> const& plane, std::vector<Sample> const& residual, size_t residualBits,
              std::uint8_t* pixels, size_t bands) {
    int const largest = std::numeric_limits<Stored>::max() >> residualBits;
    for (size_t x = 0; x < plane.size(); ++x) {
        unsigned const low = residual.empty() ? 0 : static_cast<unsigned>(residual[x]);
        auto const high = static_cast<unsigned>(std::clamp(int{plane[x]}, 0, largest));
        auto const sample = static_cast<Stored>(high << residualBits | low);
        std::memcpy(pixels + x * bands * sizeof(Stored), &sample, sizeof(Stored));
    }
}

void toYCoCg(std::vector<Sample>& first, std::vector<Sample>& second, std::vector<Sample>& third) {
    for (size_t x = 0; x < first.size(); ++x) {
        int const co = first[x] - third[x];
        int const t = third[x] + (co >> 1);
        int const cg = second[x] - t;
        first[x] = static_cast<Sample>(t + (cg >> 1));
        second[x] = static_cast<Sample>(co);
        third[x] = static_cast<Sample>(cg);
    }
}

void toRgb(std::vector<Sample>& first, std::vector<Sample>& second, std::vector<Sample>& third) {
    for (size_t x = 0; x < first.size(); ++x) {
        int const t = first[x] - (third[x] >> 1);
        int const green = third[x] + t;
        int const blue = t - (second[x] >> 1);
        first[x] = static_cast<Sample>(blue + second[x]);
        second[x] = static_cast<Sample>(green);
        third[x] = static_cast<Sample>(blue);
    }
}

} // namespace

ColourPlanes::ColourPlanes(StoreInfo const& info) : info_(info) {
    for (size_t band = 0; band < info.bands; ++band) {
        planes_[band].resize(info.width);
        if (info.residualBits > 0) residuals_[band].resize(info.width);
    }
}

void ColourPlanes::split(std::uint8_t const* pixels) {
    for (size_t band = 0; band < info_.bands; ++band) {
        if (info_.bits == 8)
            splitBand<std::uint8_t>(pixels + band, info_.bands, info_.residualBits, planes_[band], residuals_[band]);
        else
            splitBand<std::uint16_t>(pixels + 2 * band, info_.bands, info_.residualBits, planes_[band],
                                     residuals_[band]);
    }
    if (info_.bands >= 3) toYCoCg(planes_[0], planes_[1], planes_[2]);
}

void ColourPlanes::join(std::uint8_t* pixels) {
    if (info_.bands >= 3) toRgb(planes_[0], planes_[1], planes_[2]);
    for (size_t band = 0; band < info_.bands; ++band) {
        if (info_.bits == 8)
            joinBand<std::uint8_t>(planes_[band], residuals_[band], info_.residualBits, pixels + band, info_.bands);
        else
            joinBand<std::uint16_t>(planes_[band], residuals_[band], info_.residualBits, pixels + 2 * band,
                                    info_.bands);
    }
}
