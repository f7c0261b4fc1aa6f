#pragma once

#include "renderbackend/Export.h"

#include <cstddef>

/// A surface with a size in physical texels. GL thread only.
class VELMORA_EXPORT Canvas {
public:
    Canvas() = default;
    Canvas(Canvas const&) = default;
    Canvas& operator=(Canvas const&) = default;
    virtual ~Canvas();

    /// Width in texels.
    virtual size_t width() const = 0;
    /// Height in texels.
    virtual size_t height() const = 0;
};
