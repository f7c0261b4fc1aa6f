#include "host/pyramid/PyramidReader.h"

#include "host/HostError.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr size_t kPartBytes = 4 * 1024 * 1024; // of all bands, read at once where some are selected

} // namespace

PyramidReader::PyramidReader(std::shared_ptr<PyramidFacts const> facts, std::unique_ptr<LevelReader> levels,
                             PyramidBands bands, std::string path)
    : facts_(std::move(facts)), levels_(std::move(levels)), bands_(std::move(bands)), path_(std::move(path)) {}

void PyramidReader::read(size_t level, Region const& region, std::uint8_t* samples) {
    if (level >= facts_->levels.size())
        throw HostError(HostError::Kind::RegionOutside, "'" + path_ + "' has " + std::to_string(facts_->levels.size()) +
                                                            " levels; there is none of number " +
                                                            std::to_string(level));
    Size const& size = facts_->levels[level].size;
    if (!liesIn(region, size))
        throw HostError(HostError::Kind::RegionOutside, "the region " + toText(region) + " leaves the picture of " +
                                                            std::to_string(size.width) + " x " +
                                                            std::to_string(size.height) + " pixels; choose one inside");
    if (bands_.chosen.empty()) return levels_->read(level, region, samples);
    size_t const sampleBytes = bytesOf(facts_->image.layout.type);
    size_t const fileRowBytes = region.width * bands_.inFile * sampleBytes;
    size_t const rowsAtOnce = std::clamp<size_t>(kPartBytes / fileRowBytes, 1, region.height);
    for (size_t row = 0; row < region.height; row += rowsAtOnce) {
        Region const part{region.x, region.y + row, region.width, std::min(rowsAtOnce, region.height - row)};
        all_.resize(part.height * fileRowBytes);
        levels_->read(level, part, all_.data());
        for (size_t at = 0; at < all_.size(); at += bands_.inFile * sampleBytes)
            for (size_t const band : bands_.chosen) {
                std::memcpy(samples, &all_[at + band * sampleBytes], sampleBytes);
                samples += sampleBytes;
            }
    }
}
