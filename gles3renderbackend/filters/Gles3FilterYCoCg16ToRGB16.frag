#version 100
precision mediump float;
#include "shared/columnParity.glsl"
#include "shared/pixelInTwoTexels.glsl"
#include "shared/yCoCgToRgb.glsl"
// Pixels of three 16-bit channels to the same layout: both columns of a pixel compute the whole pixel and write their
// half.
uniform highp sampler2D s_texture00;
varying highp vec2 v_texCoordPrev;
varying highp vec2 v_texCoordCurr;
varying highp vec2 v_texCoordNext;

void main() {
    highp float odd = columnParity();
    highp vec4 evenTexel = texture2D(s_texture00, mix(v_texCoordCurr, v_texCoordPrev, odd));
    highp vec4 oddTexel = texture2D(s_texture00, mix(v_texCoordNext, v_texCoordCurr, odd));
    gl_FragColor = halfOfPixel(yCoCgToRgb(pixelOf(evenTexel, oddTexel), 1.0), odd);
}
