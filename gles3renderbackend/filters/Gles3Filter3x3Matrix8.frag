#version 100
precision mediump float;
#include "shared/bytes.glsl"
// Coefficients are multiples of 1/1024: on whole bytes the sums are exact while the magnitudes of an output's three
// coefficients add up to less than 64, and rounding them here makes every implementation agree on ties.
uniform highp sampler2D s_texture00;
uniform highp mat3 a_matrix3x3;
varying highp vec2 v_texCoord00;

void main() {
    highp vec3 rgb = toBytes(texture2D(s_texture00, v_texCoord00)).rgb;
    gl_FragColor = vec4(floor(a_matrix3x3 * rgb + 0.5) / 255.0, 1.0);
}
