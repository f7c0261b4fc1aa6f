#pragma once

#include "host/filter/EnhancementChain.h"
#include "host/filter/FilterRunner.h"
#include "host/view/KeptTiles.h"
#include "host/view/RebuiltTiles.h"
#include "host/view/TileReader.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

/// A part of a plane of a level in a target of one 16-bit channel: its first column is region.x, its first row
/// region.y.
struct PlanePart {
    OwnedTarget target;
    Region region;
};

/// Rebuilds tiles of a store's levels on the GPU and keeps them:
///
///     level 2    LL                       parts of bands, drawn from the instance's tile cache
///                 |  HL LH HH
///                columns, then rows       M x N samples of each band give (2M - 4) x (2N - 4)
///                 |
///     level 1    samples --- colour ---> pixels
///                 |  HL LH HH
///                columns, then rows
///                 |
///     level 0    samples --- colour ---> pixels of the picture
///
/// Level k is the low band that level k + 1 of the store was made into. What comes out is exact: the store continues
/// the bands beyond the picture's edge, so no edge is a case of its own. GL thread only. Throws VelmoraException.
class LevelTiles final : public RebuiltTiles {
public:
    /// Bits of a sample that is shown as it is.
    static constexpr unsigned kShownDepth = EnhancementChain::kShownDepth;

    LevelTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, StoreInfo const& info);

    SampleLayout layout() const override;
    unsigned depth() const override;
    bool has(LevelTile const& tile) const override { return tiles_.has(tile); }
    OwnedTarget const* pixels(LevelTile const& tile) override;
    /// Whether the instance's cache still has the tile's bands.
    bool hasBands(LevelTile const& tile) const;

    /// From its bands, which the instance's cache keeps as long as it has room. The parent is there.
    void buildFromLoaded(LoadedTile const& loaded);
    /// From the bands in the cache.
    void buildFromCache(LevelTile const& tile);
    /// From high bands of 0.
    void buildEmpty(LevelTile const& tile);

    /// The samples of a plane. The tile is there.
    PlanePart const& plane(LevelTile const& tile, size_t plane);

    /// Drops tiles that are not needed, those used longest ago first, down to so many bytes. Returns what is gone.
    size_t trim(size_t bytes, std::set<LevelTile> const& needed) { return tiles_.trim(bytes, needed); }
    size_t bytes() const { return tiles_.bytes(); }
    size_t count() const { return tiles_.count(); }

private:
    using Value = std::optional<std::int16_t>; // of a part that has only one

    struct Tile {
        std::vector<PlanePart> planes;
        OwnedTarget pixels;
    };

    std::vector<size_t> bandIds(LevelTile const& tile, std::vector<Value> const& values) const;
    void build(LevelTile const& tile, std::vector<Value> const& values);
    PlanePart rebuiltPlane(LevelTile const& tile, size_t plane, std::vector<Value> const& values);
    PlanePart bandPart(LevelTile const& tile, size_t plane, Band band, Value const& value);
    OwnedTarget coloured(LevelTile const& tile, std::vector<PlanePart> const& planes);

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    StoreInfo info_;
    TileNumbers numbers_; // of the bands' parts in the instance's cache
    KeptTiles<Tile> tiles_;
    std::map<LevelTile, std::vector<Value>> known_; // of each part, as BandReader orders them
};
