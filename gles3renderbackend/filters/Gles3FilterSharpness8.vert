#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/input00.glsl"
uniform highp vec2 a_texscale00;
varying highp vec2 v_texCoord00;
varying highp vec4 v_texCoordT_TL;
varying highp vec4 v_texCoordL_BL;
varying highp vec4 v_texCoordB_BR;
varying highp vec4 v_texCoordR_TR;
varying highp vec4 v_texCoordTT_LL;
varying highp vec4 v_texCoordBB_RR;

// The coordinates of the twelve texels around the centre c, two per varying: top (T), left (L), bottom (B), right (R).
void main() {
    highp vec2 c = inInput00();
    highp vec2 w = vec2(a_texscale00.x, 0.0);
    highp vec2 h = vec2(0.0, a_texscale00.y);
    v_texCoord00 = c;
    v_texCoordT_TL = vec4(c - h, c - h - w);
    v_texCoordL_BL = vec4(c - w, c + h - w);
    v_texCoordB_BR = vec4(c + h, c + h + w);
    v_texCoordR_TR = vec4(c + w, c - h + w);
    v_texCoordTT_LL = vec4(c - 2.0 * h, c - 2.0 * w);
    v_texCoordBB_RR = vec4(c + 2.0 * h, c + 2.0 * w);
    gl_Position = mirrored(onTarget());
}
