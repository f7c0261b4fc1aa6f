#pragma once

#include "gles3renderbackend/resources/OutputExtent.h"

#include <array>
#include <cstddef>

/// The part of a texture that the unit quad shows, in texture coordinates; all of it by default.
struct TextureRange {
    double offsetX = 0;
    double offsetY = 0;
    double scaleX = 1;
    double scaleY = 1;
};

/// The parts of a filter's sources that its output shows: the valid output extent within each source at the size of the
/// filter's whole output. Made once for all sources of a draw.
class TextureRanges {
public:
    TextureRanges(Filter const& filter, size_t inputW, size_t inputH, size_t clipLeft, size_t clipRight, size_t clipTop,
                  size_t clipBottom)
        : x_({inputW, filter.scaleXNum(), filter.scaleXDen(), filter.invalidLeft(), filter.invalidRight()}, clipLeft,
             clipRight),
          y_({inputH, filter.scaleYNum(), filter.scaleYDen(), filter.invalidTop(), filter.invalidBottom()}, clipTop,
             clipBottom) {}

    /// x, y: of the source. size: its logical extent.
    TextureRange of(size_t x, size_t y, std::array<size_t, 2> const& size) const {
        double const scaledW = x_.scaled(size[0]);
        double const scaledH = y_.scaled(size[1]);
        return {x_.offset(x) / scaledW, y_.offset(y) / scaledH, x_.output() / scaledW, y_.output() / scaledH};
    }

private:
    class Axis {
    public:
        Axis(OutputAxis const& axis, size_t clipLow, size_t clipHigh)
            : num_(axis.num),
              den_(static_cast<double>(axis.den)),
              scale_(static_cast<double>(axis.num) / den_),
              invalid_(static_cast<double>(axis.invalidLow)),
              clip_(static_cast<double>(clipLow)),
              output_(static_cast<double>(axis.output(clipLow + clipHigh))) {}

        double scaled(size_t length) const { return static_cast<double>(length * num_) / den_; }
        double offset(size_t start) const { return static_cast<double>(start) * scale_ + invalid_ + clip_; }
        double output() const { return output_; }

    private:
        size_t num_;
        double den_;
        double scale_;
        double invalid_;
        double clip_;
        double output_;
    };

    Axis x_;
    Axis y_;
};
