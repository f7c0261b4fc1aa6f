#include "host/view/View.h"

#include "host/view/LevelTile.h"

#include <algorithm>

namespace {

Interval pixelsOf(std::int64_t start, size_t length, size_t picture) {
    std::int64_t const end = std::min(start + static_cast<std::int64_t>(length), static_cast<std::int64_t>(picture));
    std::int64_t const begin = std::max(start, std::int64_t{0});
    if (end <= begin) return {0, 0};
    return {static_cast<size_t>(begin), static_cast<size_t>(end - begin)};
}

Interval samplesOf(Zoom const& zoom, size_t start, size_t length) {
    size_t const first = zoom.sampleAt(start);
    return {first, zoom.sampleAt(start + length - 1) + 1 - first};
}

} // namespace

Region View::pixelsOf(PictureInfo const& picture) const {
    Size const whole = leveltile::pixelExtent(picture, zoom);
    Interval const across = ::pixelsOf(x, width, whole.width);
    Interval const down = ::pixelsOf(y, height, whole.height);
    if (across.length == 0 || down.length == 0) return {};
    return {across.start, down.start, across.length, down.length};
}

Region View::samplesOf(Region const& pixels) const {
    if (pixels.width == 0 || pixels.height == 0) return {};
    Interval const across = ::samplesOf(zoom, pixels.x, pixels.width);
    Interval const down = ::samplesOf(zoom, pixels.y, pixels.height);
    return {across.start, down.start, across.length, down.length};
}
