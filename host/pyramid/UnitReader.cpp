#include "host/pyramid/UnitReader.h"

#include <algorithm>
#include <cstring>

namespace {

// Copies what a unit has of a region.
void copy(Region const& unit, std::uint8_t const* from, Region const& region, std::uint8_t* to, size_t pixelBytes) {
    size_t const x = std::max(unit.x, region.x);
    size_t const y = std::max(unit.y, region.y);
    size_t const right = std::min(unit.x + unit.width, region.x + region.width);
    size_t const bottom = std::min(unit.y + unit.height, region.y + region.height);
    for (size_t row = y; row < bottom; ++row)
        std::memcpy(to + ((row - region.y) * region.width + x - region.x) * pixelBytes,
                    from + ((row - unit.y) * unit.width + x - unit.x) * pixelBytes, (right - x) * pixelBytes);
}

} // namespace

void UnitReader::read(size_t level, Region const& region, std::uint8_t* samples) {
    try {
        readUnits(level, region, samples);
    } catch (...) {
        drop();
        throw;
    }
}

void UnitReader::readUnits(size_t level, Region const& region, std::uint8_t* samples) {
    PyramidLevel const& of = file_->facts.levels[level];
    size_t const pixelBytes = file_->facts.image.layout.pixelBytes();
    size_t const columns = (of.size.width + of.unit.width - 1) / of.unit.width;
    size_t const lastColumn = (region.x + region.width - 1) / of.unit.width;
    size_t const lastRow = (region.y + region.height - 1) / of.unit.height;
    for (size_t row = region.y / of.unit.height; row <= lastRow; ++row)
        for (size_t column = region.x / of.unit.width; column <= lastColumn; ++column) {
            size_t const x = column * of.unit.width;
            size_t const y = row * of.unit.height;
            Region const one{x, y, std::min(of.unit.width, of.size.width - x),
                             std::min(of.unit.height, of.size.height - y)};
            copy(one, unit(level, one, row * columns + column)->data(), region, samples, pixelBytes);
        }
}

UnitCache::Samples UnitReader::unit(size_t level, Region const& region, size_t index) {
    if (auto kept = file_->cache.find(level, index)) {
        ++statistics_.cachedUnits;
        return kept;
    }
    auto decoded = std::make_shared<std::vector<std::uint8_t> const>(decode(level, region, index));
    ++statistics_.decodedUnits;
    statistics_.decodedBytes += decoded->size();
    file_->cache.keep(level, index, decoded);
    return decoded;
}
