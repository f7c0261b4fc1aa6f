#pragma once

class Gles3Pbo;

/// The upload ring's way with its buffers. Gles3Pbo leaves a buffer bound where GL refuses to map or unmap it; bound,
/// it would be what every later upload from host memory reads. GL thread only.
namespace uploadRing {

/// As Gles3Pbo::mapRange, but leaves GL_PIXEL_UNPACK_BUFFER unbound also where it throws.
void map(Gles3Pbo& buffer);
/// As Gles3Pbo::unmap, with the same difference.
void unmap(Gles3Pbo& buffer);

} // namespace uploadRing
