#pragma once

#include "host/view/FileStages.h"
#include "host/view/UploadedTiles.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <set>

/// The stages of a picture file whose samples are shown as they are: threads copy the tiles that they have decoded into
/// the upload ring. GL thread only. Throws HostError and VelmoraException.
class PyramidStages final : public FileStages {
public:
    /// The targets outlive it. threads: 0: one per core.
    PyramidStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets, Pyramid const& pyramid,
                  size_t threads);
    ~PyramidStages() override;

    /// Whether its samples are shown as they are: 8 bits, grey or RGB, with or without alpha.
    static bool shows(Pyramid const& pyramid);
    /// The pyramid as views see it.
    static PictureInfo infoOf(Pyramid const& pyramid);

    Usage usage() const override;

    void load(std::vector<TileJob> const& jobs) override;
    std::unique_ptr<LoadedTile> takeLoaded() override;
    size_t loading() const override { return loader().pending() + decoded_.size(); }

    bool hasBands(LevelTile const& /*tile*/) const override { return false; }
    void buildFromLoaded(LoadedTile const& loaded) override { uploaded_.build(loaded); }
    void buildFromCache(LevelTile const& tile) override;

    size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) override {
        return uploaded_.trim(bytes, needed);
    }

private:
    bool reserveNext();

    UploadedTiles& uploaded_;
    std::deque<std::unique_ptr<LoadedTile>> decoded_; // that wait for room in the ring
    size_t inRing_ = 0;                               // tiles that have room there
};
