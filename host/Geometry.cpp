#include "host/Geometry.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace {

std::invalid_argument malformed(std::string const& text) {
    return std::invalid_argument("'" + text + "' is not a region; write X,Y,W,H, for example 100,200,640,480");
}

} // namespace

Region parseRegion(std::string const& text) {
    std::array<size_t, 4> values{};
    char const* position = text.data();
    char const* const end = position + text.size();
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0 && (position == end || *position++ != ',')) throw malformed(text);
        auto const [next, error] = std::from_chars(position, end, values[i]);
        if (error != std::errc{}) throw malformed(text);
        position = next;
    }
    if (position != end) throw malformed(text);
    if (values[2] == 0 || values[3] == 0)
        throw std::invalid_argument("the region '" + text +
                                    "' holds no pixel; its width and height must be at least 1");
    return {values[0], values[1], values[2], values[3]};
}

std::string toText(Region const& region) {
    return std::to_string(region.x) + "," + std::to_string(region.y) + "," + std::to_string(region.width) + "," +
           std::to_string(region.height);
}

bool liesIn(Region const& region, Size const& picture) {
    if (region.width == 0 || region.height == 0) return false;
    // Differences, because the sum x + width may overflow.
    return region.x < picture.width && region.width <= picture.width - region.x && region.y < picture.height &&
           region.height <= picture.height - region.y;
}

Region common(Region const& a, Region const& b) {
    size_t const x = std::max(a.x, b.x);
    size_t const y = std::max(a.y, b.y);
    auto const length = [](size_t start, size_t end) { return end > start ? end - start : 0; };
    return {x, y, length(x, std::min(a.x + a.width, b.x + b.width)),
            length(y, std::min(a.y + a.height, b.y + b.height))};
}
