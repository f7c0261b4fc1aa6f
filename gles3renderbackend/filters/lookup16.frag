#version 100
precision highp float;
#include "shared/pixelInTwoTexels.glsl"
// The table has a_maxValue + 1 entries in rows of at most 2048, in three equal bands, one per 16-bit channel. Entries
// are addressed at their centres: the plain coordinate value / a_maxValue selects the next entry near the top of large
// tables. Codes from 32768 on are negative and read entry 0.
uniform highp sampler2D s_texture00;
uniform highp sampler2D s_texture01;
uniform highp float a_maxValue;
varying highp vec2 v_texCoord00; // the even texel of the pixel
varying highp vec2 v_texCoord01; // the odd one

highp vec4 entry(highp float value, highp float band) {
    highp float count = a_maxValue + 1.0;
    highp float width = min(count, 2048.0);
    highp float rows = count / width;
    highp float index = clamp(value, 0.0, a_maxValue);
    highp float row = floor((index + 0.5) / width);
    highp float column = index - width * row;
    return texture2D(s_texture01, vec2((column + 0.5) / width, (row + 0.5 + band * rows) / (3.0 * rows)));
}

void main() {
    highp vec3 values = pixelOf(texture2D(s_texture00, v_texCoord00), texture2D(s_texture00, v_texCoord01));
    gl_FragColor = vec4(entry(values.r, 0.0).r, entry(values.g, 1.0).g, entry(values.b, 2.0).b, 1.0);
}
