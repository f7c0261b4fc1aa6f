#version 100
precision lowp float;
#include "shared/outputSize.glsl"
// Three planes of 16-bit samples, two per texel, become pixels of three channels, one in two texels: an input texel
// spans four output texels. The bytes pass through untouched.
uniform highp sampler2D s_texture00;
uniform highp sampler2D s_texture01;
uniform highp sampler2D s_texture02;
varying highp vec3 v_texCoord00;
varying highp vec3 v_texCoord01;
varying highp vec3 v_texCoord02;

void main() {
    // Assumed: the device keeps gl_FragCoord in 32 bits. The language grants it mediump only, which ends at column
    // 1023.
    highp float column = gl_FragCoord.x + a_outputSize.x;
    highp float lowHigh = floor(mod(column, 2.0));       // which texel of the pixel: 0 1 0 1
    highp float oddEven = floor(mod(column, 4.0) / 2.0); // which pixel of the input texel: 0 0 1 1
    highp float toCentre = 0.375 - 0.25 * lowHigh - 0.5 * oddEven;
    highp vec4 tex0 = texture2D(s_texture00, v_texCoord00.xy + vec2(toCentre * v_texCoord00.z, 0.0));
    highp vec4 tex1 = texture2D(s_texture01, v_texCoord01.xy + vec2(toCentre * v_texCoord01.z, 0.0));
    highp vec4 tex2 = texture2D(s_texture02, v_texCoord02.xy + vec2(toCentre * v_texCoord02.z, 0.0));
    highp vec2 c0 = mix(tex0.rg, tex0.ba, oddEven);
    highp vec2 c1 = mix(tex1.rg, tex1.ba, oddEven);
    highp vec2 c2 = mix(tex2.rg, tex2.ba, oddEven);
    gl_FragColor = vec4(mix(vec3(c0, c1.x), vec3(c1.y, c2), lowHigh), 1.0);
}
