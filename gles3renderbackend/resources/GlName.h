#pragma once

#include "gles3renderbackend/Gl.h"

#include <memory>

/// A GL object name that copies share: made by one of the functions below, deleted by the last owner. GL thread only.
using GlName = std::shared_ptr<GLuint>;

GlName makeTextureName();
GlName makeFramebufferName();
GlName makeBufferName();
GlName makeProgramName();

/// Framebuffer 0, the context's default framebuffer, which nobody deletes.
GlName defaultFramebufferName();
/// A buffer name 0 that stands for no buffer.
GlName noBufferName();
