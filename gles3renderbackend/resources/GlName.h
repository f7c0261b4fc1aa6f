#pragma once

#include "gles3renderbackend/Gl.h"

#include <memory>

/// A GL object name that copies share: made by one of the functions below, deleted by the last owner. GL thread only.
using GlName = std::shared_ptr<GLuint>;

// If GL makes no name it answers 0, which stands for an object of the context's own: drawing with framebuffer 0 would
// draw into the host's surface. So 0 is refused, with a VelmoraException that carries `location`, the signature of the
// operation.
GlName makeTextureName(char const* location);
GlName makeFramebufferName(char const* location);
GlName makeBufferName(char const* location);

/// May be 0: linking such a program fails, and that failure is reported.
GlName makeProgramName();

/// Framebuffer 0, the context's default framebuffer, which is never deleted.
GlName defaultFramebufferName();
/// A buffer name 0 that stands for no buffer.
GlName noBufferName();
