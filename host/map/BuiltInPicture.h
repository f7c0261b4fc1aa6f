#pragma once

#include "host/image/PixelSource.h"
#include "host/map/MapPainter.h"
#include "host/map/Terrain.h"

/// A picture of 16384 x 16384 RGB pixels that is computed, not stored: a map of islands whose grid is labelled with
/// pixel coordinates, so that a misplaced tile is obvious. Integer arithmetic only: every machine computes the same
/// bytes, whatever the regions and their order.
class BuiltInPicture final : public PixelSource {
public:
    static constexpr size_t kSide = 16384;

    size_t width() const override { return kSide; }
    size_t height() const override { return kSide; }
    size_t bands() const override { return 3; }
    std::string description() const override;

protected:
    /// Large regions are computed on one thread per core.
    void readInto(Region const& region, std::uint8_t* pixels) override;

private:
    void paint(Region const& region, std::uint8_t* pixels) const;
    void paintColumns(Region const& region, std::uint8_t* pixels, size_t rowBytes) const;

    Terrain terrain_;
    MapPainter painter_{static_cast<std::int64_t>(kSide)};
};
