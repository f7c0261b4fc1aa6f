#pragma once

#include "gles3renderbackend/Gl.h"

/// The state that every draw of this library relies on, in this order; nothing of it is restored.
inline void setFixedState() {
    glDepthMask(GL_FALSE);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_SCISSOR_TEST);
}
