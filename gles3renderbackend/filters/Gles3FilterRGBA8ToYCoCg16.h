#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// 8-bit RGBA to YCoCg-R in three 16-bit channels: Y in 0..255, Co and Cg in -255..255. Lossless; alpha is dropped.
class Gles3FilterRGBA8ToYCoCg16 : public Gles3Shader {
public:
    explicit Gles3FilterRGBA8ToYCoCg16(Filter& filter);
};
