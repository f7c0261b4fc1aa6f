#pragma once

#include "host/PictureInfo.h"
#include "host/view/Camera.h"

#include <SDL.h>

#include <optional>
#include <string>

/// A line over the picture whose length is told; both ends are places of the picture. Needs no window.
class Ruler {
public:
    /// Taken out, or put away together with its line.
    void toggle();
    bool isOut() const { return isOut_; }

    /// Draws a line while the left button drags. Whether the event is the ruler's, and moves nothing else.
    bool handle(SDL_Event const& event, Camera const& camera, double pixelsPerUnit, bool overlayHasMouse);

    struct Line {
        Place from;
        Place to;
    };
    std::optional<Line> const& line() const { return line_; }

    /// "123.4 um", in the steps of the scale bar's units, or "512 px" where the size of a pixel is unknown.
    static std::string lengthOf(Line const& line, PictureInfo const& info);

private:
    bool isOut_ = false;
    bool isDragged_ = false;
    std::optional<Line> line_;
};
