#version 100
precision highp float;
#include "shared/bytes.glsl"
// Two channels are added to a mixture. A texel of codes holds one code of each, its low byte first; a table has 256
// rows, one per high byte, of 256 entries.
uniform highp sampler2D s_texture00; // codes
uniform highp sampler2D s_texture01; // the mixture so far
uniform highp sampler2D s_firstTable;
uniform highp sampler2D s_secondTable;
uniform highp vec2 a_isAlpha; // of both channels: 1.0 if it is alpha, else 0.0
varying highp vec2 v_texCoord00;
varying highp vec2 v_texCoord01;

// In: both bytes of a code. Out: where its entry has its centre.
highp vec2 entryOf(highp vec2 code) {
    return (code + 0.5) / 256.0;
}

void main() {
    highp vec4 codes = toBytes(texture2D(s_texture00, v_texCoord00));
    highp vec4 mixture = texture2D(s_texture01, v_texCoord01);
    highp vec4 first = texture2D(s_firstTable, entryOf(codes.rg));
    highp vec4 second = texture2D(s_secondTable, entryOf(codes.ba));
    // The target cuts what is above 1.
    highp vec3 colour = mixture.rgb + first.rgb + second.rgb;
    highp vec2 alphas = vec2(first.a, second.a);
    highp vec2 shown = alphas * (1.0 - a_isAlpha);
    highp vec2 limits = max(alphas, 1.0 - a_isAlpha);
    gl_FragColor = vec4(colour, min(max(mixture.a, max(shown.x, shown.y)), min(limits.x, limits.y)));
}
