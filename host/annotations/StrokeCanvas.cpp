#include "host/annotations/StrokeCanvas.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

std::int64_t pixelOf(double at) {
    return static_cast<std::int64_t>(std::floor(at));
}

// A line in a frame whose axes are exchanged where it is steep: it takes at most one step aside per step along.
struct Run {
    double along;
    double aside;
};

} // namespace

void StrokeCanvas::reset(Size const& size) {
    size_ = size;
    blockColumns_ = (size.width + kBlockSide - 1) / kBlockSide;
    isDrawn_.assign(blockColumns_ * ((size.height + kBlockSide - 1) / kBlockSide), 0);
    rgba_.assign(4 * size.width * size.height, 0);
}

void StrokeCanvas::dot(Place const& place, Colour const& colour) {
    cover(pixelOf(place.x), pixelOf(place.y), 1, colour);
}

void StrokeCanvas::rectangle(Place const& from, Place const& to, Colour const& colour) {
    std::int64_t const left = pixelOf(from.x);
    std::int64_t const right = pixelOf(to.x);
    std::int64_t const top = pixelOf(from.y);
    std::int64_t const bottom = pixelOf(to.y);
    for (std::int64_t x = left; x <= right; ++x) {
        cover(x, top, 1, colour);
        cover(x, bottom, 1, colour);
    }
    for (std::int64_t y = top + 1; y < bottom; ++y) {
        cover(left, y, 1, colour);
        cover(right, y, 1, colour);
    }
}

void StrokeCanvas::stroke(Place const& from, Place const& to, double width, Colour const& colour) {
    Place first = from;
    Place second = to;
    if (!clip(first, second, 2 * width + 1)) return;
    bool const isSteep = std::abs(second.y - first.y) > std::abs(second.x - first.x);
    Run a = isSteep ? Run{first.y, first.x} : Run{first.x, first.y};
    Run b = isSteep ? Run{second.y, second.x} : Run{second.x, second.y};
    if (b.along < a.along) std::swap(a, b);
    double const slope = b.along > a.along ? (b.aside - a.aside) / (b.along - a.along) : 0;
    double const stretch = std::sqrt(1 + slope * slope);
    double const half = width / 2 * stretch;
    // Ends are square, so that two lines meet without a notch.
    double const start = a.along - width / 2 / stretch;
    double const end = b.along + width / 2 / stretch;
    auto const length = static_cast<std::int64_t>(isSteep ? size_.height : size_.width);
    std::int64_t const last = std::min(static_cast<std::int64_t>(std::ceil(end)), length);
    for (std::int64_t step = std::max<std::int64_t>(pixelOf(start), 0); step < last; ++step) {
        double const along = std::clamp(static_cast<double>(step) + 0.5, start, end);
        double const middle = a.aside + (along - a.along) * slope;
        double const low = middle - half;
        double const high = middle + half;
        for (std::int64_t side = pixelOf(low); static_cast<double>(side) < high; ++side) {
            double const share =
                std::min(high, static_cast<double>(side) + 1) - std::max(low, static_cast<double>(side));
            isSteep ? cover(side, step, share, colour) : cover(step, side, share, colour);
        }
    }
}

void StrokeCanvas::cover(std::int64_t x, std::int64_t y, double share, Colour const& colour) {
    if (x < 0 || y < 0 || x >= static_cast<std::int64_t>(size_.width) || y >= static_cast<std::int64_t>(size_.height))
        return;
    std::uint8_t* const texel = &rgba_[4 * (static_cast<size_t>(y) * size_.width + static_cast<size_t>(x))];
    // Rounded to the nearest.
    auto const alpha = static_cast<std::uint8_t>((static_cast<unsigned>(share * 510) + 1) / 2);
    if (alpha < texel[3]) return;
    texel[0] = colour[0];
    texel[1] = colour[1];
    texel[2] = colour[2];
    texel[3] = alpha;
    isDrawn_[static_cast<size_t>(y) / kBlockSide * blockColumns_ + static_cast<size_t>(x) / kBlockSide] = 1;
}

// The part of the line in the canvas and a margin around it; whether there is one (Liang and Barsky 1984).
bool StrokeCanvas::clip(Place& from, Place& to, double margin) const {
    auto const right = static_cast<double>(size_.width) + margin;
    auto const bottom = static_cast<double>(size_.height) + margin;
    auto const isInside = [&](Place const& place) {
        return place.x >= -margin && place.x <= right && place.y >= -margin && place.y <= bottom;
    };
    if (isInside(from) && isInside(to)) return true;
    double const dx = to.x - from.x;
    double const dy = to.y - from.y;
    double enters = 0;
    double leaves = 1;
    auto const narrow = [&](double speed, double distance) {
        if (speed < 0) {
            enters = std::max(enters, distance / speed);
        } else if (speed > 0) {
            leaves = std::min(leaves, distance / speed);
        } else if (distance < 0) {
            return false;
        }
        return enters <= leaves;
    };
    if (!narrow(-dx, from.x + margin) || !narrow(dx, right - from.x)) return false;
    if (!narrow(-dy, from.y + margin) || !narrow(dy, bottom - from.y)) return false;
    Place const start = from;
    if (leaves < 1) to = {start.x + leaves * dx, start.y + leaves * dy};
    if (enters > 0) from = {start.x + enters * dx, start.y + enters * dy};
    return true;
}
