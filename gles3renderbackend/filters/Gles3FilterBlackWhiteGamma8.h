#pragma once

#include "gles3renderbackend/filters/Gles3FilterLut.h"

#include <string>

/// Black point, white point and gamma on 8-bit sRGB pixels. With a FilterBlackWhiteGamma8Params.
class Gles3FilterBlackWhiteGamma8 : public Gles3FilterLut<std::string> {
public:
    explicit Gles3FilterBlackWhiteGamma8(Filter& filter);

    std::vector<std::uint8_t> computeTable(SingleFilterParameters const& params) const override;
    std::string tableKey(SingleFilterParameters const& params) const override;
};
