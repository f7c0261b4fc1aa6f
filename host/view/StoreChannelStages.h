#pragma once

#include "host/view/ChannelSet.h"
#include "host/view/MixedTiles.h"
#include "host/view/StoreTileStages.h"

#include <cstdint>
#include <string>
#include <vector>

/// The stages of a store whose samples are shown through ranges and colours of channels, with all the bits that they
/// have:
///
///     rebuilt tile, residual bits -> codes -> kept on the GPU -> mixture -> enhancements
///
/// Codes are made once of a tile; other ranges and colours mix them anew. GL thread only. Throws HostError, what
/// TileStore throws, and VelmoraException.
class StoreChannelStages final : public StoreTileStages {
public:
    /// Opens the store. The targets outlive it; their backend has ChannelMixFilter in its registry. Reads the coarsest
    /// level.
    StoreChannelStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                       std::string const& storePath, DisplayRequest const& request, Options const& options);

    /// Reads the coarsest level.
    static ShownChannels showingOf(TileStore& store, DisplayRequest const& request);

    PictureInfo const& info() const override { return info_; }
    ShownTiles& shown() override { return enhanced_; }
    std::vector<ChannelDisplay> const& channels() const override { return channels_.all(); }
    std::vector<ChannelDisplay> automaticChannels() const override {
        return opening_.withAutomaticRanges(channels_.all());
    }
    std::vector<Histogram> const& histograms() const override { return opening_.histograms; }
    bool display(std::vector<ChannelDisplay> const& channels) override;
    Usage usage() const override;
    void putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) override;

    TileSources sourcesOf(LevelTile const& tile) override;
    bool isEnhanced(LevelTile const& tile) const override { return enhanced_.has(tile); }
    void enhance(LevelTile const& tile) override;
    size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) override;
    size_t trimEnhanced(size_t bytes, std::set<LevelTile> const& needed) override {
        return enhanced_.trim(bytes, needed);
    }
    size_t enhancedBytes() const override { return enhanced_.bytes(); }

private:
    void mix(LevelTile const& tile);
    std::vector<std::uint8_t> codesOf(LevelTile const& tile);

    FilterRunner& targets_;
    ImageFacts facts_;
    ChannelOpening opening_;
    PictureInfo info_;
    ChannelSet channels_;
    MixedTiles mixed_;
    ShownTiles enhanced_;
};
