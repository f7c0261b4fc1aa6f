#pragma once

#include "host/view/ShownTiles.h"
#include "host/view/View.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Draws frames out of shown tiles.
///
///     tiles of the view's level --+
///     coarser ones, enlarged -----+--> samples side by side --> one quad, scaled --> frame
///
/// No quad ends within a frame but at the picture's edge, so no seam can show between tiles. GL thread only. Throws
/// VelmoraException.
class FrameComposer {
public:
    FrameComposer(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, ShownTiles& tiles,
                  PictureInfo const& info);

    /// Of the view's size. Where a tile is missing, the finest coarser one is shown; the background where there is
    /// none. Holes, in pixels of the picture at the view's zoom, are striped.
    OwnedTarget draw(View const& view, std::array<std::uint8_t, 3> const& background, std::vector<Region> const& holes);

private:
    OwnedTarget const& canvas(bool smooth);
    void drawPiece(View const& view, Region const& pixels, OwnedTarget const& frame);
    void gather(size_t level, Region const& samples, OwnedTarget const& to, size_t x, size_t y);
    void enlarge(LevelTile const& coarser, OwnedTarget const& texels, Region const& samples, size_t level,
                 Region const& area, OwnedTarget const& to);
    void stripe(View const& view, Region const& pixels, OwnedTarget const& frame);
    void repeatEdges(OwnedTarget const& canvas, Region const& samples, Size const& level);

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    ShownTiles& tiles_;
    PictureInfo info_;
    std::vector<size_t> background_;
    // Scratch targets for samples side by side, made once: createTarget may hand out a larger one that was used before,
    // and the scale depends on the exact size.
    std::optional<OwnedTarget> canvas_;
    std::optional<OwnedTarget> smoothCanvas_;
};
