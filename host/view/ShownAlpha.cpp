#include "host/view/ShownAlpha.h"

#include <algorithm>

namespace {

constexpr unsigned kShownDepth = 8;

} // namespace

Region shownalpha::pixelsOf(Zoom const& zoom, Region const& samples) {
    std::size_t const x = zoom.pixelsOf(samples.x);
    std::size_t const y = zoom.pixelsOf(samples.y);
    return {x, y, zoom.pixelsOf(samples.x + samples.width) - x, zoom.pixelsOf(samples.y + samples.height) - y};
}

void shownalpha::put(std::vector<std::uint8_t>& rgba, View const& view, Region const& pixels,
                     FilterRunner const& targets, PlanePart const& plane, unsigned depth) {
    Region const& region = plane.region;
    std::vector<unsigned char> const bytes =
        targets.read(plane.target, SampleLayout::kOneChannel16, {0, 0, region.width, region.height});
    auto const toX = static_cast<std::size_t>(static_cast<std::int64_t>(pixels.x) - view.x);
    auto const toY = static_cast<std::size_t>(static_cast<std::int64_t>(pixels.y) - view.y);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        std::size_t const row = (view.zoom.sampleAt(pixels.y + y) - region.y) * region.width;
        for (std::size_t x = 0; x < pixels.width; ++x) {
            std::size_t const place = 2 * (row + view.zoom.sampleAt(pixels.x + x) - region.x);
            auto const sample = static_cast<std::int16_t>(bytes[place] | bytes[place + 1] << 8U);
            int const code = sample >> (depth - kShownDepth);
            rgba[4 * ((toY + y) * view.width + toX + x) + 3] = static_cast<std::uint8_t>(std::clamp(code, 0, 255));
        }
    }
}
