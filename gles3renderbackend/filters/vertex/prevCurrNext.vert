#version 100
// a_geometry comes first: uniforms get their locations in this order, and one at location 0 counts as missing.
uniform highp vec4 a_geometry;
uniform highp mat2 a_modelView;
uniform highp vec4 a_texRange00;
uniform highp vec2 a_texscale00;
attribute highp vec2 a_position;
attribute highp vec2 a_texturecoordinates00;
varying highp vec2 v_texCoordPrev;
varying highp vec2 v_texCoordCurr;
varying highp vec2 v_texCoordNext;

void main() {
    v_texCoordCurr = a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy;
    v_texCoordPrev = v_texCoordCurr - vec2(a_texscale00.x, 0.0);
    v_texCoordNext = v_texCoordCurr + vec2(a_texscale00.x, 0.0);
    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);
    gl_Position.xy = a_modelView * gl_Position.xy;
}
