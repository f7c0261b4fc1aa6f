#include "gles3renderbackend/filters/Gles3FilterLinear16TosRGB8.h"

#include "gles3renderbackend/filters/ToneTable.h"
#include "renderbackend/FilterParameters.h"

Gles3FilterLinear16TosRGB8::Gles3FilterLinear16TosRGB8(Filter& filter) : Gles3FilterLut(filter) {
    offerParameters<FilterLinear16TosRGB8Params>();
}

std::vector<std::uint8_t> Gles3FilterLinear16TosRGB8::computeTable(SingleFilterParameters const& params) const {
    auto const& curve = params.as<FilterLinear16TosRGB8Params>();
    return toneTable::gamma(bitDepthIn(), curve.gamma, curve.blackPoint, curve.whitePoint);
}

std::string Gles3FilterLinear16TosRGB8::tableKey(SingleFilterParameters const& params) const {
    return params.as<FilterLinear16TosRGB8Params>().key();
}
