#version 100
#include "shared/vertex/onTarget.glsl"
#include "shared/vertex/input00.glsl"
#include "shared/vertex/input01.glsl"
uniform highp vec2 a_texscale00;
uniform highp vec2 a_texscale01;
varying highp vec2 tc_src_prev;
varying highp vec2 tc_src_curr;
varying highp vec2 tc_src_next;
varying highp vec2 tc_00_curr;
varying highp vec2 v_texscale01;

void main() {
    highp vec2 stepX = vec2(a_texscale00.x, 0.0);
    tc_src_curr = inInput00();
    tc_src_prev = tc_src_curr - stepX;
    tc_src_next = tc_src_curr + stepX;
    tc_00_curr = inInput01();
    v_texscale01 = a_texscale01;
    gl_Position = onTarget();
}
