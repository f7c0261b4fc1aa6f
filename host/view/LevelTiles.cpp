#include "host/view/LevelTiles.h"

#include "host/Quietly.h"
#include "host/filter/FilterDescriptions.h"
#include "host/image/PixelBands.h"
#include "host/view/BandReader.h"

#include <algorithm>
#include <iterator>

namespace {

using Layout = SampleLayout;

// Tile id of a part of a band in the instance's cache, among the numbers that are this store's.
constexpr unsigned kPlaceBits = 18; // along a side of a level
constexpr unsigned kPlaneBits = 2;
constexpr unsigned kBandBits = 2;
constexpr unsigned kLevelBits = TileNumbers::kBits - 2 * kPlaceBits - kPlaneBits - kBandBits;
static_assert(StoreInfo::kMaxSide / leveltile::kSide <= size_t{1} << kPlaceBits);
static_assert(StoreInfo::kMaxLevels < size_t{1} << kLevelBits);
static_assert(StoreInfo::kMaxBands <= size_t{1} << kPlaneBits);

size_t numberOf(LevelTile const& tile, size_t plane, Band band) {
    size_t const place = ((tile.level << kPlaceBits | tile.row) << kPlaceBits) | tile.column;
    return ((place << kPlaneBits | plane) << kBandBits) | static_cast<size_t>(band);
}

std::vector<unsigned char> texelOf(std::int16_t value) {
    auto const bits = static_cast<std::uint16_t>(value);
    auto const low = static_cast<unsigned char>(bits & 0xFFU);
    auto const high = static_cast<unsigned char>(bits >> 8U);
    return {low, high, low, high};
}

// Bands that must stay in the cache until they are drawn; they may go once it goes.
class BandLock {
public:
    BandLock(RenderBackendInstance& instance, std::vector<size_t> const& ids) : instance_(instance), ids_(ids) {}
    BandLock(BandLock const&) = delete;
    BandLock& operator=(BandLock const&) = delete;
    ~BandLock() {
        for (size_t const id : ids_)
            quietly([&] { instance_.unlockTile(id); });
    }

private:
    RenderBackendInstance& instance_;
    std::vector<size_t> const& ids_;
};

FilterSource source(PlanePart const& part, size_t x, size_t y) {
    return {part.target.id(), x - part.region.x, y - part.region.y, false};
}

Filter colourStep(bool grey, bool shown) {
    if (grey) return shown ? description::filter3x16To4x8() : description::blitFilter3x16();
    return shown ? description::filterYCoCg16ToRGBA8() : description::filterYCoCg16ToRGB16();
}

} // namespace

LevelTiles::LevelTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, StoreInfo const& info)
    : instance_(std::move(instance)), targets_(targets), info_(info), numbers_(instance_) {}

unsigned LevelTiles::depth() const {
    return static_cast<unsigned>(info_.bits - info_.residualBits);
}

SampleLayout LevelTiles::layout() const {
    return depth() == kShownDepth ? Layout::kRgba8 : Layout::kThreeChannel16;
}

std::vector<size_t> LevelTiles::bandIds(LevelTile const& tile, std::vector<Value> const& values) const {
    std::vector<size_t> ids;
    size_t part = 0;
    for (size_t plane = 0; plane < info_.bands; ++plane) {
        for (Band const band : bandsFor(info_, tile)) {
            if (!values[part++]) ids.push_back(numbers_.id(numberOf(tile, plane, band)));
        }
    }
    return ids;
}

bool LevelTiles::hasBands(LevelTile const& tile) const {
    auto const known = known_.find(tile);
    if (known == known_.end()) return false;
    std::vector<size_t> const ids = bandIds(tile, known->second);
    return std::all_of(ids.begin(), ids.end(), [this](size_t id) { return instance_->tileSet(id); });
}

void LevelTiles::buildFromLoaded(LoadedTile const& loaded) {
    std::vector<Value> values;
    std::transform(loaded.parts.begin(), loaded.parts.end(), std::back_inserter(values),
                   [](BandPart const& part) { return part.value; });
    std::vector<size_t> const ids = bandIds(loaded.job.tile, values);
    // Until all of it is there, it is as if nothing were.
    known_.erase(loaded.job.tile);
    size_t next = 0;
    BandLock const lock(*instance_, ids);
    for (BandPart const& part : loaded.parts) {
        if (part.value) continue;
        size_t const id = ids[next++];
        instance_->setTile(id, part.bytes, {part.region.width, part.region.height, 1}, 0);
        instance_->lockTile(id);
    }
    build(loaded.job.tile, values);
    known_.emplace(loaded.job.tile, std::move(values));
}

void LevelTiles::buildFromCache(LevelTile const& tile) {
    std::vector<Value> const& values = known_.at(tile);
    std::vector<size_t> const ids = bandIds(tile, values);
    BandLock const lock(*instance_, ids);
    for (size_t const id : ids)
        instance_->lockTile(id);
    build(tile, values);
}

