#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// One horizontal step of the inverse 5/3 wavelet (Le Gall and Tabatabai 1988): a low band (input 00) and a high band
/// (input 01) of signed 16-bit samples, two per texel, become rows of twice the width. The high band starts one sample
/// to the left of the low band.
class Gles3FilterFirIH53LeGall16 : public Gles3Shader {
public:
    explicit Gles3FilterFirIH53LeGall16(Filter& filter);
};
