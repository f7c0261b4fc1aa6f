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

void UnitReader::read(size_t level, size_t plane, Region const& region, std::uint8_t* samples) {
    try {
        readUnits(level, plane, region, samples);
    } catch (...) {
        drop();
        throw;
    }
}

void UnitReader::readUnits(size_t level, size_t plane, Region const& region, std::uint8_t* samples) {
    PyramidLevel const& of = file_->facts.levels[level];
    size_t const pixelBytes = file_->facts.planePixelBytes();
    size_t const columns = (of.size.width + of.unit.width - 1) / of.unit.width;
    size_t const lastColumn = (region.x + region.width - 1) / of.unit.width;
    size_t const lastRow = (region.y + region.height - 1) / of.unit.height;
    for (size_t row = region.y / of.unit.height; row <= lastRow; ++row)
        for (size_t column = region.x / of.unit.width; column <= lastColumn; ++column) {
            size_t const x = column * of.unit.width;
            size_t const y = row * of.unit.height;
            Unit const unit{
                level,
                plane,
                row * columns + column,
                {x, y, std::min(of.unit.width, of.size.width - x), std::min(of.unit.height, of.size.height - y)}};
            copy(unit.region, samplesOf(unit)->data(), region, samples, pixelBytes);
        }
}

UnitCache::Samples UnitReader::samplesOf(Unit const& unit) {
    UnitCache::Key const key{unit.level, unit.plane, unit.number};
    if (auto kept = file_->cache.find(key)) {
        ++statistics_.cachedUnits;
        return kept;
    }
    auto decoded = std::make_shared<std::vector<std::uint8_t> const>(decode(unit));
    ++statistics_.decodedUnits;
    statistics_.decodedBytes += decoded->size();
    file_->cache.keep(key, decoded);
    return decoded;
}
