#version 100
precision mediump float;
#include "shared/unscaledBytes.glsl"
#include "shared/yCoCgToRgb.glsl"
uniform highp sampler2D s_texture00;
varying highp vec2 v_texCoord00; // the even texel of the pixel
varying highp vec2 v_texCoord01; // the odd one

void main() {
    highp vec3 even = texture2D(s_texture00, v_texCoord00).rgb;
    highp vec3 odd = texture2D(s_texture00, v_texCoord01).rgb;
    highp vec3 yCoCg = unscaledChannels(vec3(even.rb, odd.g), vec3(even.g, odd.rb));
    gl_FragColor = vec4(yCoCgToRgb(yCoCg, 1.0 / 255.0), 1.0);
}
