#version 100
precision highp float;
#include "shared/bytes.glsl"
// A picture over a colour. c * a + b * (255 - a) is a whole number, and 255 is odd: rounding it has no halves.
uniform highp sampler2D s_texture00;
uniform highp vec3 a_backdrop; // whole bytes
varying highp vec2 v_texCoord00;

void main() {
    highp vec4 texel = toBytes(texture2D(s_texture00, v_texCoord00));
    highp vec3 sum = texel.rgb * texel.a + a_backdrop * (255.0 - texel.a);
    gl_FragColor = vec4(floor(sum / 255.0 + 0.5) / 255.0, 1.0);
}
