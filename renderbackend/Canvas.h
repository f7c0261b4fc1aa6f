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

    /// Texels in a row.
    virtual size_t width() const = 0;
    /// Rows.
    virtual size_t height() const = 0;
};
