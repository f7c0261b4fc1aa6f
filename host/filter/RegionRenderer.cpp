#include "host/filter/RegionRenderer.h"

#include "host/filter/DeepBlocks.h"
#include "host/filter/FilterRunner.h"
#include "host/image/PixelBands.h"
#include "host/image/PixelSource.h"

#include <algorithm>
#include <stdexcept>

namespace {

using pixelbands::kTexelBytes;

// Enough rows that a strip is worth its draw and read-back calls, few enough that progress is visible.
constexpr size_t kPreferredStripRows = 512;

// One run of a picture through the backend: owns the target and the current tile.
class ByteBlocks {
public:
    ByteBlocks(std::shared_ptr<RenderBackendInstance> const& instance, size_t bands, Size const& tile,
               Size const& largestBlock)
        : bands_(bands),
          components_(pixelbands::components(bands)),
          tile_(tile),
          runner_(instance),
          target_(runner_.target(SampleLayout::kRgba8, largestBlock)) {}

    /// Draws `block`, a part of `strip` whose pixels are given, and writes it to the same place of `out`.
    void drawBlock(Region const& block, Region const& strip, std::vector<std::uint8_t> const& pixels,
                   std::vector<std::uint8_t>& out) {
        for (size_t row = block.y / tile_.height; row * tile_.height < block.y + block.height; ++row)
            for (size_t column = block.x / tile_.width; column * tile_.width < block.x + block.width; ++column)
                drawTile(column * tile_.width, row * tile_.height, block, strip, pixels);
        readBack(block, strip, out);
    }

private:
    // Uploads the block's part of a tile as a tile of its own: the rest is not visible, and may not even have been
    // read. So no quad leaves the target; softpipe loses pixels on the diagonal of quads that it has to clip.
    void drawTile(size_t left, size_t top, Region const& block, Region const& strip,
                  std::vector<std::uint8_t> const& pixels) {
        size_t const x0 = std::max(left, block.x);
        size_t const x1 = std::min(left + tile_.width, block.x + block.width);
        size_t const y0 = std::max(top, block.y);
        size_t const y1 = std::min(top + tile_.height, block.y + block.height);
        size_t const width = x1 - x0;
        tilePixels_.resize(width * (y1 - y0) * components_);
        for (size_t y = y0; y < y1; ++y) {
            std::uint8_t const* const from = &pixels[((y - strip.y) * strip.width + (x0 - strip.x)) * bands_];
            pixelbands::widen(from, bands_, &tilePixels_[(y - y0) * width * components_], width);
        }
        runner_.draw(target_, components_ == 4 ? SampleLayout::kRgba8 : SampleLayout::kRgb8, {width, y1 - y0},
                     tilePixels_, {x0 - block.x, y0 - block.y, width, y1 - y0});
    }

    // The first row drawn is the lowest of the GL surface, which is read first: no flip is needed.
    void readBack(Region const& block, Region const& strip, std::vector<std::uint8_t>& out) {
        runner_.read(target_, SampleLayout::kRgba8, wholeOf(sizeOf(block)), texels_);
        for (size_t row = 0; row < block.height; ++row)
            pixelbands::narrow(&texels_[row * block.width * kTexelBytes],
                               &out[(row * strip.width + block.x - strip.x) * bands_], bands_, block.width);
    }

    size_t bands_;
    size_t components_;
    Size tile_;
    FilterRunner runner_;
    OwnedTarget target_; // destroyed before the runner
    std::vector<std::uint8_t> tilePixels_;
    std::vector<std::uint8_t> texels_;
};

} // namespace

RegionRenderer::RegionRenderer(std::shared_ptr<RenderBackendInstance> instance, size_t tileSize)
    : instance_(std::move(instance)), tileSize_(tileSize) {
    if (tileSize < kMinTileSize || tileSize > kMaxTileSize)
        throw std::invalid_argument("a tile has " + std::to_string(kMinTileSize) + " to " +
                                    std::to_string(kMaxTileSize) + " pixels per side");
}

size_t RegionRenderer::stripRows(size_t y, size_t width, size_t tileHeight) {
    size_t const fitting = std::max<size_t>(kMaxStripBytes / (width * kTexelBytes), 1);
    size_t const limit = std::min({fitting, std::max(kPreferredStripRows, tileHeight), kMaxBlockPixels});
    size_t const end = (y + limit) / tileHeight * tileHeight;
    return end > y ? end - y : limit;
}

void RegionRenderer::render(PixelSource& source, Region const& region, RowSink const& sink, Progress const& progress) {
    if (source.sampleBytes() == 2) {
        DeepBlocks blocks(instance_, source.bands());
        renderStrips(source, region, std::min(tileSize_, source.height()), blocks, sink, progress);
        return;
    }
    // A tile is never larger than the picture.
    Size const tile{std::min(tileSize_, source.width()), std::min(tileSize_, source.height())};
    size_t const targetRows = std::min({region.height, std::max(kPreferredStripRows, tile.height), kMaxBlockPixels});
    ByteBlocks blocks(instance_, source.bands(), tile, {std::min(region.width, kMaxBlockPixels), targetRows});
    renderStrips(source, region, tile.height, blocks, sink, progress);
}

template <class Blocks>
void RegionRenderer::renderStrips(PixelSource& source, Region const& region, size_t tileHeight, Blocks& blocks,
                                  RowSink const& sink, Progress const& progress) {
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t> drawn;
    size_t const bottom = region.y + region.height;
    for (size_t y = region.y; y < bottom;) {
        progress(y - region.y, region.height);
        size_t const rows = std::min(stripRows(y, region.width, tileHeight), bottom - y);
        Region const strip{region.x, y, region.width, rows};
        source.read(strip, pixels);
        drawn.resize(pixels.size());
        for (size_t x = 0; x < strip.width; x += kMaxBlockPixels) {
            Region const block{strip.x + x, y, std::min(kMaxBlockPixels, strip.width - x), rows};
            blocks.drawBlock(block, strip, pixels, drawn);
            progress(y - region.y, region.height);
        }
        sink(drawn.data(), rows);
        y += rows;
    }
    progress(region.height, region.height);
}
