#include "shared/bytes.glsl"
// In: a texel of two samples, (L, H, L, H). Out: its two signed whole values.
highp vec2 samplePair(highp vec4 texel) {
    highp vec4 bytes = toBytes(texel);
    return 256.0 * (bytes.yw - 256.0 * step(127.5, bytes.yw)) + bytes.xz;
}
