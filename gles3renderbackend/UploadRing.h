#pragma once

class Gles3Pbo;

/// Maps and unmaps the upload ring's buffers. Gles3Pbo leaves a buffer bound if GL refuses to map or unmap it, and
/// every later upload from host memory would read from the bound buffer. GL thread only.
namespace uploadRing {

/// As Gles3Pbo::mapRange, but leaves GL_PIXEL_UNPACK_BUFFER unbound also if it throws.
void map(Gles3Pbo& buffer);
/// As Gles3Pbo::unmap, but leaves GL_PIXEL_UNPACK_BUFFER unbound also if it throws.
void unmap(Gles3Pbo& buffer);

} // namespace uploadRing
