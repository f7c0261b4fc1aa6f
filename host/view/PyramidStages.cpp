#include "host/view/PyramidStages.h"

#include "host/Quietly.h"
#include "host/Threads.h"
#include "host/image/PixelBands.h"
#include "host/pyramid/PyramidTiles.h"
#include "host/store/StoreInfo.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace {

// Tiles in the upload ring: at 512 x 512 x 3 bytes each less than two of its four buffers, so that no reservation waits
// for a thread.
constexpr size_t kMostInRing = 9;

// The coarsest level's longer side has at most so many samples, as in stores.
constexpr size_t kCoarsestSide = 256;

// Decodes what a tile shows.
class PyramidTileReader final : public TileReader {
public:
    PyramidTileReader(Pyramid const& pyramid, PictureInfo const& info) : info_(info), levels_(pyramid.reader()) {}

    void read(LoadedTile& tile) override {
        Region const region = leveltile::shownRegion(info_, tile.job.tile);
        size_t const count = region.width * region.height;
        samples_.resize(count * info_.bands);
        levels_.read(tile.job.tile.level, region, samples_.data());
        tile.pixels.resize(count * pixelbands::components(info_.bands));
        pixelbands::widen(samples_.data(), info_.bands, tile.pixels.data(), count);
    }

private:
    PictureInfo info_;
    PyramidTiles levels_;
    std::vector<std::uint8_t> samples_;
};

// Levels that the file has, and the coarsest: others take more to read than the tiles that they would stand in for.
std::set<size_t> levelsInFile(Pyramid const& pyramid, PictureInfo const& info) {
    std::set<size_t> levels = {info.levels};
    PyramidTiles const tiles(pyramid.reader());
    for (size_t level = 1; level < info.levels; ++level)
        if (tiles.isOfFile(level)) levels.insert(level);
    return levels;
}

std::vector<std::unique_ptr<TileReader>> readersOf(Pyramid const& pyramid, PictureInfo const& info, size_t threads) {
    std::vector<std::unique_ptr<TileReader>> readers;
    for (size_t i = 0; i < threadsFor(threads); ++i)
        readers.push_back(std::make_unique<PyramidTileReader>(pyramid, info));
    return readers;
}

} // namespace

bool PyramidStages::shows(Pyramid const& pyramid) {
    SampleFormat const& layout = pyramid.facts().image.layout;
    return layout.type == SampleType::Unsigned8 && layout.isPlain() && !pyramid.facts().isMultiplied;
}

PictureInfo PyramidStages::infoOf(Pyramid const& pyramid) {
    ImageFacts const& facts = pyramid.facts().image;
    PictureInfo info;
    info.width = facts.layout.width;
    info.height = facts.layout.height;
    info.bands = facts.layout.bands;
    info.levels = storegeometry::autoLevels(info.width, info.height, kCoarsestSide);
    if (facts.pixelsPerMillimetreX > 0) info.micronsPerPixelX = 1000 / facts.pixelsPerMillimetreX;
    if (facts.pixelsPerMillimetreY > 0) info.micronsPerPixelY = 1000 / facts.pixelsPerMillimetreY;
    info.sourceName = std::filesystem::path(pyramid.path()).filename().string();
    info.interpretation = pixelbands::toText(info.bands);
    return info;
}

PyramidStages::PyramidStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                             std::shared_ptr<Pyramid const> const& pyramid, size_t threads)
    : instance_(instance),
      targets_(targets),
      pyramid_(pyramid),
      info_(infoOf(*pyramid)),
      standIns_(levelsInFile(*pyramid, info_)),
      uploaded_(instance, targets, info_),
      enhanced_(instance, targets, uploaded_, nullptr, info_),
      loader_(readersOf(*pyramid, info_, threads)) {}

// What lies in the ring would come into the backend's cache later, under numbers that others have by then.
PyramidStages::~PyramidStages() {
    quietly([this] {
        loader_.close();
        while (auto tile = loader_.take())
            if (tile->room) uploaded_.upload(*tile);
    });
}

