#pragma once

#include "host/filter/FilterRunner.h"
#include "host/pyramid/Pyramid.h"
#include "host/view/PictureStages.h"
#include "host/view/RebuiltTiles.h"
#include "host/view/TileLoader.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <vector>

/// The stages of the tiles of a picture file that has levels of its own, or fits into memory: what its kinds share.
/// Threads decode what a tile shows; no tile needs another one, and none is known to be empty. GL thread only. Throws
/// HostError and VelmoraException.
class FileStages : public PictureStages {
public:
    PictureInfo const& info() const override { return info_; }
    ShownTiles& shown() override { return enhanced_; }
    void wait(std::chrono::milliseconds time) override { loader_.wait(time); }
    void putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) override;
    std::vector<std::uint16_t> codes(View const& view) override;
    std::vector<std::uint8_t> dataMask(View const& view) override;

    bool needsParents() const override { return false; }
    bool standsIn(size_t level) const override { return standIns_.count(level) != 0; }
    bool hasResidualBits(size_t /*level*/) const override { return false; }
    bool isEmpty(LevelTile const& /*tile*/) override { return false; }

    bool isRebuilt(LevelTile const& tile) const override { return tiles_->has(tile); }
    void buildEmpty(LevelTile const& tile) override;

    bool hasResiduals(LevelTile const& /*tile*/) const override { return false; }
    void keepResiduals(LoadedTile&& loaded) override;
    void keepResidualsOf(std::set<LevelTile> const& /*tiles*/) override {}

    TileSources sourcesOf(LevelTile const& tile) override { return enhanced_.sourcesOf(tile); }
    bool isEnhanced(LevelTile const& tile) const override { return enhanced_.has(tile); }
    void enhance(LevelTile const& tile) override { enhanced_.build(tile); }
    size_t trimEnhanced(size_t bytes, std::set<LevelTile> const& needed) override {
        return enhanced_.trim(bytes, needed);
    }
    size_t enhancedBytes() const override { return enhanced_.bytes(); }
    void freeTrimmed() override { instance_->clearTargets(); }

protected:
    /// Makes the reader of a thread.
    using MakeReader = std::function<std::unique_ptr<TileReader>()>;

    /// The targets outlive it. threads: 0: one per core.
    FileStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
               std::unique_ptr<RebuiltTiles> tiles, Pyramid const& pyramid, PictureInfo const& info, size_t threads,
               MakeReader const& makeReader);

    /// What a view sees of any file: size, levels and scale; 8 bits.
    static PictureInfo plainInfoOf(Pyramid const& pyramid);

    /// Those that the constructor was given.
    RebuiltTiles& tiles() { return *tiles_; }
    TileLoader& loader() { return loader_; }
    TileLoader const& loader() const { return loader_; }

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    std::unique_ptr<RebuiltTiles> tiles_;
    PictureInfo info_;
    std::set<size_t> standIns_; // levels that the file has
    ShownTiles enhanced_;
    TileLoader loader_;
};
