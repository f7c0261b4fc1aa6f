#include "host/view/PictureRenderer.h"

#include "host/filter/EnhancedRenderer.h"
#include "host/image/PixelBands.h"
#include "host/view/LevelTile.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using namespace std::chrono_literals;

constexpr size_t kPartWidth = 2048;
constexpr size_t kPartHeight = 512;

// What one part needs is a fraction of this; the rest serves its neighbours.
PictureView::Options smallBudgets(bool forCodes, std::function<void()> const& interruption) {
    PictureView::Options options;
    options.interruption = interruption;
    options.hostBytes = 64 * 1000 * 1000;
    options.gpuBytes = 96 * 1000 * 1000;
    options.enhanceCoarserLevels = false;
    options.forCodes = forCodes;
    return options;
}

size_t upToGrid(size_t start, size_t grid, size_t end) {
    return std::min(start / grid * grid + grid, end);
}

Interval intervalAt(double zoom, size_t start, size_t length, size_t picture) {
    auto const first = static_cast<size_t>(std::floor(static_cast<double>(start) * zoom));
    auto const end = static_cast<size_t>(std::ceil(static_cast<double>(start + length) * zoom));
    size_t const from = std::min(first, picture - 1);
    return {from, std::clamp(end, from + 1, picture) - from};
}

} // namespace

PictureRenderer::PictureRenderer(std::shared_ptr<RenderBackendInstance> const& instance, PictureSource const& source,
                                 std::vector<enhancement::Step> const& steps, std::function<void()> const& interruption,
                                 size_t bits)
    : view_(instance, source, smallBudgets(bits == 16, interruption)),
      bands_(EnhancedRenderer::bandsOf(view_.info().bands, steps)),
      sampleBytes_(bits / 8) {
    view_.enhance(steps);
}

Region PictureRenderer::regionAt(PictureInfo const& info, Zoom const& zoom, Region const& region) {
    Size const whole = leveltile::pixelExtent(info, zoom);
    Interval const x = intervalAt(zoom.value(), region.x, region.width, whole.width);
    Interval const y = intervalAt(zoom.value(), region.y, region.height, whole.height);
    return regionOf(x, y);
}

void PictureRenderer::render(Zoom const& zoom, bool smooth, Region const& region, RowSink const& sink,
                             Progress const& progress) {
    std::vector<std::uint8_t> rows;
    size_t const bottom = region.y + region.height;
    size_t const right = region.x + region.width;
    for (size_t y = region.y; y < bottom;) {
        progress(y - region.y, region.height);
        size_t const count = upToGrid(y, kPartHeight, bottom) - y;
        rows.resize(count * region.width * bands_ * sampleBytes_);
        for (size_t x = region.x; x < right;) {
            size_t const next = upToGrid(x, kPartWidth, right);
            draw({zoom, static_cast<std::int64_t>(x), static_cast<std::int64_t>(y), next - x, count, smooth},
                 &rows[(x - region.x) * bands_ * sampleBytes_], region.width);
            progress(y - region.y, region.height);
            x = next;
        }
        sink(rows.data(), count);
        y += count;
    }
    progress(region.height, region.height);
}

void PictureRenderer::draw(View const& view, std::uint8_t* out, size_t rowPixels) {
    view_.show(view);
    while (!view_.complete()) {
        if (!view_.advance(100ms)) view_.wait(100ms);
    }
    sampleBytes_ == 1 ? put8(view, out, rowPixels) : put16(view, out, rowPixels);
}

void PictureRenderer::put8(View const& view, std::uint8_t* out, size_t rowPixels) {
    std::vector<std::uint8_t> const rgba = view_.pixels();
    for (size_t row = 0; row < view.height; ++row)
        pixelbands::narrow(&rgba[row * view.width * pixelbands::kTexelBytes], out + row * rowPixels * bands_, bands_,
                           view.width);
}

void PictureRenderer::put16(View const& view, std::uint8_t* out, size_t rowPixels) {
    std::vector<std::uint16_t> const codes = view_.codes();
    for (size_t row = 0; row < view.height; ++row)
        std::memcpy(out + 2 * row * rowPixels * bands_, &codes[row * view.width * bands_], 2 * view.width * bands_);
}
