#pragma once

#include "gles3renderbackend/Gl.h"

#include <array>
#include <cstddef>

class Gles3Buffer;

/// The unit square that every tile and every filter output is drawn with:
///
///     3 (0,1) ---- 2 (1,1)      a vertex: x, y, s, t as 32-bit floats, texture coordinate equal to position
///        |       /    |         triangles: 0 1 2 and 0 2 3
///     0 (0,0) ---- 1 (1,0)
namespace unitQuad {

constexpr GLsizei kVertexBytes = 16;
constexpr size_t kPositionByte = 0;
constexpr size_t kTextureCoordinateByte = 8;
constexpr GLsizei kIndexCount = 6;

/// Fill an index buffer or a vertex buffer, and leave it bound.
void uploadIndices(Gles3Buffer& indices);
void uploadVertices(Gles3Buffer& vertices);
/// Points a vertex attribute at the positions or texture coordinates of the bound vertex buffer.
void pointAttribute(GLint location, size_t firstByte);
/// Draws the two triangles of the bound index buffer.
void draw();

} // namespace unitQuad
