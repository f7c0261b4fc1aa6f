#include "host/view/Camera.h"

#include "host/view/LevelTile.h"

#include <algorithm>
#include <cmath>

namespace {

// The middle lies in the picture: the corner is at most half a frame before it, at most half a frame before its end.
std::int64_t clamped(std::int64_t corner, size_t frame, size_t size) {
    auto const half = static_cast<std::int64_t>(frame / 2);
    return std::clamp(corner, -half, static_cast<std::int64_t>(size) - 1 - half);
}

std::int64_t centred(size_t frame, size_t size) {
    return (static_cast<std::int64_t>(size) - static_cast<std::int64_t>(frame)) / 2;
}

// The next smaller zoom.
double belowValue(Zoom const& zoom) {
    if (zoom.value() > 1) return zoom.value() - 1;
    auto const samples = static_cast<double>(zoom.isWhole() ? Zoom::kSteps : zoom.samples());
    return zoom.value() * samples / (samples + 1);
}

// The next magnification, where so small a factor would lead to the same again.
double neighbour(Zoom const& zoom, bool larger) {
    return larger ? zoom.value() + 1 : std::max(zoom.value() - 1, zoom.value() / 2);
}

} // namespace

Camera::Camera(PictureInfo const& picture, Size const& frame) : picture_(picture), frame_(frame) {
    fit();
}

View Camera::view() const {
    View view;
    view.zoom = zoom_;
    view.x = x_;
    view.y = y_;
    view.width = frame_.width;
    view.height = frame_.height;
    return view;
}

void Camera::resize(Size const& frame) {
    if (frame.width == frame_.width && frame.height == frame_.height) return;
    auto const difference = [](size_t before, size_t after) {
        return static_cast<std::int64_t>(before / 2) - static_cast<std::int64_t>(after / 2);
    };
    x_ += difference(frame_.width, frame.width);
    y_ += difference(frame_.height, frame.height);
    frame_ = frame;
    anchor_.reset();
    // A minimised window comes back as it was.
    if (fitted_ && frame.width > 0 && frame.height > 0)
        fit();
    else
        clamp();
}

void Camera::pan(std::int64_t right, std::int64_t down) {
    x_ -= right;
    y_ -= down;
    fitted_ = false;
    anchor_.reset();
    clamp();
}

void Camera::magnify(double factor, Place const& about) {
    double const smallest = std::min(fitting().value() / 2, 1.0);
    wanted_ = std::clamp(wanted_ * factor, smallest, static_cast<double>(Zoom::kLargest));
    set(Zoom::nearest(wanted_, picture_.levels), about);
}

void Camera::zoomByQuarterOctaves(int quarters, Place const& about) {
    for (int i = 0; i < std::abs(quarters); ++i) {
        Zoom const before = zoom_;
        magnify(std::exp2(quarters > 0 ? 0.25 : -0.25), about);
        if (zoom_ == before) magnifyTo(neighbour(zoom_, quarters > 0), about);
    }
}

void Camera::magnifyTo(double value, Place const& about) {
    wanted_ = value;
    magnify(1, about);
}

void Camera::fit() {
    zoom_ = fitting();
    wanted_ = zoom_.value();
    Size const whole = size();
    x_ = centred(frame_.width, whole.width);
    y_ = centred(frame_.height, whole.height);
    anchor_.reset();
    fitted_ = true;
    clamp();
}

void Camera::lookAt(Place const& picture) {
    Place const now = frameAt(picture);
    Place const wanted = middle();
    pan(std::llround(wanted.x - now.x), std::llround(wanted.y - now.y));
}

Place Camera::middle() const {
    // A corner of a pixel, also where a side is odd.
    size_t const x = frame_.width / 2;
    size_t const y = frame_.height / 2;
    return {static_cast<double>(x), static_cast<double>(y)};
}

Place Camera::pictureAt(Place const& inFrame) const {
    return {(static_cast<double>(x_) + inFrame.x) / zoom_.value(),
            (static_cast<double>(y_) + inFrame.y) / zoom_.value()};
}

Place Camera::frameAt(Place const& inPicture) const {
    return {inPicture.x * zoom_.value() - static_cast<double>(x_),
            inPicture.y * zoom_.value() - static_cast<double>(y_)};
}

std::optional<PicturePixel> Camera::pixelAt(Place const& inFrame) const {
    auto const x = static_cast<std::int64_t>(std::floor(inFrame.x)) + x_;
    auto const y = static_cast<std::int64_t>(std::floor(inFrame.y)) + y_;
    Size const whole = size();
    if (x < 0 || y < 0 || x >= static_cast<std::int64_t>(whole.width) || y >= static_cast<std::int64_t>(whole.height))
        return std::nullopt;
    // At the end of a picture the last pixel may show less than half of a sample's width, beyond the middle of the
    // last.
    auto const pixel = [this](std::int64_t shown, size_t pixels) {
        return std::min(zoom_.sampleAt(static_cast<size_t>(shown)) << zoom_.level(), pixels - 1);
    };
    return PicturePixel{pixel(x, picture_.width), pixel(y, picture_.height)};
}

Size Camera::size() const {
    return leveltile::pixelExtent(picture_, zoom_);
}

Zoom Camera::fitting() const {
    double const x = static_cast<double>(frame_.width) / static_cast<double>(picture_.width);
    double const y = static_cast<double>(frame_.height) / static_cast<double>(picture_.height);
    double const value = std::clamp(std::min(x, y), 1e-9, static_cast<double>(Zoom::kLargest));
    Zoom zoom = Zoom::nearest(value, picture_.levels);
    auto const tooLarge = [this](Size const& whole) {
        return whole.width > frame_.width || whole.height > frame_.height;
    };
    // The nearest may be the next larger one.
    while (tooLarge(leveltile::pixelExtent(picture_, zoom))) {
        Zoom const smaller = Zoom::nearest(belowValue(zoom), picture_.levels);
        if (smaller == zoom) break;
        zoom = smaller;
    }
    return zoom;
}

void Camera::set(Zoom const& zoom, Place const& about) {
    bool const sameAnchor = anchor_ && anchor_->inFrame.x == about.x && anchor_->inFrame.y == about.y;
    if (!sameAnchor) anchor_ = Anchor{about, pictureAt(about)};
    if (zoom == zoom_) return;
    zoom_ = zoom;
    fitted_ = false;
    x_ = std::llround(anchor_->inPicture.x * zoom_.value() - about.x);
    y_ = std::llround(anchor_->inPicture.y * zoom_.value() - about.y);
    clamp();
}

void Camera::clamp() {
    Size const whole = size();
    x_ = clamped(x_, frame_.width, whole.width);
    y_ = clamped(y_, frame_.height, whole.height);
}
