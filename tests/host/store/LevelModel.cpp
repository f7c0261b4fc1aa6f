#include "tests/host/store/LevelModel.h"

#include "reference/Integers.h"
#include "reference/YCoCgR.h"
#include "tests/host/store/WaveletModel.h"

#include <algorithm>

using testpictures::Picture;
using waveletmodel::Plane;

namespace {

using Bytes = std::vector<std::uint8_t>;

int sampleOf(Picture const& picture, size_t pixel, size_t band) {
    size_t const index = pixel * picture.bands + band;
    if (picture.bits == 8) return picture.bytes[index];
    std::uint16_t sample = 0;
    std::copy_n(&picture.bytes[2 * index], 2, reinterpret_cast<std::uint8_t*>(&sample));
    return sample >> levelmodel::kResidualBits;
}

// Luma, Co, Cg, alpha; or grey, alpha.
std::vector<Plane> planesOf(Picture const& picture) {
    auto const width = static_cast<std::int64_t>(picture.width);
    auto const height = static_cast<std::int64_t>(picture.height);
    std::vector<Plane> planes(picture.bands, {width, height, {}});
    std::vector<int> samples(picture.bands);
    for (size_t i = 0; i < picture.width * picture.height; ++i) {
        for (size_t band = 0; band < picture.bands; ++band)
            samples[band] = sampleOf(picture, i, band);
        if (picture.bands >= 3) {
            reference::YCoCg const colour = reference::yCoCgFromRgb({samples[0], samples[1], samples[2]});
            samples[0] = colour.y;
            samples[1] = colour.co;
            samples[2] = colour.cg;
        }
        for (size_t plane = 0; plane < planes.size(); ++plane)
            planes[plane].samples.push_back(samples[plane]);
    }
    return planes;
}

void toRgb(std::vector<std::int64_t>& samples) {
    auto const whole = [&](size_t k) { return static_cast<std::int32_t>(samples[k]); };
    reference::Rgb const rgb = reference::rgbFromYCoCg({whole(0), whole(1), whole(2)});
    samples[0] = rgb.r;
    samples[1] = rgb.g;
    samples[2] = rgb.b;
}

// What is stored of samples, interleaved; of planes of any size, which go on mirrored beyond their ends, the first
// width x height samples.
using Interleaved = std::vector<std::int64_t>;

Interleaved interleaved(std::vector<Plane> const& planes, std::int64_t width, std::int64_t height) {
    Interleaved all;
    std::vector<std::int64_t> samples(planes.size());
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            std::transform(planes.begin(), planes.end(), samples.begin(),
                           [=](Plane const& plane) { return plane.at(x, y); });
            if (samples.size() >= 3) toRgb(samples);
            all.insert(all.end(), samples.begin(), samples.end());
        }
    }
    return all;
}

std::vector<Interleaved> storedLevels(Picture const& picture, size_t levels) {
    std::vector<Plane> planes = planesOf(picture);
    auto width = static_cast<std::int64_t>(picture.width);
    auto height = static_cast<std::int64_t>(picture.height);
    std::vector<Interleaved> result = {interleaved(planes, width, height)};
    while (result.size() <= levels) {
        // Each level is the low band of the finer one.
        std::transform(planes.begin(), planes.end(), planes.begin(), waveletmodel::coarser);
        width = (width + 1) / 2;
        height = (height + 1) / 2;
        result.push_back(interleaved(planes, width, height));
    }
    return result;
}

} // namespace

std::vector<Bytes> levelmodel::levelsOf(Picture const& picture, size_t levels) {
    std::vector<Bytes> result;
    for (Interleaved const& samples : storedLevels(picture, levels)) {
        Bytes& bytes = result.emplace_back();
        for (std::int64_t const sample : samples) // of 16 bits the upper byte
            bytes.push_back(reference::clampToByte(picture.bits == 8 ? sample : sample >> (8 - kResidualBits)));
    }
    return result;
}

std::vector<std::vector<std::uint16_t>> levelmodel::codesOf(Picture const& picture, size_t levels) {
    std::vector<std::vector<std::uint16_t>> result;
    for (Interleaved const& samples : storedLevels(picture, levels)) {
        auto& codes = result.emplace_back();
        for (std::int64_t const sample : samples)
            codes.push_back(static_cast<std::uint16_t>(std::clamp<std::int64_t>(sample, 0, 65535 >> kResidualBits)
                                                       << kResidualBits));
    }
    std::copy_n(picture.bytes.begin(), picture.bytes.size(), reinterpret_cast<std::uint8_t*>(result[0].data()));
    return result;
}
