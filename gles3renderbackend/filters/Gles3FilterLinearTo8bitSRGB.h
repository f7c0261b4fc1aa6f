#pragma once

#include "gles3renderbackend/filters/Gles3FilterLut.h"

/// The sRGB encoding curve. Takes no values: any ComparableSingleFilterParameters<unsigned char> suffices; the table
/// depends on the filter's input depth. Throws "unsupported bit depth for Gles3FilterLinearTo8bitSRGB" above 16.
class Gles3FilterLinearTo8bitSRGB : public Gles3FilterLut<unsigned char> {
public:
    explicit Gles3FilterLinearTo8bitSRGB(Filter& filter);

    std::vector<std::uint8_t> computeTable(SingleFilterParameters const& params) const override;
    unsigned char tableKey(SingleFilterParameters const& params) const override;
};
