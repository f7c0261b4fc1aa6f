#version 100
// a_geometry comes first: uniforms get their locations in this order, and one at location 0 counts as missing.
uniform highp vec4 a_geometry;
uniform highp vec4 a_texRange00;
uniform highp vec2 a_texscale00;
uniform highp vec4 a_texRange01;
uniform highp vec2 a_texscale01;
attribute highp vec2 a_position;
attribute highp vec2 a_texturecoordinates00;
attribute highp vec2 a_texturecoordinates01;
varying highp vec2 tc_src_prev;
varying highp vec2 tc_src_curr;
varying highp vec2 tc_src_next;
varying highp vec2 tc_00_curr;
varying highp vec2 v_texscale01;

void main() {
    tc_src_curr = a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy;
    tc_src_prev = tc_src_curr - vec2(a_texscale00.x, 0.0);
    tc_src_next = tc_src_curr + vec2(a_texscale00.x, 0.0);
    tc_00_curr = a_texRange01.zw * a_texturecoordinates01 + a_texRange01.xy;
    v_texscale01 = a_texscale01;
    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);
}
