#pragma once

#include "host/view/EmptyAreas.h"
#include "host/view/LevelSamples.h"
#include "host/view/LevelTiles.h"
#include "host/view/SampleCache.h"
#include "host/view/ShownTiles.h"
#include "host/view/TileStages.h"

#include <functional>
#include <string>

/// The stages of a store's tiles: threads that load them, the GPU that rebuilds and enhances them. GL thread only.
/// Throws HostError, what TileStore throws, and VelmoraException.
class StoreTileStages final : public TileStages {
public:
    struct Options {
        size_t threads = 0;
        size_t hostBytes = 0;
        std::function<void()> interruption;
    };

    /// Opens the store. The targets outlive it.
    StoreTileStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                    std::string const& storePath, Options const& options);

    StoreInfo const& info() const { return store_.info(); }
    EmptyAreas& emptyAreas() { return emptyAreas_; }
    LevelTiles& rebuilt() { return rebuilt_; }
    LevelTiles const& rebuilt() const { return rebuilt_; }
    LevelSamples& samples() { return samples_; }
    ShownTiles& enhanced() { return enhanced_; }
    /// Of decompressed tiles that are kept.
    size_t hostBytes() const { return cache_->bytes(); }
    /// Until a thread has loaded a tile, for at most so long; returns at once where nothing is in work.
    void wait(std::chrono::milliseconds time) { loader_.wait(time); }

    bool isEmpty(LevelTile const& tile) override { return emptyAreas_.empty(tile); }
    void load(std::vector<TileJob> const& jobs) override { loader_.want(jobs); }
    std::unique_ptr<LoadedTile> takeLoaded() override { return loader_.take(); }
    size_t loading() const override { return loader_.pending(); }

    bool isRebuilt(LevelTile const& tile) const override { return rebuilt_.has(tile); }
    bool hasBands(LevelTile const& tile) const override { return rebuilt_.hasBands(tile); }
    void buildFromLoaded(LoadedTile const& loaded) override { rebuilt_.buildFromLoaded(loaded); }
    void buildFromCache(LevelTile const& tile) override { rebuilt_.buildFromCache(tile); }
    void buildEmpty(LevelTile const& tile) override { rebuilt_.buildEmpty(tile); }

    bool hasResiduals(LevelTile const& tile) const override { return samples_.hasResiduals(tile); }
    void keepResiduals(LoadedTile&& loaded) override { samples_.keep(std::move(loaded)); }
    void keepResidualsOf(std::set<LevelTile> const& tiles) override { samples_.keepOnly(tiles); }

    TileSources sourcesOf(LevelTile const& tile) override { return enhanced_.sourcesOf(tile); }
    bool isEnhanced(LevelTile const& tile) const override { return enhanced_.has(tile); }
    void enhance(LevelTile const& tile) override { enhanced_.build(tile); }

    size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) override {
        return rebuilt_.trim(bytes, needed);
    }
    size_t trimEnhanced(size_t bytes, std::set<LevelTile> const& needed) override {
        return enhanced_.trim(bytes, needed);
    }
    size_t enhancedBytes() const override { return enhanced_.bytes(); }
    void freeTrimmed() override { instance_->clearTargets(); }

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    TileStore store_;
    std::shared_ptr<SampleCache> cache_;
    LevelTiles rebuilt_;
    LevelSamples samples_; // of pictures of 16 bits
    ShownTiles enhanced_;
    EmptyAreas emptyAreas_;
    TileLoader loader_;
};
