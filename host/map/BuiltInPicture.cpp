#include "host/map/BuiltInPicture.h"

#include <algorithm>
#include <future>
#include <thread>
#include <utility>

namespace {

constexpr size_t kMinPixelsPerThread = 64 * 1024;
constexpr size_t kColumnsAtOnce = 512; // so that their rows of heights fit in the processor's L1 cache

} // namespace

std::string BuiltInPicture::description() const {
    return "3 bands of uchar, srgb, built in";
}

void BuiltInPicture::readInto(Region const& region, std::uint8_t* pixels) {
    size_t const worthwhile = region.width * region.height / kMinPixelsPerThread + 1;
    size_t const parts =
        std::min({worthwhile, region.height, std::max<size_t>(std::thread::hardware_concurrency(), 1)});
    std::vector<std::future<void>> work;
    for (size_t part = 1; part <= parts; ++part) {
        size_t const first = region.height * (part - 1) / parts;
        size_t const end = region.height * part / parts;
        Region const rows{region.x, region.y + first, region.width, end - first};
        std::uint8_t* const out = pixels + first * region.width * bands();
        auto const policy = part == parts ? std::launch::deferred : std::launch::async;
        work.push_back(std::async(policy, [this, rows, out] { paint(rows, out); }));
    }
    for (auto& part : work)
        part.get();
}

void BuiltInPicture::paint(Region const& region, std::uint8_t* pixels) const {
    for (size_t column = 0; column < region.width; column += kColumnsAtOnce) {
        size_t const width = std::min(kColumnsAtOnce, region.width - column);
        paintColumns({region.x + column, region.y, width, region.height}, pixels + column * 3, region.width * 3);
    }
}

void BuiltInPicture::paintColumns(Region const& region, std::uint8_t* pixels, size_t rowBytes) const {
    auto const x = static_cast<std::int64_t>(region.x);
    auto y = static_cast<std::int64_t>(region.y);
    // Slopes need a neighbour on every side; each row of heights is computed once and passed on.
    std::vector<std::int64_t> above(region.width + 2);
    std::vector<std::int64_t> here(region.width + 2);
    std::vector<std::int64_t> below(region.width + 2);
    std::vector<std::int64_t> moisture(region.width);
    terrain_.fillHeights(x - 1, y - 1, above);
    terrain_.fillHeights(x - 1, y, here);
    for (size_t row = 0; row < region.height; ++row, ++y, pixels += rowBytes) {
        terrain_.fillHeights(x - 1, y + 1, below);
        terrain_.fillMoisture(x, y, moisture);
        painter_.paintRow(x, y, {above, here, below}, moisture, pixels);
        std::swap(above, here);
        std::swap(here, below);
    }
}
