#pragma once

#include "host/display/DisplayRequest.h"
#include "host/view/ChannelReader.h"
#include "host/view/ChannelSet.h"
#include "host/view/FileStages.h"
#include "host/view/MixedTiles.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

/// The stages of a picture file of any samples: threads make codes of them, and the GPU mixes the colours of the
/// channels. GL thread only. Throws HostError and VelmoraException.
class ChannelStages final : public FileStages {
public:
    /// The targets outlive it; their backend has ChannelMixFilter in its registry. threads: 0: one per core. Reads the
    /// coarsest level where a range is automatic.
    ChannelStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets, Pyramid const& pyramid,
                  DisplayRequest const& request, size_t threads);

    /// Reads the coarsest level where a range is automatic.
    static ShownChannels showingOf(Pyramid const& pyramid, DisplayRequest const& request);

    std::vector<ChannelDisplay> const& channels() const override { return channels_.all(); }
    std::vector<ChannelDisplay> automaticChannels() const override {
        return opening_.withAutomaticRanges(channels_.all());
    }
    std::vector<Histogram> const& histograms() const override { return opening_.histograms; }
    bool display(std::vector<ChannelDisplay> const& channels) override { return show(channels, position_); }

    ImageStack stack() const override { return stack_; }
    StackPosition position() const override { return position_; }
    bool moveTo(StackPosition const& position) override { return show(channels_.all(), position); }

    Usage usage() const override { return {mixed_.count(), mixed_.bytes(), 0}; }

    void load(std::vector<TileJob> const& jobs) override { loader().want(jobs); }
    std::unique_ptr<LoadedTile> takeLoaded() override;
    size_t loading() const override { return loader().pending(); }

    bool hasBands(LevelTile const& tile) const override { return mixed_.hasCodes(tile); }
    void buildFromLoaded(LoadedTile const& loaded) override { mixed_.build(loaded); }
    void buildFromCache(LevelTile const& tile) override { mixed_.mix(tile); }
    size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) override { return mixed_.trim(bytes, needed); }

private:
    struct Opened;
    ChannelStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets, Pyramid const& pyramid,
                  Opened opened, size_t threads);

    bool show(std::vector<ChannelDisplay> const& channels, StackPosition const& position);

    ImageFacts facts_;
    ImageStack stack_;
    StackPosition position_;
    std::shared_ptr<CurrentCoding> coding_;
    ChannelOpening opening_;
    ChannelSet channels_;
    MixedTiles& mixed_;
};
