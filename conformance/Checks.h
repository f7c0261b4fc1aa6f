#pragma once

#include "conformance/Trial.h"

#include <string>

/// One function a filter class, each with the inputs that tell a wrong result from a right one: all values where the
/// domain is one sample, boundaries, noise, odd sizes, parts at odd places.
namespace conformance {

/// The copies, by name: BlitFilter1x16, BlitFilter3x16, BlitFilter3x8, BlitFilter4x8, FilterRemoveAlpha8.
void checkBlit(Trial& trial, std::string const& name);
/// The masks, by name: MaskFilter3x8, MaskFilter4x8, MaskFilter3x16.
void checkMask(Trial& trial, std::string const& name);

void checkFirIH53LeGall16(Trial& trial);
void checkFirIV53LeGall16(Trial& trial);
void checkInterleave16(Trial& trial);

void check1x16ToRGB8(Trial& trial);
void check3x16To4x8(Trial& trial);
void checkRGBA8ToYCoCg16(Trial& trial);
void checkYCoCg16ToRGBA8(Trial& trial);
void checkYCoCg16ToRGB16(Trial& trial);
void checkTruncate16(Trial& trial);
void check3x3Matrix8(Trial& trial);
void check3x3Matrix16(Trial& trial);

void checkSharpness8(Trial& trial);
void checkSharpnessH16(Trial& trial);
void checkSharpnessV16(Trial& trial);

void checkLinear8ToSRGB8(Trial& trial);
void checkLinear16ToSRGB8(Trial& trial);
void checkLinear16TosRGB8(Trial& trial);
void checkBlackWhiteGamma8(Trial& trial);

void checkCLAHE(Trial& trial);

} // namespace conformance
