#pragma once

#include "host/store/BandParts.h"
#include "host/store/TileStore.h"
#include "host/view/TileReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Bands that a tile is rebuilt from: LL at the coarsest level, else HL, LH and HH of the next.
std::vector<Band> const& bandsFor(StoreInfo const& info, LevelTile const& tile);
/// The region of these bands: even in width.
Region partRegion(StoreInfo const& info, LevelTile const& tile);

/// Cuts the parts for picture tiles out of a store's tiles, which it reads and decompresses where the cache does not
/// have them. Throws what TileStore throws.
class BandReader final : public TileReader {
public:
    BandReader(std::string const& storePath, std::shared_ptr<SampleCache> cache);

    /// The parts, plane by plane, the bands of each as bandsFor() says; of residual bits one part per band of the
    /// picture.
    void read(LoadedTile& tile) override;

private:
    BandPart part(TileAddress const& of, Region const& region);

    TileStore store_;
    BandParts parts_;
};

/// As many as are wanted; 0: one per core. Throws what TileStore throws.
std::vector<std::unique_ptr<TileReader>> bandReaders(std::string const& storePath, size_t wanted,
                                                     std::shared_ptr<SampleCache> const& cache);
