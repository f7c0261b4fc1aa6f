#version 100
precision mediump float;
#include "shared/bytes.glsl"
#include "shared/columnParity.glsl"
#include "shared/pixelInTwoTexels.glsl"
// The reversible YCoCg-R transform (Malvar and Sullivan 2003), on whole numbers:
//   Co = R - B,  t = B + floor(Co / 2),  Cg = G - t,  Y = t + floor(Cg / 2)
// The pixel leaves as (Y, Co, Cg). Both of its texels sample the same input texel.
uniform highp sampler2D s_texture00;
varying highp vec2 v_texCoord00;

void main() {
    highp vec4 bytes = toBytes(texture2D(s_texture00, v_texCoord00));
    highp float co = bytes.r - bytes.b;
    highp float t = bytes.b + floor(co / 2.0);
    highp float cg = bytes.g - t;
    highp float y = t + floor(cg / 2.0);
    gl_FragColor = halfOfPixel(vec3(y, co, cg), columnParity());
}
