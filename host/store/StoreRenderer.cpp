#include "host/store/StoreRenderer.h"

#include "host/EnhancedRenderer.h"
#include "host/EnhancementChain.h"
#include "host/FilterDescriptions.h"
#include "host/PixelBands.h"
#include "host/store/LevelRebuilder.h"

#include <algorithm>

namespace {

using Layout = PictureTargets::Layout;

constexpr unsigned kShownDepth = 8;

// One store's way through the GPU.
class StoreDrawing {
public:
    StoreDrawing(std::shared_ptr<RenderBackendInstance> const& instance, std::vector<enhancement::Step> const& steps,
                 TileStore& store, std::size_t level, std::size_t bands)
        : store_(store),
          level_(level),
          bands_(bands),
          instance_(instance),
          targets_(instance),
          rebuilder_(targets_, store),
          chain_(instance, steps, levelSize(store.info(), level)) {}

    /// Puts the part of a level at its place in rows of `rowPixels` pixels.
    void draw(Region const& part, std::uint8_t* out, std::size_t rowPixels) {
        std::vector<unsigned char> const texels = chain_.run(pixels(chain_.inputFor(part)), depth(), part);
        for (std::size_t row = 0; row < part.height; ++row)
            pixelbands::narrow(&texels[row * part.width * pixelbands::kTexelBytes], out + row * rowPixels * bands_,
                               bands_, part.width);
        if (pixelbands::hasAlpha(bands_)) putAlpha(part, out, rowPixels);
    }

private:
    static PictureTargets::Size levelSize(StoreInfo const& info, std::size_t level) {
        Extent const extent = LevelRebuilder::levelExtent(info, level);
        return {extent.width, extent.height};
    }

    unsigned depth() const { return static_cast<unsigned>(store_.info().bits - store_.info().residualBits); }

    // RGBA texels where a sample has 8 bits, else three channels of 16.
    OwnedTarget pixels(Region const& region) {
        bool const grey = pixelbands::isGrey(store_.info().bands);
        std::vector<PlanePart> planes;
        for (std::size_t plane = 0; plane < (grey ? 1 : 3); ++plane)
            planes.push_back(rebuilder_.rebuild(level_, plane, region));
        Region const& corner = planes[0].region;
        PictureTargets::Size const covered = {region.x - corner.x + region.width, region.y - corner.y + region.height};
        OwnedTarget const deep = targets_.target(Layout::kDeep, covered);
        targets_.run(targets_.prepared(description::filterInterleave16()),
                     {source(planes[0]), source(planes[grey ? 0 : 1]), source(planes[grey ? 0 : 2])},
                     {covered.width + covered.width % 2, covered.height}, deep);

        bool const shown = depth() == kShownDepth;
        PictureTargets::Size const size = {region.width, region.height};
        OwnedTarget result = targets_.target(shown ? Layout::kRgba8 : Layout::kDeep, size);
        targets_.run(targets_.prepared(colourStep(grey, shown)),
                     {{deep.id(), region.x - corner.x, region.y - corner.y, false}}, size, result);
        return result;
    }

    static Filter colourStep(bool grey, bool shown) {
        if (grey) return shown ? description::filter3x16To4x8() : description::blitFilter3x16();
        return shown ? description::filterYCoCg16ToRGBA8() : description::filterYCoCg16ToRGB16();
    }

    static FilterSource source(PlanePart const& part) { return {part.target.id(), 0, 0, false}; }

    // Alpha is not enhanced: it comes out as it is stored.
    void putAlpha(Region const& part, std::uint8_t* out, std::size_t rowPixels) {
        PlanePart const alpha = rebuilder_.rebuild(level_, store_.info().bands - 1, part);
        std::vector<unsigned char> const bytes =
            instance_->getPixels(alpha.target.id(), {0, alpha.region.width, 0, alpha.region.height});
        for (std::size_t y = 0; y < part.height; ++y) {
            for (std::size_t x = 0; x < part.width; ++x) {
                std::size_t const place =
                    (part.y + y - alpha.region.y) * alpha.region.width + part.x + x - alpha.region.x;
                auto const sample = static_cast<std::int16_t>(bytes[2 * place] | bytes[2 * place + 1] << 8U);
                int const code = sample >> (depth() - kShownDepth);
                out[(y * rowPixels + x + 1) * bands_ - 1] = static_cast<std::uint8_t>(std::clamp(code, 0, 255));
            }
        }
    }

    TileStore& store_;
    std::size_t level_;
    std::size_t bands_;
    std::shared_ptr<RenderBackendInstance> instance_;
    PictureTargets targets_;
    LevelRebuilder rebuilder_;
    EnhancementChain chain_;
};

} // namespace

StoreRenderer::StoreRenderer(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> steps)
    : instance_(std::move(instance)), steps_(std::move(steps)), side_(EnhancementChain::requiredPartSide(steps_)) {}

std::size_t StoreRenderer::bandsOf(StoreInfo const& info, std::vector<enhancement::Step> const& steps) {
    return EnhancedRenderer::bandsOf(info.bands, steps);
}

Region StoreRenderer::atLevel(Region const& region, std::size_t level) {
    std::size_t const x = region.x >> level;
    std::size_t const y = region.y >> level;
    return {x, y, ((region.x + region.width - 1) >> level) + 1 - x, ((region.y + region.height - 1) >> level) + 1 - y};
}

void StoreRenderer::render(TileStore& store, std::size_t level, Region const& region,
                           RegionRenderer::RowSink const& sink, RegionRenderer::Progress const& progress) {
    std::size_t const bands = bandsOf(store.info(), steps_);
    StoreDrawing drawing(instance_, steps_, store, level, bands);
    std::vector<std::uint8_t> rows;
    std::size_t const bottom = region.y + region.height;
    std::size_t const right = region.x + region.width;
    for (std::size_t y = region.y; y < bottom;) {
        progress(y - region.y, region.height);
        std::size_t const count = std::min(y / side_ * side_ + side_, bottom) - y;
        rows.resize(count * region.width * bands);
        for (std::size_t x = region.x; x < right;) {
            std::size_t const next = std::min(x / side_ * side_ + side_, right);
            drawing.draw({x, y, next - x, count}, &rows[(x - region.x) * bands], region.width);
            progress(y - region.y, region.height);
            x = next;
        }
        sink(rows.data(), count);
        y += count;
    }
    progress(region.height, region.height);
}
