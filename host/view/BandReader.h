#pragma once

#include "host/store/TileStore.h"
#include "host/view/LevelTile.h"
#include "host/view/SampleCache.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What is read at once.
struct TileJob {
    enum class What {
        Bands,    ///< that the tile is rebuilt from
        Residuals ///< the residual bits of a tile of level 0, of the picture's own bands
    };

    LevelTile tile;
    What what = What::Bands;

    bool operator==(TileJob const& other) const { return tile == other.tile && what == other.what; }
};

/// The part of a band that a picture tile is rebuilt from, or that holds its residual bits.
struct BandPart {
    Band band = Band::LL;
    size_t plane = 0;
    Region region;                     ///< of the band
    std::optional<std::int16_t> value; ///< of all samples, where they have only one
    std::vector<std::uint8_t> bytes;   ///< else the samples, little-endian, rows tightly packed from the top
};

/// Bands that a tile is rebuilt from: LL at the coarsest level, else HL, LH and HH of the next.
std::vector<Band> const& bandsFor(StoreInfo const& info, LevelTile const& tile);
/// The region of these bands: even in width.
Region partRegion(StoreInfo const& info, LevelTile const& tile);

/// Cuts the parts for picture tiles out of a store's tiles, which it reads and decompresses where the cache does not
/// have them. Each thread has one of its own. Throws what TileStore throws.
class BandReader {
public:
    BandReader(std::string const& storePath, std::shared_ptr<SampleCache> cache);

    /// Plane by plane, the bands of each as bandsFor() says; of residual bits one part a band of the picture.
    std::vector<BandPart> read(TileJob const& job);

private:
    BandPart part(TileAddress const& of, Region const& region);
    void put(BandPart& part, TileAddress const& address, std::optional<std::int16_t> value);
    SampleCache::Samples samples(TileAddress const& address);

    TileStore store_;
    std::shared_ptr<SampleCache> cache_;
};
