#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Copies a source inside a mesh: the program behind maskRange. The texture coordinate follows the position on the
/// target, so the mesh cuts its shape out of the source.
class Gles3FilterMask : public Gles3Shader {
public:
    explicit Gles3FilterMask(Filter& filter);
};
