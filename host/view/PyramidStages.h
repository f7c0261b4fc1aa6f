#pragma once

#include "host/pyramid/Pyramid.h"
#include "host/view/PictureStages.h"
#include "host/view/TileLoader.h"
#include "host/view/UploadedTiles.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <set>

/// The stages of the tiles of a picture file that has levels of its own, or fits into memory: threads decode what a
/// tile shows, and copy it into the upload ring. No tile needs another one. GL thread only. Throws HostError and
/// VelmoraException.
class PyramidStages final : public PictureStages {
public:
    /// The targets outlive it. threads: 0: one per core.
    PyramidStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                  std::shared_ptr<Pyramid const> const& pyramid, size_t threads);
    ~PyramidStages() override;

    /// Whether its samples are shown as they are: 8 bits, grey or RGB, with or without alpha.
    static bool shows(Pyramid const& pyramid);
    /// The pyramid as views see it.
    static PictureInfo infoOf(Pyramid const& pyramid);

    PictureInfo const& info() const override { return info_; }
    ShownTiles& shown() override { return enhanced_; }
    void wait(std::chrono::milliseconds time) override { loader_.wait(time); }
    Usage usage() const override;
    void putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) override;
    std::vector<std::uint16_t> codes(View const& view) override;
    std::vector<std::uint8_t> dataMask(View const& view) override;

    bool needsParents() const override { return false; }
    bool standsIn(size_t level) const override { return standIns_.count(level) != 0; }
    bool hasResidualBits(size_t /*level*/) const override { return false; }

    bool isEmpty(LevelTile const& /*tile*/) override { return false; }
    void load(std::vector<TileJob> const& jobs) override;
    std::unique_ptr<LoadedTile> takeLoaded() override;
    size_t loading() const override { return loader_.pending() + decoded_.size(); }

    bool isRebuilt(LevelTile const& tile) const override { return uploaded_.has(tile); }
    bool hasBands(LevelTile const& /*tile*/) const override { return false; }
    void buildFromLoaded(LoadedTile const& loaded) override { uploaded_.build(loaded); }
    void buildFromCache(LevelTile const& tile) override;
    void buildEmpty(LevelTile const& tile) override;

    bool hasResiduals(LevelTile const& /*tile*/) const override { return false; }
    void keepResiduals(LoadedTile&& loaded) override;
    void keepResidualsOf(std::set<LevelTile> const& /*tiles*/) override {}

    TileSources sourcesOf(LevelTile const& tile) override { return enhanced_.sourcesOf(tile); }
    bool isEnhanced(LevelTile const& tile) const override { return enhanced_.has(tile); }
    void enhance(LevelTile const& tile) override { enhanced_.build(tile); }

    size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) override {
        return uploaded_.trim(bytes, needed);
    }
    size_t trimEnhanced(size_t bytes, std::set<LevelTile> const& needed) override {
        return enhanced_.trim(bytes, needed);
    }
    size_t enhancedBytes() const override { return enhanced_.bytes(); }
    void freeTrimmed() override { instance_->clearTargets(); }

private:
    bool reserveNext();

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    std::shared_ptr<Pyramid const> pyramid_;
    PictureInfo info_;
    std::set<size_t> standIns_; // levels that the file has
    UploadedTiles uploaded_;
    ShownTiles enhanced_;
    std::deque<std::unique_ptr<LoadedTile>> decoded_; // that wait for room in the ring
    size_t inRing_ = 0;                               // tiles that have room there
    TileLoader loader_;
};
