#pragma once

#include "gles3renderbackend/Gl.h"

#include <string>
#include <vector>

/// Announces a GL error that the test provokes on purpose. It must occur, once or more often; every other error fails
/// the test.
void expectGlError(GLenum code);

/// The GL errors since the last call, without those that a test reads with glGetError itself.
namespace gl_errors {

/// Collects the driver's own messages, if the context has GL_KHR_debug. Needs no debug context.
void installDebugCallback();

/// Reads all pending errors, compares them with the announced ones and forgets both. Empty: all in order.
std::vector<std::string> findings();

} // namespace gl_errors
