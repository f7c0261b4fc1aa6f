#pragma once

#include "gles3renderbackend/filters/Gles3BlitFilter8.h"

/// Copies texels that carry 16-bit samples: one channel, two samples per texel, or three channels, a pixel in two
/// texels. Both layouts pair samples or texels, hence the output alignment of 2.
class Gles3BlitFilter16 : public Gles3BlitFilter8 {
public:
    explicit Gles3BlitFilter16(Filter& filter);
};
