#include "host/view/LevelSamples.h"

#include "host/filter/SampleLayout.h"
#include "host/image/PixelBands.h"

#include <algorithm>

namespace {

using Layout = SampleLayout;

std::int16_t sampleAt(std::vector<unsigned char> const& bytes, size_t index) {
    return static_cast<std::int16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8U);
}

} // namespace

LevelSamples::LevelSamples(FilterRunner& targets, LevelTiles& tiles, StoreInfo const& info)
    : targets_(targets), tiles_(tiles), info_(info) {}

void LevelSamples::keep(LoadedTile&& loaded) {
    residuals_[loaded.job.tile] = std::move(loaded.parts);
}

void LevelSamples::keepOnly(std::set<LevelTile> const& tiles) {
    for (auto kept = residuals_.begin(); kept != residuals_.end();)
        kept = tiles.count(kept->first) == 0 ? residuals_.erase(kept) : std::next(kept);
}

std::vector<std::uint16_t> LevelSamples::codes(size_t level, Region const& region, size_t bands) {
    Codes result = {region, bands, std::vector<std::uint16_t>(region.width * region.height * bands)};
    for (LevelTile const& tile : leveltile::over(level, region)) {
        Region const part = common(leveltile::shownRegion(info_, tile), region);
        putColours(result, tile, part);
        if (bands > 1 && bands == info_.bands && pixelbands::hasAlpha(bands)) putAlpha(result, tile, part);
        if (hasResidualBits(level)) addResiduals(result, tile, part);
    }
    return std::move(result.codes);
}

std::vector<std::uint16_t> LevelSamples::codes(View const& view) {
    Region const pixels = view.pixelsOf(info_);
    Region const samples = view.samplesOf(pixels);
    std::vector<std::uint16_t> const all = codes(view.zoom.level(), samples, info_.bands);
    std::vector<std::uint16_t> codes;
    codes.reserve(pixels.width * pixels.height * info_.bands);
    for (size_t y = pixels.y; y < pixels.y + pixels.height; ++y) {
        size_t const row = (view.zoom.sampleAt(y) - samples.y) * samples.width;
        for (size_t x = pixels.x; x < pixels.x + pixels.width; ++x) {
            auto const* const pixel = &all[(row + view.zoom.sampleAt(x) - samples.x) * info_.bands];
            codes.insert(codes.end(), pixel, pixel + info_.bands);
        }
    }
    return codes;
}

EnhancementChain::Planes LevelSamples::planes(size_t level, Region const& region) {
    size_t const bands = pixelbands::isGrey(info_.bands) ? 1 : 3;
    std::vector<std::uint16_t> const all = codes(level, region, bands);
    size_t const even = region.width + region.width % 2;
    EnhancementChain::Planes planes;
    for (size_t channel = 0; channel < planes.size(); ++channel) {
        planes[channel].resize(2 * even * region.height);
        for (size_t y = 0; y < region.height; ++y) {
            for (size_t x = 0; x < region.width; ++x) {
                unsigned const code = all[(y * region.width + x) * bands + (bands == 1 ? 0 : channel)] >> 1U;
                unsigned char* const to = &planes[channel][2 * (y * even + x)];
                to[0] = static_cast<unsigned char>(code & 0xFFU);
                to[1] = static_cast<unsigned char>(code >> 8U);
            }
        }
    }
    return planes;
}

std::uint16_t LevelSamples::codeOf(std::int16_t sample) const {
    int const largest = (1 << tiles_.depth()) - 1;
    return static_cast<std::uint16_t>(std::clamp(int{sample}, 0, largest) << info_.residualBits);
}

void LevelSamples::putColours(Codes& to, LevelTile const& tile, Region const& part) {
    Region const shown = leveltile::shownRegion(info_, tile);
    Layout const layout = tiles_.layout();
    bool const isDeep = layout == Layout::kThreeChannel16;
    size_t const pixelBytes = samplelayout::bytesPerPixel(layout);
    std::vector<unsigned char> const texels =
        targets_.read(*tiles_.pixels(tile), layout, {part.x - shown.x, part.y - shown.y, part.width, part.height});
    size_t const colours = std::min<size_t>(to.bands, pixelbands::isGrey(info_.bands) ? 1 : 3);
    unsigned char const* pixel = texels.data();
    for (size_t y = part.y; y < part.y + part.height; ++y) {
        for (size_t x = part.x; x < part.x + part.width; ++x, pixel += pixelBytes) {
            for (size_t band = 0; band < colours; ++band)
                to.at(x, y, band) = isDeep ? codeOf(samplelayout::threeChannelSample(pixel, band)) : pixel[band];
        }
    }
}

void LevelSamples::putAlpha(Codes& to, LevelTile const& tile, Region const& part) {
    PlanePart const& plane = tiles_.plane(tile, info_.bands - 1);
    Region const& all = plane.region;
    std::vector<unsigned char> const samples = targets_.read(plane.target, Layout::kOneChannel16, wholeOf(sizeOf(all)));
    for (size_t y = part.y; y < part.y + part.height; ++y) {
        for (size_t x = part.x; x < part.x + part.width; ++x)
            to.at(x, y, to.bands - 1) = codeOf(sampleAt(samples, (y - all.y) * all.width + x - all.x));
    }
}

void LevelSamples::addResiduals(Codes& to, LevelTile const& tile, Region const& part) const {
    std::vector<BandPart> const& residuals = residuals_.at(tile);
    for (size_t band = 0; band < to.bands; ++band) {
        BandPart const& residual = residuals[band];
        Region const& all = residual.region;
        for (size_t y = part.y; y < part.y + part.height; ++y) {
            for (size_t x = part.x; x < part.x + part.width; ++x) {
                std::int16_t const low =
                    residual.value ? *residual.value : sampleAt(residual.bytes, (y - all.y) * all.width + x - all.x);
                to.at(x, y, band) = static_cast<std::uint16_t>(to.at(x, y, band) | static_cast<std::uint16_t>(low));
            }
        }
    }
}
