#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Three signed 16-bit channels to 8-bit RGBA, unscaled: values outside 0..255 are clamped; alpha is 255.
class Gles3Filter3x16To4x8 : public Gles3Shader {
public:
    explicit Gles3Filter3x16To4x8(Filter& filter);
};
