#include "host/view/PyramidStages.h"

#include "host/Quietly.h"
#include "host/image/PixelBands.h"
#include "host/pyramid/PyramidTiles.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace {

// Tiles in the upload ring: at 512 x 512 x 3 bytes each less than two of its four buffers, so that no reservation waits
// for a thread.
constexpr size_t kMostInRing = 9;

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

} // namespace

bool PyramidStages::shows(Pyramid const& pyramid) {
    SampleFormat const& layout = pyramid.facts().image.layout;
    return layout.type == SampleType::Unsigned8 && layout.isPlain() && !pyramid.facts().isMultiplied;
}

PictureInfo PyramidStages::infoOf(Pyramid const& pyramid) {
    PictureInfo info = plainInfoOf(pyramid);
    info.bands = pyramid.facts().image.layout.bands;
    info.interpretation = pixelbands::toText(info.bands);
    return info;
}

PyramidStages::PyramidStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                             Pyramid const& pyramid, size_t threads)
    : FileStages(instance, targets, std::make_unique<UploadedTiles>(instance, targets, infoOf(pyramid)), pyramid,
                 infoOf(pyramid), threads,
                 [&] { return std::make_unique<PyramidTileReader>(pyramid, infoOf(pyramid)); }),
      uploaded_(static_cast<UploadedTiles&>(tiles())) {}

// What lies in the ring would come into the backend's cache later, under numbers that others have by then.
PyramidStages::~PyramidStages() {
    quietly([this] {
        loader().close();
        while (auto tile = loader().take())
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
    loader().want(missing);
}

// What is decoded goes through the ring, and comes out of it here. Whatever fails on that way, the tile has its pixels.
std::unique_ptr<LoadedTile> PyramidStages::takeLoaded() {
    while (reserveNext())
        ;
    while (auto tile = loader().take()) {
        if (tile->room) {
            --inRing_;
            loader().copyHanded();
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
    size_t const number = tile->room->targetOrTileId();
    try {
        loader().hand(std::move(tile));
    } catch (...) {
        uploaded_.abandon(number);
        throw;
    }
    ++inRing_;
    return true;
}

void PyramidStages::buildFromCache(LevelTile const& /*tile*/) {
    throw std::logic_error("tiles of a pyramid are not kept apart from those that are shown");
}