void LevelTiles::buildEmpty(LevelTile const& tile) {
    build(tile, std::vector<Value>(info_.bands * bandsFor(info_, tile).size(), Value(0)));
}

OwnedTarget const* LevelTiles::pixels(LevelTile const& tile) {
    Tile const* const found = tiles_.find(tile);
    return found != nullptr ? &found->pixels : nullptr;
}

PlanePart const& LevelTiles::plane(LevelTile const& tile, size_t plane) {
    return tiles_.find(tile)->planes.at(plane);
}

void LevelTiles::build(LevelTile const& tile, std::vector<Value> const& values) {
    size_t const bands = bandsFor(info_, tile).size();
    std::vector<PlanePart> planes;
    size_t bytes = 0;
    for (size_t plane = 0; plane < info_.bands; ++plane) {
        auto const first = values.begin() + static_cast<std::ptrdiff_t>(plane * bands);
        planes.push_back(rebuiltPlane(tile, plane, {first, first + static_cast<std::ptrdiff_t>(bands)}));
        bytes += 2 * planes.back().region.width * planes.back().region.height;
    }
    OwnedTarget pixels = coloured(tile, planes);
    Region const shown = leveltile::shownRegion(info_, tile);
    bytes += shown.width * shown.height * (layout() == Layout::kRgba8 ? 4 : 8);
    tiles_.keep(tile, {std::move(planes), std::move(pixels)}, bytes);
}

PlanePart LevelTiles::rebuiltPlane(LevelTile const& tile, size_t plane, std::vector<Value> const& values) {
    if (tile.level == info_.levels) return bandPart(tile, plane, Band::LL, values[0]);
    Region const bands = leveltile::bandRegion(info_, tile);
    PlanePart const& parent = tiles_.find(leveltile::parent(tile))->planes[plane];
    PlanePart const hl = bandPart(tile, plane, Band::HL, values[0]);
    PlanePart const lh = bandPart(tile, plane, Band::LH, values[1]);
    PlanePart const hh = bandPart(tile, plane, Band::HH, values[2]);

    Size const half = {bands.width, 2 * bands.height - 4};
    Size const whole = {2 * bands.width - 4, half.height};
    auto const run = [&](Filter const& description, std::vector<FilterSource> const& sources, Size const& input,
                         Size const& output) {
        OwnedTarget result = targets_.target(Layout::kOneChannel16, output);
        targets_.run(targets_.prepared(description), sources, input, result);
        return result;
    };
    Size const input = {bands.width, bands.height};
    Filter const vertical = description::filterFirIV53LeGall16();
    OwnedTarget const low =
        run(vertical, {source(parent, bands.x, bands.y), source(lh, bands.x, bands.y)}, input, half);
    OwnedTarget const high = run(vertical, {source(hl, bands.x, bands.y), source(hh, bands.x, bands.y)}, input, half);
    OwnedTarget samples =
        run(description::filterFirIH53LeGall16(), {{low.id(), 0, 0, false}, {high.id(), 0, 0, false}}, half, whole);
    return {std::move(samples), {2 * bands.x, 2 * bands.y, whole.width, whole.height}};
}

PlanePart LevelTiles::bandPart(LevelTile const& tile, size_t plane, Band band, Value const& value) {
    Region const region = partRegion(info_, tile);
    Region const all = wholeOf(sizeOf(region));
    PlanePart part = {targets_.target(Layout::kOneChannel16, {region.width, region.height}), region};
    if (!value)
        targets_.drawStored(part.target, Layout::kOneChannel16, numbers_.id(numberOf(tile, plane, band)), all);
    else if (*value != 0) // one texel of two samples is enough where all are the same
        targets_.draw(part.target, Layout::kOneChannel16, {2, 1}, texelOf(*value), all);
    else
        targets_.draw(part.target, Layout::kOneChannel16, {2, 1}, {}, all);
    return part;
}

OwnedTarget LevelTiles::coloured(LevelTile const& tile, std::vector<PlanePart> const& planes) {
    bool const grey = pixelbands::isGrey(info_.bands);
    Region const shown = leveltile::shownRegion(info_, tile);
    Size const even = {shown.width + shown.width % 2, shown.height};
    auto const plane = [&](size_t index) { return source(planes[grey ? 0 : index], shown.x, shown.y); };
    OwnedTarget const deep = targets_.target(Layout::kThreeChannel16, even);
    targets_.run(targets_.prepared(description::filterInterleave16()), {plane(0), plane(1), plane(2)}, even, deep);
    Size const size = {shown.width, shown.height};
    OwnedTarget result = targets_.target(layout(), size);
    targets_.run(targets_.prepared(colourStep(grey, layout() == Layout::kRgba8)), {{deep.id(), 0, 0, false}}, size,
                 result);
    return result;
}
