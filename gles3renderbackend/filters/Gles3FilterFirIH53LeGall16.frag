#version 100
precision highp float;
#include "shared/samplePair.glsl"
#include "shared/packValues.glsl"
#include "shared/columnParity.glsl"
// One horizontal step of the inverse 5/3 lifting (Le Gall and Tabatabai 1988), on whole numbers:
//   x[2n]     = L[n] - floor((H[n] + H[n+1] + 2) / 4)
//   x[2n + 1] = H[n+1] + floor((x[2n] + x[2n+2]) / 2)
// H is the high band as fetched, which starts one sample to the left of L.
uniform highp sampler2D s_texture00; // L
uniform highp sampler2D s_texture01; // H
varying highp vec3 v_texCoord00;
varying highp vec3 v_texCoord01;

// An output texel holds two samples and covers half of an input texel: even columns start at the first sample of one,
// odd columns at the second.
void main() {
    highp float odd = columnParity();
    highp float toCentre = mix(0.25, -0.25, odd);
    highp vec2 nextL = vec2(v_texCoord00.z, 0.0);
    highp vec2 nextH = vec2(v_texCoord01.z, 0.0);
    highp vec2 atL = v_texCoord00.xy + toCentre * nextL;
    highp vec2 atH = v_texCoord01.xy + toCentre * nextH;
    highp vec2 low = samplePair(texture2D(s_texture00, atL));
    highp vec2 high = samplePair(texture2D(s_texture01, atH));
    highp vec2 lowAfter = samplePair(texture2D(s_texture00, atL + nextL));
    highp vec2 highAfter = samplePair(texture2D(s_texture01, atH + nextH));

    highp vec2 L = mix(low, vec2(low.y, lowAfter.x), odd);
    highp vec3 H = mix(vec3(high, highAfter.x), vec3(high.y, highAfter), odd);
    highp vec2 even = L - floor((H.xy + H.yz + 2.0) / 4.0);
    gl_FragColor = packValues(vec2(even.x, H.y + floor((even.x + even.y) / 2.0)));
}
