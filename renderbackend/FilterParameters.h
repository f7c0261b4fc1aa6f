#pragma once

#include "renderbackend/Export.h"
#include "renderbackend/SingleFilterParameters.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

class DataEnvelopes;

/// Unsharp mask on 8-bit pixels. The gain is truncated toward zero to steps of 1/32.
struct VELMORA_EXPORT FilterSharpness8Params : SingleFilterParameters {
    double gain = 1.0;
};

/// Unsharp mask on 16-bit pixels. The gain is truncated to whole numbers.
struct VELMORA_EXPORT FilterSharpness16Params : SingleFilterParameters {
    double gain = 1.0;
};

/// Contrast-limited adaptive histogram equalisation.
struct VELMORA_EXPORT FilterClaheParams : SingleFilterParameters {
    double value = 1.0; ///< clip limit, relative to a flat histogram; below 1.0 counts as 1.0
};

/// A colour matrix in fixed point, 1024 = 1.0, column-major: coefficients 0 to 2 weigh the input's red in the output's
/// red, green and blue, 3 to 5 its green, 6 to 8 its blue.
struct VELMORA_EXPORT Filter3x3MatrixParams : SingleFilterParameters {
    std::array<std::int32_t, 9> matrix = {1024, 0, 0, 0, 1024, 0, 0, 0, 1024};
    double scale = 1.0; ///< strength: multiplies every coefficient, quantised to 1/1024
};

/// Truncation of 16-bit samples to multiples of 2^shift, magnitudes toward zero.
struct VELMORA_EXPORT FilterTruncate16Params : SingleFilterParameters {
    size_t shift = 0;
    bool rounding = false; ///< adds (2^shift - 1) / 2 to every magnitude that is not zero afterwards
};

/// A black point, a white point and a gamma. The key identifies the three values: equal keys mean equal tables.
struct VELMORA_EXPORT GammaTableParams : ComparableSingleFilterParameters<std::string> {
    GammaTableParams(std::string key, double gamma, std::uint64_t blackPoint, std::uint64_t whitePoint);
    /// Makes the key from the exact bits of the values, so that different values never share a table.
    explicit GammaTableParams(double gamma = 1.0, std::uint64_t blackPoint = 0,
                              std::uint64_t whitePoint = std::numeric_limits<std::uint64_t>::max());

    double gamma;
    std::uint64_t blackPoint; ///< in codes of the table's input scale
    std::uint64_t whitePoint; ///< in codes of the table's input scale; capped at the largest code
};

/// Tone curve for 8-bit sRGB pixels; its black and white points count in the 4096 codes of the linear 12-bit table.
struct VELMORA_EXPORT FilterBlackWhiteGamma8Params : GammaTableParams {
    using GammaTableParams::GammaTableParams;
};

/// Tone curve for pixels of more than 8 bits, from linear codes of the filter's input depth.
struct VELMORA_EXPORT FilterLinear16TosRGB8Params : GammaTableParams {
    using GammaTableParams::GammaTableParams;
};

/// The shape of a mask.
struct VELMORA_EXPORT MaskFilterParams : SingleFilterParameters {
    std::shared_ptr<DataEnvelopes> envelopes;
};
