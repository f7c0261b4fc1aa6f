#pragma once

#include "gles3renderbackend/filters/Gles3FilterLut.h"

#include <string>

/// Black point, white point and gamma from linear codes of the filter's input depth. With a
/// FilterLinear16TosRGB8Params.
class Gles3FilterLinear16TosRGB8 : public Gles3FilterLut<std::string> {
public:
    explicit Gles3FilterLinear16TosRGB8(Filter& filter);

    std::vector<std::uint8_t> computeTable(SingleFilterParameters const& params) const override;
    std::string tableKey(SingleFilterParameters const& params) const override;
};
