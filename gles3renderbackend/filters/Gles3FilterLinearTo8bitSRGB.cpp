#include "gles3renderbackend/filters/Gles3FilterLinearTo8bitSRGB.h"

#include "gles3renderbackend/filters/ToneTable.h"

#include <limits>

Gles3FilterLinearTo8bitSRGB::Gles3FilterLinearTo8bitSRGB(Filter& filter) : Gles3FilterLut(filter) {
    offerParameters<ComparableSingleFilterParameters<unsigned char>>();
}

std::vector<std::uint8_t> Gles3FilterLinearTo8bitSRGB::computeTable(SingleFilterParameters const& /*params*/) const {
    if (bitDepthIn() > toneTable::kMaxBitDepth)
        throw VelmoraException("unsupported bit depth for Gles3FilterLinearTo8bitSRGB");
    if (bitDepthIn() == 8) return toneTable::srgbFromLinear8();
    return toneTable::gamma(bitDepthIn(), 2.4, 0, std::numeric_limits<std::uint64_t>::max());
}

unsigned char Gles3FilterLinearTo8bitSRGB::tableKey(SingleFilterParameters const& /*params*/) const {
    return static_cast<unsigned char>(bitDepthIn());
}
