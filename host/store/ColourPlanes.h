#pragma once

#include "host/store/StoreInfo.h"

#include <array>
#include <cstdint>
#include <vector>

/// Converts between the rows of a picture and the planes that the wavelet transforms.
///
/// A sample v is cut into q = v >> residualBits and its residual, the lowest bits. q of red, green and blue becomes
/// luma, Co and Cg by the reversible YCoCg-R transform (Malvar and Sullivan 2003); q of grey and of alpha stays:
///
///     Co = R - B    t = B + floor(Co / 2)    Cg = G - t    Y = t + floor(Cg / 2)
///
/// Residuals are those of the picture's bands, untransformed.
class ColourPlanes {
public:
    using Sample = wavelet53::Sample;

    explicit ColourPlanes(StoreInfo const& info);

    /// Splits a row of the picture, interleaved samples of 8 bits, or of 16 in the machine's byte order, into the
    /// planes.
    void split(std::uint8_t const* pixels);
    /// Joins the planes to a row of the picture, width * bands samples; overwrites the planes. What leaves the scale of
    /// the samples, as coarser levels may, becomes its end.
    void join(std::uint8_t* pixels);

    /// width samples; plane < bands. Residuals exist if residualBits is not 0.
    Sample* plane(size_t index) { return planes_[index].data(); }
    Sample* residual(size_t band) { return residuals_[band].data(); }

private:
    StoreInfo info_;
    std::array<std::vector<Sample>, StoreInfo::kMaxBands> planes_;
    std::array<std::vector<Sample>, StoreInfo::kMaxBands> residuals_;
};
