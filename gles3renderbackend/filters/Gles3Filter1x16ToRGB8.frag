#version 100
precision highp float;
#include "shared/columnParity.glsl"
#include "shared/unscaledBytes.glsl"
uniform highp sampler2D s_texture00;
varying highp vec3 v_texCoord00;

// An input texel holds two pixels: even columns take the first, odd ones the second.
void main() {
    highp float odd = columnParity();
    highp vec2 centre = v_texCoord00.xy + vec2(mix(0.25, -0.25, odd) * v_texCoord00.z, 0.0);
    highp vec4 texel = texture2D(s_texture00, centre);
    highp vec2 lowHigh = mix(texel.rg, texel.ba, odd);
    gl_FragColor = vec4(unscaledChannels(lowHigh.xxx, lowHigh.yyy), 1.0);
}
