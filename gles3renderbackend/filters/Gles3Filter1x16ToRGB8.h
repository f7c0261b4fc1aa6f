#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// One signed 16-bit channel, two samples per texel, to a grey 8-bit pixel, unscaled: values outside 0..255 are
/// clamped.
class Gles3Filter1x16ToRGB8 : public Gles3Shader {
public:
    explicit Gles3Filter1x16ToRGB8(Filter& filter);
};
