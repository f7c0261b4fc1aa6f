#include "gles3renderbackend/filters/Gles3FilterBlackWhiteGamma8.h"

#include "gles3renderbackend/filters/ToneTable.h"
#include "renderbackend/FilterParameters.h"

Gles3FilterBlackWhiteGamma8::Gles3FilterBlackWhiteGamma8(Filter& filter) : Gles3FilterLut(filter) {
    offerParameters<FilterBlackWhiteGamma8Params>();
}

std::vector<std::uint8_t> Gles3FilterBlackWhiteGamma8::computeTable(SingleFilterParameters const& params) const {
    auto const& curve = params.as<FilterBlackWhiteGamma8Params>();
    return toneTable::blackWhiteGamma8(curve.gamma, curve.blackPoint, curve.whitePoint);
}

std::string Gles3FilterBlackWhiteGamma8::tableKey(SingleFilterParameters const& params) const {
    return params.as<FilterBlackWhiteGamma8Params>().key();
}
