#pragma once

#include "host/PictureInfo.h"
#include "host/display/ChannelTable.h"
#include "host/filter/EnhancementChain.h"
#include "host/filter/FilterRunner.h"
#include "host/view/KeptTiles.h"
#include "host/view/RebuiltTiles.h"
#include "host/view/TileReader.h"

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

/// Tiles of a picture of any samples, on the GPU: the codes of its channels, two per target, and the mixture of their
/// colours that is shown.
///
///     codes, out of threads -> build() -> kept -> mix(), also with other tables -> mixture
///
/// GL thread only. Throws VelmoraException.
class MixedTiles final : public RebuiltTiles {
public:
    using Tables = std::vector<std::shared_ptr<ChannelTable const>>;

    /// The targets outlive it; their backend has ChannelMixFilter in its registry.
    MixedTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, PictureInfo const& info);

    SampleLayout layout() const override { return SampleLayout::kRgba8; }
    unsigned depth() const override { return EnhancementChain::kShownDepth; }
    bool has(LevelTile const& tile) const override { return mixtures_.has(tile); }
    OwnedTarget const* pixels(LevelTile const& tile) override { return mixtures_.find(tile); }

    /// What the channels of tiles show from now on, in the order of their codes; those of alpha come last. Mixtures go.
    void show(Tables tables);
    /// The codes of all tiles go: those of other channels, or others of the same, are built from now on.
    void forgetCodes() { codes_.clear(); }

    bool hasCodes(LevelTile const& tile) const { return codes_.has(tile); }
    /// Takes over the codes and mixes them: loaded.pixels has four bytes per pixel and pair of channels, pair after
    /// pair.
    void build(LoadedTile const& loaded);
    /// Mixes the codes that are kept.
    void mix(LevelTile const& tile);

    /// Drops codes, then tiles that are not needed, those used longest ago first, down to so many bytes. Returns what
    /// is gone.
    size_t trim(size_t bytes, std::set<LevelTile> const& needed);
    size_t bytes() const { return codes_.bytes() + mixtures_.bytes(); }
    size_t count() const { return mixtures_.count(); }

private:
    using Codes = std::vector<OwnedTarget>; // of two channels each

    std::shared_ptr<ChannelTable const> table(size_t channel) const;
    OwnedTarget mixed(Codes const& codes, Size const& size);

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    PictureInfo info_;
    Tables tables_;
    std::shared_ptr<ChannelTable const> nothing_;
    KeptTiles<Codes> codes_;
    KeptTiles<OwnedTarget> mixtures_;
};