PyramidStages::Usage PyramidStages::usage() const {
    return {uploaded_.count(), uploaded_.bytes(), 0};
}

void PyramidStages::load(std::vector<TileJob> const& jobs) {
    auto const isDecoded = [this](TileJob const& job) {
        return std::any_of(decoded_.begin(), decoded_.end(), [&](auto const& tile) { return tile->job == job; });
    };
    std::vector<TileJob> missing;
    std::remove_copy_if(jobs.begin(), jobs.end(), std::back_inserter(missing), isDecoded);
    loader_.want(missing);
}

// What is decoded goes through the ring, and comes out of it here. Whatever fails on that way, the tile has its pixels.
std::unique_ptr<LoadedTile> PyramidStages::takeLoaded() {
    while (reserveNext())
        ;
    while (auto tile = loader_.take()) {
        if (tile->room) {
            --inRing_;
            loader_.copyHanded();
            uploaded_.upload(*tile);
            return tile;
        }
        if (tile->failure || !uploaded_.usesRing()) return tile;
        decoded_.push_back(std::move(tile));
        reserveNext();
    }
    if (decoded_.empty() || uploaded_.usesRing()) return nullptr;
    auto tile = std::move(decoded_.front());
    decoded_.pop_front();
    return tile;
}

// Whether a decoded tile is on its way into the ring.
bool PyramidStages::reserveNext() {
    if (decoded_.empty() || inRing_ == kMostInRing || !uploaded_.reserve(*decoded_.front())) return false;
    auto tile = std::move(decoded_.front());
    decoded_.pop_front();
    ++inRing_;
    loader_.hand(std::move(tile));
    return true;
}

void PyramidStages::buildFromCache(LevelTile const& /*tile*/) {
    throw std::logic_error("tiles of a pyramid are not kept apart from those that are shown");
}

void PyramidStages::buildEmpty(LevelTile const& /*tile*/) {
    throw std::logic_error("no tile of a pyramid is empty");
}

void PyramidStages::keepResiduals(LoadedTile&& /*loaded*/) {
    throw std::logic_error("no tile of a pyramid has residual bits");
}

void PyramidStages::putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) {
    Region const shown = view.pixelsOf(info_);
    for (LevelTile const& tile : tiles) {
        Region const samples = leveltile::shownRegion(info_, tile);
        Region const pixels = common(shown, leveltile::pixelRegion(info_, view.zoom, tile));
        auto const texels = targets_.read(*uploaded_.pixels(tile), SampleLayout::kRgba8, wholeOf(sizeOf(samples)));
        auto const toX = static_cast<size_t>(static_cast<std::int64_t>(pixels.x) - view.x);
        auto const toY = static_cast<size_t>(static_cast<std::int64_t>(pixels.y) - view.y);
        for (size_t y = 0; y < pixels.height; ++y) {
            size_t const row = (view.zoom.sampleAt(pixels.y + y) - samples.y) * samples.width;
            for (size_t x = 0; x < pixels.width; ++x)
                rgba[4 * ((toY + y) * view.width + toX + x) + 3] =
                    texels[4 * (row + view.zoom.sampleAt(pixels.x + x) - samples.x) + 3];
        }
    }
}

std::vector<std::uint16_t> PyramidStages::codes(View const& /*view*/) {
    throw std::logic_error("codes are those of a picture of 16 bits");
}

std::vector<std::uint8_t> PyramidStages::dataMask(View const& view) {
    std::vector<std::uint8_t> mask(view.width * view.height);
    Region const pixels = view.pixelsOf(info_);
    auto const toX = static_cast<size_t>(static_cast<std::int64_t>(pixels.x) - view.x);
    auto const toY = static_cast<size_t>(static_cast<std::int64_t>(pixels.y) - view.y);
    for (size_t y = 0; y < pixels.height; ++y)
        std::fill_n(mask.begin() + static_cast<std::ptrdiff_t>((toY + y) * view.width + toX), pixels.width, 255);
    return mask;
}
