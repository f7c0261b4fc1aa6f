#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// One vertical step of the inverse 5/3 wavelet (Le Gall and Tabatabai 1988): a low band (input 00) and a high band
/// (input 01) of signed 16-bit samples, two per texel, become columns of twice the height. The high band starts one row
/// before the low band.
class Gles3FilterFirIV53LeGall16 : public Gles3Shader {
public:
    explicit Gles3FilterFirIV53LeGall16(Filter& filter);
};
