#include "host/view/BandReader.h"

#include "host/Threads.h"

#include <algorithm>

namespace {

size_t bandLevel(StoreInfo const& info, LevelTile const& tile) {
    return std::min(tile.level + 1, info.levels);
}

} // namespace

std::vector<Band> const& bandsFor(StoreInfo const& info, LevelTile const& tile) {
    static std::vector<Band> const coarsest = {Band::LL};
    static std::vector<Band> const others = {Band::HL, Band::LH, Band::HH};
    return tile.level == info.levels ? coarsest : others;
}

Region partRegion(StoreInfo const& info, LevelTile const& tile) {
    if (tile.level < info.levels) return leveltile::bandRegion(info, tile);
    Region region = leveltile::planeRegion(info, tile);
    region.width += region.width % 2;
    return region;
}

BandReader::BandReader(std::string const& storePath, std::shared_ptr<SampleCache> cache)
    : store_(storePath), parts_(store_, std::move(cache)) {}

void BandReader::read(LoadedTile& tile) {
    StoreInfo const& info = store_.info();
    TileJob const& job = tile.job;
    std::vector<BandPart>& parts = tile.parts;
    for (size_t plane = 0; plane < info.bands; ++plane) {
        if (job.what == TileJob::What::Residuals) {
            parts.push_back(part({0, Band::Residual, plane, 0, 0}, leveltile::shownRegion(info, job.tile)));
            continue;
        }
        for (Band const band : bandsFor(info, job.tile))
            parts.push_back(part({bandLevel(info, job.tile), band, plane, 0, 0}, partRegion(info, job.tile)));
    }
}

BandPart BandReader::part(TileAddress const& of, Region const& region) {
    BandSamples const read = parts_.part(of, region);
    BandPart part = {of.band, of.plane, region, read.value, std::vector<std::uint8_t>(2 * read.samples.size())};
    std::uint8_t* to = part.bytes.data();
    for (std::int16_t const sample : read.samples) {
        auto const bits = static_cast<std::uint16_t>(sample);
        *to++ = static_cast<std::uint8_t>(bits & 0xFFU);
        *to++ = static_cast<std::uint8_t>(bits >> 8U);
    }
    return part;
}

std::vector<std::unique_ptr<TileReader>> bandReaders(std::string const& storePath, size_t wanted,
                                                     std::shared_ptr<SampleCache> const& cache) {
    std::vector<std::unique_ptr<TileReader>> readers;
    for (size_t i = 0; i < threadsFor(wanted); ++i)
        readers.push_back(std::make_unique<BandReader>(storePath, cache));
    return readers;
}
