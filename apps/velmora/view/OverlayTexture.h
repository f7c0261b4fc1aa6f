#pragma once

#include "host/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A small picture that the overlay draws. GL thread only, with the context current, also at its end.
class OverlayTexture {
public:
    OverlayTexture() = default;
    ~OverlayTexture();
    OverlayTexture(OverlayTexture const&) = delete;
    OverlayTexture& operator=(OverlayTexture const&) = delete;

    /// Between texels, where it is drawn at another size.
    enum class Filter { Linear, Nearest };

    /// RGBA, rows from the top. Leaves unit 0 active, and the texture bound there.
    void set(std::vector<std::uint8_t> const& rgba, Size const& size, Filter filter = Filter::Linear);
    void clear() { size_ = {}; }

    bool empty() const { return size_.width == 0 || size_.height == 0; }
    Size const& size() const { return size_; }
    /// The GL name.
    unsigned name() const { return name_; }

private:
    unsigned name_ = 0;
    Size size_;
};
