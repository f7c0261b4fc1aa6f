#version 100
precision mediump float;
#include "shared/columnParity.glsl"
#include "shared/pixelInTwoTexels.glsl"
#include "shared/tenBits.glsl"
// The horizontal half of a separable blur, on pixels of three 16-bit channels:
//   out = m2 + 13 * m1 + 36 * c + 13 * p1 + p2, at most 64 * 1023 = 65472, written unsigned.
uniform highp sampler2D s_texture00;
uniform highp vec2 a_texscale00;
varying highp vec2 v_texCoordPrev;
varying highp vec2 v_texCoordCurr;
varying highp vec2 v_texCoordNext;

// The pixel whose even texel is at `even`.
highp vec3 tap(highp vec2 even, highp float pixels) {
    highp vec2 texel = vec2(a_texscale00.x, 0.0);
    highp vec2 at = even + 2.0 * pixels * texel;
    return clampToTenBits(pixelOf(texture2D(s_texture00, at), texture2D(s_texture00, at + texel)));
}

void main() {
    highp float odd = columnParity();
    highp vec2 even = mix(v_texCoordCurr, v_texCoordPrev, odd);
    highp vec3 blur = tap(even, -2.0) + 13.0 * tap(even, -1.0) + 36.0 * tap(even, 0.0) + 13.0 * tap(even, 1.0) +
                      tap(even, 2.0);
    // The blur is unsigned: high bytes 128..255 are no signs, and packPairs adds 256 to negative values only.
    gl_FragColor = halfOfPixel(blur, odd);
}
