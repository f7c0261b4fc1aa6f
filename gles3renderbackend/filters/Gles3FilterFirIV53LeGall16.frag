#version 100
precision highp float;
#include "shared/samplePair.glsl"
#include "shared/packValues.glsl"
#include "shared/rowParity.glsl"
// One vertical step of the inverse 5/3 lifting (Le Gall and Tabatabai 1988), on whole numbers; a texel's two samples
// are two columns side by side:
//   x[2n]     = L[n] - floor((H[n] + H[n+1] + 2) / 4)
//   x[2n + 1] = H[n+1] + floor((x[2n] + x[2n+2]) / 2)
// H is the high band as fetched, which starts one row before L.
uniform highp sampler2D s_texture00; // L
uniform highp sampler2D s_texture01; // H
varying highp vec3 v_texCoord00;
varying highp vec3 v_texCoord01;

void main() {
    highp float odd = rowParity();
    highp float toCentre = mix(0.25, -0.25, odd);
    highp vec2 rowL = vec2(0.0, v_texCoord00.z);
    highp vec2 rowH = vec2(0.0, v_texCoord01.z);
    highp vec2 atL = v_texCoord00.xy + toCentre * rowL;
    highp vec2 atH = v_texCoord01.xy + toCentre * rowH;
    highp vec2 L0 = samplePair(texture2D(s_texture00, atL));
    highp vec2 L1 = samplePair(texture2D(s_texture00, atL + rowL));
    highp vec2 H0 = samplePair(texture2D(s_texture01, atH));
    highp vec2 H1 = samplePair(texture2D(s_texture01, atH + rowH));
    highp vec2 H2 = samplePair(texture2D(s_texture01, atH + 2.0 * rowH));

    highp vec2 even = L0 - floor((H0 + H1 + 2.0) / 4.0);
    highp vec2 nextEven = L1 - floor((H1 + H2 + 2.0) / 4.0);
    gl_FragColor = packValues(mix(even, H1 + floor((even + nextEven) / 2.0), odd));
}
