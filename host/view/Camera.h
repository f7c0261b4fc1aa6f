#pragma once

#include "host/PictureInfo.h"
#include "host/view/View.h"

#include <cstddef>
#include <cstdint>
#include <optional>

/// A place in a frame or in a picture, in its pixels, from the upper left corner.
struct Place {
    double x = 0;
    double y = 0;
};

/// A pixel of a picture.
struct PicturePixel {
    size_t x = 0;
    size_t y = 0;

    bool operator==(PicturePixel const& other) const { return x == other.x && y == other.y; }
};

/// Which part of a picture a frame shows, and how it moves. It moves by whole pixels of the frame. The middle of the
/// frame never leaves the picture, so that some of it can always be seen.
///
///     smallest zoom    half of what shows the whole picture, at most 1
///     largest zoom     Zoom::kLargest
///
/// No GL, any thread, one at a time.
class Camera {
public:
    /// Of a picture of at least one pixel; shows the whole of it. A frame may be empty, as that of a minimised window.
    Camera(PictureInfo const& picture, Size const& frame);

    View view() const;
    Zoom const& zoom() const { return zoom_; }
    Size const& frame() const { return frame_; }

    /// What was in the middle stays there; what showed the whole picture still does.
    void resize(Size const& frame);
    /// Moves the picture, to the right and down. Movement beyond the limits is discarded.
    void pan(std::int64_t right, std::int64_t down);
    /// Magnifies by a factor above 0 about a place in the frame, where the same place of the picture stays to half a
    /// pixel. Factors of less than a step of Zoom add up.
    void magnify(double factor, Place const& about);
    /// Zooms by 2^(quarters/4); every quarter changes the zoom by at least one step of Zoom.
    void zoomByQuarterOctaves(int quarters, Place const& about);
    /// The zoom nearest to so many pixels per pixel of the picture.
    void magnifyTo(double value, Place const& about);
    /// The largest zoom at which the whole picture is seen, or the smallest there is; the picture in the middle.
    void fit();
    /// Puts a place of the picture into the middle of the frame.
    void lookAt(Place const& picture);

    Place middle() const;
    /// The place of the picture that a place of the frame shows; it may lie beside the picture.
    Place pictureAt(Place const& inFrame) const;
    /// The place of the frame that shows a place of the picture.
    Place frameAt(Place const& inPicture) const;
    /// The pixel of the picture that a place of the frame shows; of those that share a sample the first.
    std::optional<PicturePixel> pixelAt(Place const& inFrame) const;
    /// Pixels of the whole picture at the zoom.
    Size size() const;

private:
    Zoom fitting() const;
    void set(Zoom const& zoom, Place const& about);
    void clamp();

    PictureInfo picture_;
    Size frame_;
    Zoom zoom_;
    double wanted_ = 1; // the magnification asked for, of which zoom_ is the nearest there is
    std::int64_t x_ = 0;
    std::int64_t y_ = 0;
    bool fitted_ = false;

    // Of the last zoom: repeated zooms about the same place of the frame keep the same place of the picture, so that
    // rounding does not accumulate.
    struct Anchor {
        Place inFrame;
        Place inPicture;
    };
    std::optional<Anchor> anchor_;
};
