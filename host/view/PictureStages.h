#pragma once

#include "host/display/ChannelDisplay.h"
#include "host/display/Histogram.h"
#include "host/view/Camera.h"
#include "host/view/ShownTiles.h"
#include "host/view/TileStages.h"
#include "host/view/View.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// The stages of one picture's tiles, and what else a view asks of the picture. GL thread only. Throws HostError and
/// VelmoraException.
class PictureStages : public TileStages {
public:
    virtual PictureInfo const& info() const = 0;
    virtual ShownTiles& shown() = 0;
    /// Until a thread has loaded a tile, for at most so long; returns at once where nothing is in work.
    virtual void wait(std::chrono::milliseconds time) = 0;

    struct Usage {
        size_t tiles = 0;     ///< on the GPU, not enhanced
        size_t gpuBytes = 0;  ///< of these tiles
        size_t hostBytes = 0; ///< of what is decoded and kept
    };
    virtual Usage usage() const = 0;

    /// The samples of a pixel of the picture, of all bands and with all their bits, where they are on the GPU.
    virtual std::optional<std::vector<std::uint16_t>> samplesAt(PicturePixel const& /*pixel*/) { return std::nullopt; }

    /// The channels that can be set; none where samples are shown as they are.
    virtual std::vector<ChannelDisplay> const& channels() const;
    /// The same with automatic ranges.
    virtual std::vector<ChannelDisplay> automaticChannels() const { return channels(); }
    /// How often the samples of each channel occur in a coarse level.
    virtual std::vector<Histogram> const& histograms() const;
    /// Shows the channels otherwise. Whether what was loaded is of no use any more. Only where there are channels.
    virtual bool display(std::vector<ChannelDisplay> const& channels);

    /// The slices and times among which the picture can be moved.
    virtual ImageStack stack() const { return {}; }
    virtual StackPosition position() const { return {}; }
    /// Shows another slice or time, which the stack has. Whether what was loaded is of no use any more.
    virtual bool moveTo(StackPosition const& position);

    /// Puts the alpha of tiles of the view's level, which are rebuilt, into the view's RGBA texels.
    virtual void putAlpha(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) = 0;
    /// The samples of a view within the picture, 16 bits, interleaved, rows from the top; the tiles of the view's level
    /// are rebuilt.
    virtual std::vector<std::uint16_t> codes(View const& view) = 0;
    /// Where the picture has data: width * height bytes of the view, 255 or 0, rows from the top.
    virtual std::vector<std::uint8_t> dataMask(View const& view) = 0;
};
