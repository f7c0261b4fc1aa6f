#version 100
precision mediump float;
#include "shared/columnParity.glsl"
#include "shared/pixelInTwoTexels.glsl"
// A colour matrix in fixed point on pixels of three signed 16-bit channels, 1024 = 1.0:
//   out[j] = (e[j] * red + e[3 + j] * green + e[6 + j] * blue) / 1024, rounded half away from zero
// A coefficient arrives as its four bytes, all of its sign; matrix j holds one coefficient per column. The products
// need more than the 24 bits of a float, so samples enter as high and low byte and meet again after a carry. Exact
// while the magnitudes of an output's three coefficients add up to less than 65536 (64.0).
uniform highp sampler2D s_texture00;
uniform highp mat4 a_matrix4x4_32_1;
uniform highp mat4 a_matrix4x4_32_2;
uniform highp mat4 a_matrix4x4_32_3;
varying highp vec2 v_texCoordPrev;
varying highp vec2 v_texCoordCurr;
varying highp vec2 v_texCoordNext;

const highp vec4 kByteWeights = vec4(1.0, 256.0, 65536.0, 16777216.0);

// Rounds (256 * high + low) / 1024 half away from zero. In: whole numbers. For a sum that is not negative this is
// floor((high + 2) / 4) once low is down to a byte; a negative one is rounded by its magnitude.
highp float roundedQuotient(highp float high, highp float low) {
    highp float carry = floor(low / 256.0);
    highp float h = high + carry;
    highp float rest = low - 256.0 * carry;
    highp float negative = step(0.5, -h);
    highp float magnitude = mix(h, -h - step(0.5, rest), negative);
    return (1.0 - 2.0 * negative) * floor((magnitude + 2.0) / 4.0);
}

highp float outputChannel(highp mat4 coefficientBytes, highp vec3 high, highp vec3 low) {
    highp vec3 coefficients = (kByteWeights * coefficientBytes).xyz;
    return roundedQuotient(dot(coefficients, high), dot(coefficients, low));
}

void main() {
    highp float odd = columnParity();
    highp vec4 evenTexel = texture2D(s_texture00, mix(v_texCoordCurr, v_texCoordPrev, odd));
    highp vec4 oddTexel = texture2D(s_texture00, mix(v_texCoordNext, v_texCoordCurr, odd));
    highp vec3 pixel = pixelOf(evenTexel, oddTexel);
    highp vec3 high = floor(pixel / 256.0);
    highp vec3 low = pixel - 256.0 * high;
    highp vec3 result = vec3(outputChannel(a_matrix4x4_32_1, high, low), outputChannel(a_matrix4x4_32_2, high, low),
                             outputChannel(a_matrix4x4_32_3, high, low));
    gl_FragColor = halfOfPixel(result, odd);
}
