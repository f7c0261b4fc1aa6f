#include "host/pyramid/PyramidTiles.h"

#include "host/HostError.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr size_t kHeldBytes = 8 * 1024 * 1024; // of the file's samples

// Alpha weighs colours that are not multiplied by it already.
bool isWeighed(PyramidFacts const& facts) {
    SampleFormat const& layout = facts.image.layout;
    return layout.alpha && layout.colours > 0 && layout.bands > layout.colours && !facts.isMultiplied;
}

} // namespace

// From a level of the file to a level of the view.
struct PyramidTiles::Scales {
    Scales(size_t fileLevel_, LevelScale x_, LevelScale y_, PyramidLevel level_)
        : fileLevel(fileLevel_), x(x_), y(y_), level(level_) {}

    size_t fileLevel;
    LevelScale x;
    LevelScale y;
    PyramidLevel level;

    bool isFineEnough() const { return x.isFineEnough() && y.isFineEnough(); }
    bool isEqual() const { return x.isEqual() && y.isEqual(); }
};

PyramidTiles::PyramidTiles(std::unique_ptr<PyramidReader> reader)
    : reader_(std::move(reader)),
      means_(LevelMeans::of(facts().image.layout, isWeighed(facts()), facts().image.nodata)) {}

void PyramidTiles::take(std::vector<size_t> const& bands, StackPosition const& position) {
    reader_->take(bands, position);
    means_ = LevelMeans::of(facts().image.layout, isWeighed(facts()), facts().image.nodata);
}

Size PyramidTiles::size(size_t level) const {
    SampleFormat const& layout = facts().image.layout;
    return {LevelScale::halved(layout.width, level), LevelScale::halved(layout.height, level)};
}

PyramidTiles::Scales PyramidTiles::scalesOf(size_t level, size_t fileLevel) const {
    PyramidLevel const& of = facts().levels[fileLevel];
    SampleFormat const& layout = facts().image.layout;
    return {fileLevel, LevelScale(layout.width, of.size.width, level), LevelScale(layout.height, of.size.height, level),
            of};
}

size_t PyramidTiles::fileLevel(size_t level) const {
    if (level == 0) return 0;
    size_t const count = facts().levels.size();
    for (size_t fileLevel = count - 1; fileLevel > 0; --fileLevel)
        if (scalesOf(level, fileLevel).isFineEnough()) return fileLevel;
    return 0;
}

bool PyramidTiles::isOfFile(size_t level) const {
    return scalesOf(level, fileLevel(level)).isEqual();
}

void PyramidTiles::read(size_t level, Region const& region, std::uint8_t* samples) {
    if (level > kMostLevels || !liesIn(region, size(level)))
        throw HostError(HostError::Kind::RegionOutside, "the region " + toText(region) + " leaves level " +
                                                            std::to_string(level) +
                                                            " of the picture; choose one inside");
    Scales const scales = scalesOf(level, fileLevel(level));
    if (scales.isEqual()) return take(scales, region, samples);
    size_t const columns = columnsAtOnce(scales, {region.x, region.width});
    size_t const pixelBytes = facts().image.layout.pixelBytes();
    for (size_t x = 0; x < region.width; x += columns) {
        Region const part{region.x + x, region.y, std::min(columns, region.width - x), region.height};
        average(scales, part, region.width, samples + x * pixelBytes);
    }
}

// Rows of the file's units are read at once as far as that is possible, so that a unit is decoded once. Strips are as
// wide as the picture: fewer columns would decode them again and again.
size_t PyramidTiles::columnsAtOnce(Scales const& scales, Interval const& columns) const {
    size_t const pixelBytes = facts().image.layout.pixelBytes();
    bool const isStrip = scales.level.unit.width >= scales.level.size.width;
    size_t const most = std::max<size_t>(kHeldBytes / pixelBytes / (isStrip ? 1 : scales.level.unit.height), 1);
    Interval const all = scales.x.of(columns);
    if (all.length <= most) return columns.length;
    return std::max<size_t>(columns.length * most / (all.length + 1), 1);
}

void PyramidTiles::take(Scales const& scales, Region const& region, std::uint8_t* samples) {
    Interval const columns = scales.x.of({region.x, region.width});
    Interval const rows = scales.y.of({region.y, region.height});
    bool const isSame = columns.start == region.x && rows.start == region.y && columns.length == region.width &&
                        rows.length == region.height;
    if (isSame) return reader_->read(scales.fileLevel, region, samples);
    size_t const pixelBytes = facts().image.layout.pixelBytes();
    held_ = {};
    for (size_t y = region.y; y < region.y + region.height; ++y) {
        std::uint8_t const* const row = fileRow(scales, columns, scales.y.of(y).start, rows.start + rows.length);
        for (size_t x = region.x; x < region.x + region.width; ++x, samples += pixelBytes)
            std::memcpy(samples, row + (scales.x.of(x).start - columns.start) * pixelBytes, pixelBytes);
    }
}

void PyramidTiles::average(Scales const& scales, Region const& region, size_t rowPixels, std::uint8_t* samples) {
    Interval const across = scales.x.of({region.x, region.width});
    Interval const down = scales.y.of({region.y, region.height});
    std::vector<Interval> columns;
    for (size_t x = region.x; x < region.x + region.width; ++x) {
        Interval const one = scales.x.of(x);
        columns.push_back({one.start - across.start, one.length});
    }
    size_t const rowBytes = rowPixels * facts().image.layout.pixelBytes();
    held_ = {};
    for (size_t row = 0; row < region.height; ++row) {
        Interval const rows = scales.y.of(region.y + row);
        means_->start(region.width);
        for (size_t y = rows.start; y < rows.start + rows.length; ++y)
            means_->add(fileRow(scales, across, y, down.start + down.length), columns);
        means_->finish(samples + row * rowBytes);
    }
}

// A row of the file's level, read with those below it: up to the end of their units, as far as memory allows, and not
// beyond row `end`.
std::uint8_t const* PyramidTiles::fileRow(Scales const& scales, Interval const& columns, size_t y, size_t end) {
    size_t const rowBytes = columns.length * facts().image.layout.pixelBytes();
    if (y < held_.y || y >= held_.y + held_.height) {
        size_t const unit = scales.level.unit.height;
        size_t const most = std::max<size_t>(kHeldBytes / rowBytes, 1);
        size_t const wanted = std::min(end, (y / unit + std::max<size_t>(most / unit, 1)) * unit);
        Region const region{columns.start, y, columns.length, std::min(most, wanted - y)};
        rows_.resize(region.height * rowBytes);
        reader_->read(scales.fileLevel, region, rows_.data());
        held_ = region;
    }
    return rows_.data() + (y - held_.y) * rowBytes;
}
