#version 100
precision highp float;
#include "shared/columnParity.glsl"
#include "shared/pixelInTwoTexels.glsl"
#include "shared/tenBits.glsl"
// The vertical half of the blur (input 01 holds the horizontal one) and the unsharp mask, on whole numbers:
//   blur = m2 + 13 * m1 + 36 * c + 13 * p1 + p2 over rows, 4096 = 1.0
//   out  = source + floor((gain * (4096 * source - blur) + 2^16) / 2^17),  a_gain = 32 * gain
// The product needs more than the 24 bits of a float: it is made of the difference's three bytes and carries.
// Exact for |a_gain| < 65000.
uniform highp sampler2D s_texture00; // source
uniform highp sampler2D s_texture01; // horizontal blur
uniform highp float a_gain;
varying highp vec2 tc_src_prev;
varying highp vec2 tc_src_curr;
varying highp vec2 tc_src_next;
varying highp vec2 tc_00_curr;
varying highp vec2 v_texscale01;

// The blur, unlike the source, is unsigned: high bytes go up to 255.
highp vec3 blurredPixel(highp vec2 even) {
    highp vec4 first = texture2D(s_texture01, even);
    highp vec4 second = texture2D(s_texture01, even + vec2(v_texscale01.x, 0.0));
    highp vec3 low = floor(255.0 * vec3(first.rb, second.g) + 0.5);
    highp vec3 high = floor(255.0 * vec3(first.g, second.rb) + 0.5);
    return 256.0 * high + low;
}

// floor((a_gain * difference + 2^16) / 2^17)
highp vec3 scaledDifference(highp vec3 difference) {
    highp vec3 byte2 = floor(difference / 65536.0);
    highp vec3 rest = difference - 65536.0 * byte2;
    highp vec3 byte1 = floor(rest / 256.0);
    highp vec3 byte0 = rest - 256.0 * byte1;
    highp vec3 carry0 = floor((a_gain * byte0 + 65536.0) / 256.0);
    highp vec3 carry1 = floor((a_gain * byte1 + carry0) / 256.0);
    return floor((a_gain * byte2 + carry1) / 2.0);
}

void main() {
    highp float odd = columnParity();
    highp vec2 even = tc_00_curr - vec2(odd * v_texscale01.x, 0.0);
    highp vec2 row = vec2(0.0, v_texscale01.y);
    highp vec3 blur = blurredPixel(even - 2.0 * row) + 13.0 * blurredPixel(even - row) + 36.0 * blurredPixel(even) +
                      13.0 * blurredPixel(even + row) + blurredPixel(even + 2.0 * row);
    highp vec4 evenTexel = texture2D(s_texture00, mix(tc_src_curr, tc_src_prev, odd));
    highp vec4 oddTexel = texture2D(s_texture00, mix(tc_src_next, tc_src_curr, odd));
    highp vec3 source = clampToTenBits(pixelOf(evenTexel, oddTexel));
    gl_FragColor = halfOfPixel(source + scaledDifference(4096.0 * source - blur), odd);
}
