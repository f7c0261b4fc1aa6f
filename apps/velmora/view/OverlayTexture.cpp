#include "apps/velmora/view/OverlayTexture.h"

#include "gles3renderbackend/Gl.h"

OverlayTexture::~OverlayTexture() {
    if (name_ != 0) glDeleteTextures(1, &name_);
}

void OverlayTexture::set(std::vector<std::uint8_t> const& rgba, Size const& size, Filter filter) {
    GLint const between = filter == Filter::Linear ? GL_LINEAR : GL_NEAREST;
    if (name_ == 0) glGenTextures(1, &name_);
    size_ = size;
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, name_);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, between);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, between);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    // As the backend expects it where tiles come out of its ring.
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, static_cast<GLsizei>(size.width), static_cast<GLsizei>(size.height), 0,
                 GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
}
