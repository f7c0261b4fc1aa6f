#include "gles3renderbackend/FilterRegistry.h"

#include "gles3renderbackend/filters/Gles3BlitFilter16.h"
#include "gles3renderbackend/filters/Gles3BlitFilter8.h"
#include "gles3renderbackend/filters/Gles3Filter1x16ToRGB8.h"
#include "gles3renderbackend/filters/Gles3Filter3x16To4x8.h"
#include "gles3renderbackend/filters/Gles3Filter3x3Matrix16.h"
#include "gles3renderbackend/filters/Gles3Filter3x3Matrix8.h"
#include "gles3renderbackend/filters/Gles3FilterBlackWhiteGamma8.h"
#include "gles3renderbackend/filters/Gles3FilterCLAHE.h"
#include "gles3renderbackend/filters/Gles3FilterFirIH53LeGall16.h"
#include "gles3renderbackend/filters/Gles3FilterFirIV53LeGall16.h"
#include "gles3renderbackend/filters/Gles3FilterInterleave16.h"
#include "gles3renderbackend/filters/Gles3FilterLinear16TosRGB8.h"
#include "gles3renderbackend/filters/Gles3FilterLinearTo8bitSRGB.h"
#include "gles3renderbackend/filters/Gles3FilterMask.h"
#include "gles3renderbackend/filters/Gles3FilterRGBA8ToYCoCg16.h"
#include "gles3renderbackend/filters/Gles3FilterSharpness8.h"
#include "gles3renderbackend/filters/Gles3FilterSharpnessH16.h"
#include "gles3renderbackend/filters/Gles3FilterSharpnessV16.h"
#include "gles3renderbackend/filters/Gles3FilterTruncate16.h"
#include "gles3renderbackend/filters/Gles3FilterYCoCg16ToRGB16.h"
#include "gles3renderbackend/filters/Gles3FilterYCoCg16ToRGBA8.h"

namespace {

// One name: every registration makes a factory of its own, also where two names share a class.
template <class T>
void add(Gles3RenderBackend::FilterRegistry& registry, char const* name) {
    registry.registerFactory(name, std::make_shared<Gles3RenderBackend::FilterRegistry::SpecializedFactory<T>>());
}

} // namespace

void registerBuiltInFilters(Gles3RenderBackend::FilterRegistry& registry) {
    add<Gles3FilterFirIH53LeGall16>(registry, "FilterFirIH53LeGall16");
    add<Gles3FilterFirIV53LeGall16>(registry, "FilterFirIV53LeGall16");
    add<Gles3BlitFilter16>(registry, "BlitFilter1x16");
    add<Gles3BlitFilter16>(registry, "BlitFilter3x16");
    add<Gles3BlitFilter8>(registry, "BlitFilter3x8");
    add<Gles3BlitFilter8>(registry, "BlitFilter4x8");
    add<Gles3Filter1x16ToRGB8>(registry, "Filter1x16ToRGB8");
    add<Gles3FilterInterleave16>(registry, "FilterInterleave16");
    add<Gles3FilterYCoCg16ToRGBA8>(registry, "FilterYCoCg16ToRGBA8");
    add<Gles3FilterYCoCg16ToRGB16>(registry, "FilterYCoCg16ToRGB16");
    add<Gles3Filter3x16To4x8>(registry, "Filter3x16To4x8");
    add<Gles3FilterSharpness8>(registry, "FilterSharpness8");
    add<Gles3FilterSharpnessH16>(registry, "FilterSharpnessH16");
    add<Gles3FilterSharpnessV16>(registry, "FilterSharpnessV16");
    add<Gles3FilterLinearTo8bitSRGB>(registry, "FilterLinear8ToSRGB8");
    // Deliberate: this name differs from "FilterLinear16TosRGB8" by one capital letter and builds another class.
    add<Gles3FilterLinearTo8bitSRGB>(registry, "FilterLinear16ToSRGB8");
    add<Gles3FilterMask>(registry, "MaskFilter3x8");
    add<Gles3FilterMask>(registry, "MaskFilter4x8");
    add<Gles3FilterMask>(registry, "MaskFilter3x16");
    add<Gles3FilterLinear16TosRGB8>(registry, "FilterLinear16TosRGB8");
    add<Gles3FilterTruncate16>(registry, "FilterTruncate16");
    add<Gles3Filter3x3Matrix8>(registry, "Filter3x3Matrix8");
    add<Gles3Filter3x3Matrix16>(registry, "Filter3x3Matrix16");
    add<Gles3BlitFilter8>(registry, "FilterRemoveAlpha8");
    add<Gles3FilterBlackWhiteGamma8>(registry, "FilterBlackWhiteGamma8");
    add<Gles3FilterRGBA8ToYCoCg16>(registry, "FilterRGBA8ToYCoCg16");
    add<Gles3FilterCLAHE>(registry, "FilterCLAHE");
}
