#pragma once

#include "host/store/SampleCache.h"
#include "host/view/DataMask.h"
#include "host/view/EmptyAreas.h"
#include "host/view/LevelSamples.h"
#include "host/view/LevelTiles.h"
#include "host/view/PictureStages.h"
#include "host/view/TileLoader.h"

#include <functional>
#include <string>

/// The stages of a store's tiles: threads that load them, the GPU that rebuilds and enhances them. GL thread only.
/// Throws HostError, what TileStore throws, and VelmoraException.
class StoreTileStages : public PictureStages {
public:
    struct Options {
        size_t threads = 0;
        size_t hostBytes = 0;
        std::function<void()> interruption;
    };

    /// Opens the store. The targets outlive it.
    StoreTileStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                    std::string const& storePath, Options const& options);

    PictureInfo const& info() const override { return store_.info(); }
    ShownTiles& shown() override { return enhanced_; }
    void wait(std::chrono::milliseconds time) override { loader_.wait(time); }
    Usage usage() const override { return {rebuilt_.count(), rebuilt_.bytes(), cache_->bytes()}; }
    void putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) override;
    std::optional<std::vector<std::uint16_t>> samplesAt(PicturePixel const& pixel) override;
    std::vector<std::uint16_t> codes(View const& view) override { return samples_.codes(view); }
    std::vector<std::uint8_t> dataMask(View const& view) override { return mask_.draw(view); }

    bool needsParents() const override { return true; }
    bool standsIn(size_t /*level*/) const override { return true; }
    bool hasResidualBits(size_t level) const override { return samples_.hasResidualBits(level); }
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

protected:
    TileStore& store() { return store_; }
    /// Of tiles that are rebuilt, with all their bits.
    LevelSamples& samples() { return samples_; }

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    TileStore store_;
    std::shared_ptr<SampleCache> cache_;
    LevelTiles rebuilt_;
    LevelSamples samples_;
    ShownTiles enhanced_;
    EmptyAreas emptyAreas_;
    DataMask mask_;
    TileLoader loader_;
};
