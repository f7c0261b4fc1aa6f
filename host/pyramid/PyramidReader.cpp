#include "host/pyramid/PyramidReader.h"

#include "host/HostError.h"
#include "host/image/Orientation.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

namespace {

constexpr size_t kPartBytes = 4 * 1024 * 1024; // of all bands of a plane, read at once where some are taken

} // namespace

PyramidReader::PyramidReader(std::shared_ptr<PyramidFacts const> facts, std::unique_ptr<LevelReader> levels,
                             PyramidTaking taking, std::string path)
    : all_(std::move(facts)),
      levels_(std::move(levels)),
      taking_(std::move(taking)),
      path_(std::move(path)),
      facts_(all_),
      taken_(taking_.chosen) {
    if (taken_.empty() && all_->stack.planes > 1) {
        taken_.resize(taking_.bands);
        std::iota(taken_.begin(), taken_.end(), size_t{0});
    }
}

void PyramidReader::take(std::vector<size_t> const& bands, StackPosition const& position) {
    auto facts = std::make_shared<PyramidFacts>(*all_);
    SampleFormat& layout = facts->image.layout;
    std::vector<size_t> all(layout.bands);
    std::iota(all.begin(), all.end(), size_t{0});
    if (bands != all) {
        layout.bands = bands.size();
        layout.colours = 0;
        layout.alpha = false;
    }
    std::vector<size_t> taken;
    taken.reserve(bands.size());
    for (size_t const band : bands)
        taken.push_back(taking_.chosen.empty() ? band : taking_.chosen.at(band));
    facts_ = std::move(facts);
    taken_ = std::move(taken);
    position_ = position;
}

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
    if (taken_.empty()) return readPlane(level, 0, region, samples);
    size_t const rowBytes = region.width * taking_.bands / all_->stack.planes * bytesOf(facts_->image.layout.type);
    size_t const rowsAtOnce = std::clamp<size_t>(kPartBytes / rowBytes, 1, region.height);
    size_t const pixelBytes = facts_->image.layout.pixelBytes();
    for (size_t row = 0; row < region.height; row += rowsAtOnce) {
        Region const part{region.x, region.y + row, region.width, std::min(rowsAtOnce, region.height - row)};
        readBands(level, part, samples + row * region.width * pixelBytes);
    }
}

// Plane by plane, each once.
void PyramidReader::readBands(size_t level, Region const& region, std::uint8_t* samples) {
    ImageStack const& stack = all_->stack;
    size_t const sampleBytes = bytesOf(facts_->image.layout.type);
    size_t const planeBands = taking_.bands / stack.planes;
    size_t const pixels = region.width * region.height;
    size_t const firstPlane = (position_.time * stack.slices + position_.slice) * stack.planes;
    plane_.resize(pixels * planeBands * sampleBytes);
    for (size_t plane = 0; plane < stack.planes; ++plane) {
        bool isRead = false;
        for (size_t i = 0; i < taken_.size(); ++i) {
            if (taken_[i] / planeBands != plane) continue;
            if (!isRead) readPlane(level, firstPlane + plane, region, plane_.data());
            isRead = true;
            std::uint8_t const* from = plane_.data() + taken_[i] % planeBands * sampleBytes;
            std::uint8_t* to = samples + i * sampleBytes;
            for (size_t pixel = 0; pixel < pixels; ++pixel) {
                std::memcpy(to, from, sampleBytes);
                from += planeBands * sampleBytes;
                to += taken_.size() * sampleBytes;
            }
        }
    }
}

// Upright, in the colours that are shown.
void PyramidReader::readPlane(size_t level, size_t plane, Region const& region, std::uint8_t* samples) {
    size_t const pixels = region.width * region.height;
    if (taking_.orientation == 1) {
        levels_->read(level, plane, region, samples);
    } else {
        size_t const pixelBytes = taking_.bands / all_->stack.planes * bytesOf(all_->image.layout.type);
        Size const inFile = orientation::turned(all_->levels[level].size, taking_.orientation);
        turned_.resize(pixels * pixelBytes);
        levels_->read(level, plane, orientation::inFile(region, inFile, taking_.orientation), turned_.data());
        orientation::turn(turned_.data(), sizeOf(region), pixelBytes, taking_.orientation, samples);
    }
    if (taking_.conversion) taking_.conversion->convert(samples, pixels);
}
