#include "host/view/FileStages.h"

#include "host/Threads.h"
#include "host/pyramid/PyramidTiles.h"
#include "host/store/StoreInfo.h"
#include "host/view/AlphaTexels.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace {

// The coarsest level's longer side has at most so many samples, as in stores.
constexpr size_t kCoarsestSide = 256;

// Levels that the file has, and the coarsest: others take more to read than the tiles that they would stand in for.
std::set<size_t> levelsInFile(Pyramid const& pyramid, PictureInfo const& info) {
    std::set<size_t> levels = {info.levels};
    PyramidTiles const tiles(pyramid.reader());
    for (size_t level = 1; level < info.levels; ++level)
        if (tiles.isOfFile(level)) levels.insert(level);
    return levels;
}

std::vector<std::unique_ptr<TileReader>> made(std::function<std::unique_ptr<TileReader>()> const& makeReader,
                                              size_t threads) {
    std::vector<std::unique_ptr<TileReader>> readers;
    for (size_t i = 0; i < threadsFor(threads); ++i)
        readers.push_back(makeReader());
    return readers;
}

} // namespace

PictureInfo FileStages::plainInfoOf(Pyramid const& pyramid) {
    ImageFacts const& facts = pyramid.facts().image;
    PictureInfo info;
    info.width = facts.layout.width;
    info.height = facts.layout.height;
    info.levels = storegeometry::autoLevels(info.width, info.height, kCoarsestSide);
    if (facts.pixelsPerMillimetreX > 0) info.micronsPerPixelX = 1000 / facts.pixelsPerMillimetreX;
    if (facts.pixelsPerMillimetreY > 0) info.micronsPerPixelY = 1000 / facts.pixelsPerMillimetreY;
    info.sourceName = std::filesystem::path(pyramid.path()).filename().string();
    return info;
}

FileStages::FileStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                       std::unique_ptr<RebuiltTiles> tiles, Pyramid const& pyramid, PictureInfo const& info,
                       size_t threads, MakeReader const& makeReader)
    : instance_(instance),
      targets_(targets),
      tiles_(std::move(tiles)),
      info_(info),
      standIns_(levelsInFile(pyramid, info_)),
      enhanced_(instance, targets, *tiles_, nullptr, info_),
      loader_(made(makeReader, threads)) {}

void FileStages::buildEmpty(LevelTile const& /*tile*/) {
    throw std::logic_error("no tile of a file is empty");
}

void FileStages::keepResiduals(LoadedTile&& /*loaded*/) {
    throw std::logic_error("no tile of a file has residual bits");
}

void FileStages::putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) {
    alphatexels::put(rgba, view, tiles, info_, targets_, *tiles_);
}

std::vector<std::uint16_t> FileStages::codes(View const& /*view*/) {
    throw std::logic_error("codes are those of a picture of 16 bits");
}

std::vector<std::uint8_t> FileStages::dataMask(View const& view) {
    std::vector<std::uint8_t> mask(view.width * view.height);
    Region const pixels = view.pixelsOf(info_);
    auto const toX = static_cast<size_t>(static_cast<std::int64_t>(pixels.x) - view.x);
    auto const toY = static_cast<size_t>(static_cast<std::int64_t>(pixels.y) - view.y);
    for (size_t y = 0; y < pixels.height; ++y)
        std::fill_n(mask.begin() + static_cast<std::ptrdiff_t>((toY + y) * view.width + toX), pixels.width, 255);
    return mask;
}
