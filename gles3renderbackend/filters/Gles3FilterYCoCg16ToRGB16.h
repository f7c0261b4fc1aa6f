#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// YCoCg-R to RGB, both in three signed 16-bit channels. Nothing is clamped.
class Gles3FilterYCoCg16ToRGB16 : public Gles3Shader {
public:
    explicit Gles3FilterYCoCg16ToRGB16(Filter& filter);
};
