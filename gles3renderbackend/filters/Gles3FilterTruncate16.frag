#version 100
precision highp float;
#include "shared/samplePair.glsl"
// Magnitudes are cut to multiples of a_divisor = 2^bits, toward zero; a_constant, the middle of a step, is then added
// to those that are not zero:
//   m = floor(|v| / d) * d,  m += c where m > 0,  v = sign(v) * m
uniform highp sampler2D s_texture00;
uniform highp float a_divisor;
uniform highp float a_constant;
varying highp vec2 v_texCoord00;

// In: whole values, negative ones as they are. Out: a texel (L, H, L, H), channels in 0..1, -n as 65536 - n.
highp vec4 packTwosComplement(highp vec2 values) {
    highp vec2 codes = values + 65536.0 * step(0.5, -values);
    highp vec2 high = floor(codes / 256.0);
    highp vec2 low = codes - 256.0 * high;
    return vec4(low.x, high.x, low.y, high.y) / 255.0;
}

void main() {
    highp vec2 values = samplePair(texture2D(s_texture00, v_texCoord00));
    // The half keeps an inexact quotient from falling short of a whole number, and is too small to reach the next one.
    highp vec2 magnitudes = a_divisor * floor((abs(values) + 0.5) / a_divisor);
    magnitudes += a_constant * step(0.5, magnitudes);
    gl_FragColor = packTwosComplement(sign(values) * magnitudes);
}
