#include "gles3renderbackend/UploadRing.h"

#include "gles3renderbackend/resources/Gles3Pbo.h"

void uploadRing::map(Gles3Pbo& buffer) {
    try {
        buffer.mapRange(0, Gles3Pbo::kMappedBytes);
    } catch (...) {
        buffer.unbind();
        throw;
    }
}

void uploadRing::unmap(Gles3Pbo& buffer) {
    try {
        buffer.unmap();
    } catch (...) {
        buffer.unbind();
        throw;
    }
}
