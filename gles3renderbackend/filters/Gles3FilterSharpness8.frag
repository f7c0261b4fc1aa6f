#version 100
precision mediump float;
#include "shared/bytes.glsl"
// Unsharp mask on whole bytes. The blur weighs 13 taps, 128 in all:
//
//              1
//          5  15   5
//      1  15  44  15   1        out = c + floor(gain * (128 * c - blur) / 128 + 1/2)
//          5  15   5
//              1
//
// a_gain is a multiple of 1/32, so gain * (128 * c - blur) is exact wherever the result is not clamped anyway.
uniform highp sampler2D s_texture00;
uniform highp float a_gain;
varying highp vec2 v_texCoord00;
varying highp vec4 v_texCoordT_TL;
varying highp vec4 v_texCoordL_BL;
varying highp vec4 v_texCoordB_BR;
varying highp vec4 v_texCoordR_TR;
varying highp vec4 v_texCoordTT_LL;
varying highp vec4 v_texCoordBB_RR;

highp vec4 bytesAt(highp vec2 at) {
    return toBytes(texture2D(s_texture00, at));
}

void main() {
    highp vec4 centre = bytesAt(v_texCoord00);
    highp vec4 sides = bytesAt(v_texCoordT_TL.xy) + bytesAt(v_texCoordL_BL.xy) + bytesAt(v_texCoordB_BR.xy) +
                       bytesAt(v_texCoordR_TR.xy);
    highp vec4 corners = bytesAt(v_texCoordT_TL.zw) + bytesAt(v_texCoordL_BL.zw) + bytesAt(v_texCoordB_BR.zw) +
                         bytesAt(v_texCoordR_TR.zw);
    highp vec4 tips = bytesAt(v_texCoordTT_LL.xy) + bytesAt(v_texCoordTT_LL.zw) + bytesAt(v_texCoordBB_RR.xy) +
                      bytesAt(v_texCoordBB_RR.zw);
    highp vec4 blur = 44.0 * centre + 15.0 * sides + 5.0 * corners + tips;
    gl_FragColor = floor(a_gain * (128.0 * centre - blur) / 128.0 + centre + 0.5) / 255.0;
}
