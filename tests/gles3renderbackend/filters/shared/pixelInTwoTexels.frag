#version 100
precision mediump float;
#include "shared/pixelInTwoTexels.glsl"
#include "shared/columnParity.glsl"
uniform highp sampler2D s_texture00;
varying highp vec2 v_texCoordPrev;
varying highp vec2 v_texCoordCurr;
varying highp vec2 v_texCoordNext;

// Takes a pixel of three 16-bit channels apart and puts it together again.
void main() {
    highp float odd = columnParity();
    highp vec4 prev = texture2D(s_texture00, v_texCoordPrev);
    highp vec4 curr = texture2D(s_texture00, v_texCoordCurr);
    highp vec4 next = texture2D(s_texture00, v_texCoordNext);
    gl_FragColor = halfOfPixel(pixelOf(mix(curr, prev, odd), mix(next, curr, odd)), odd);
}
