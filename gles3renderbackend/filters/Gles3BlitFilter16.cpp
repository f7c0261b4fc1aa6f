#include "gles3renderbackend/filters/Gles3BlitFilter16.h"

Gles3BlitFilter16::Gles3BlitFilter16(Filter& filter) : Gles3BlitFilter8(filter) {
    setAlignXOut(2);
}
