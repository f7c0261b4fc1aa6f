#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// YCoCg-R in three 16-bit channels to 8-bit RGBA. Results outside 0..255 are clamped; alpha is 255.
class Gles3FilterYCoCg16ToRGBA8 : public Gles3Shader {
public:
    explicit Gles3FilterYCoCg16ToRGBA8(Filter& filter);
};
