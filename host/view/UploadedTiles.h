#pragma once

#include "host/PictureInfo.h"
#include "host/filter/EnhancementChain.h"
#include "host/filter/FilterRunner.h"
#include "host/view/KeptTiles.h"
#include "host/view/RebuiltTiles.h"
#include "host/view/TileReader.h"

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

/// Tiles of a picture of 8 bits that come from threads as they are shown, and are kept on the GPU:
///
///     RGB     pixels -> reserve() -> a thread copies them into the upload ring -> upload(), build()
///     RGBA    pixels -------------------------------------------------------------------> build(), by setTile
///
/// The ring uploads its buffers one after the other, each when all of its writers are done, those of other views among
/// them. A tile that it has not uploaded when it is needed takes the second way; what comes out of the ring later is
/// erased.
///
/// GL thread only. Throws VelmoraException.
class UploadedTiles final : public RebuiltTiles {
public:
    /// The targets outlive it.
    UploadedTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, PictureInfo const& info);
    /// Waits for what is in the ring. Nothing of it may be unwritten by then.
    ~UploadedTiles() override;
    UploadedTiles(UploadedTiles const&) = delete;
    UploadedTiles& operator=(UploadedTiles const&) = delete;

    SampleLayout layout() const override { return SampleLayout::kRgba8; }
    unsigned depth() const override { return EnhancementChain::kShownDepth; }
    bool has(LevelTile const& tile) const override { return tiles_.has(tile); }
    OwnedTarget const* pixels(LevelTile const& tile) override { return tiles_.find(tile); }

    /// Whether pixels go through the upload ring. Where it fails they take the other way from then on.
    bool usesRing() const;
    /// Takes room in the ring for the tile's pixels; false where it gives none.
    bool reserve(LoadedTile& tile);
    /// Takes the tile, whose pixels are in the ring, out of it: into the backend's cache, until it is built or goes.
    void upload(LoadedTile& tile);
    /// Of a tile that was written into its room and is not built: erased when it comes out of the ring.
    void abandon(size_t number);
    void build(LoadedTile const& loaded);

    /// Drops tiles that are not needed, those used longest ago first, down to so many bytes. Returns what is gone.
    size_t trim(size_t bytes, std::set<LevelTile> const& needed) { return tiles_.trim(bytes, needed); }
    size_t bytes() const { return tiles_.bytes(); }
    size_t count() const { return tiles_.count(); }

private:
    size_t nextNumber();
    void eraseLate();
    void flush();

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    PictureInfo info_;
    TileNumbers numbers_;      // of tiles in the ring
    size_t rooms_ = 0;         // there, of tiles that are neither taken out nor abandoned
    std::vector<size_t> late_; // numbers that will come out of it; there is room for those of the rooms
    size_t next_ = 0;
    bool ringFailed_ = false;
    KeptTiles<OwnedTarget> tiles_;
};
