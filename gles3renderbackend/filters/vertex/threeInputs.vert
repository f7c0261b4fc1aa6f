#version 100
// a_geometry comes first: uniforms get their locations in this order, and one at location 0 counts as missing.
uniform highp vec4 a_geometry;
uniform highp mat2 a_modelView;
uniform highp vec4 a_texRange00;
uniform highp vec2 a_texscale00;
uniform highp vec4 a_texRange01;
uniform highp vec2 a_texscale01;
uniform highp vec4 a_texRange02;
uniform highp vec2 a_texscale02;
attribute highp vec2 a_position;
attribute highp vec2 a_texturecoordinates00;
attribute highp vec2 a_texturecoordinates01;
attribute highp vec2 a_texturecoordinates02;
varying highp vec3 v_texCoord00;
varying highp vec3 v_texCoord01;
varying highp vec3 v_texCoord02;

// .z of a coordinate is the width of one texel.
void main() {
    v_texCoord00 = vec3(a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy, a_texscale00.x);
    v_texCoord01 = vec3(a_texRange01.zw * a_texturecoordinates01 + a_texRange01.xy, a_texscale01.x);
    v_texCoord02 = vec3(a_texRange02.zw * a_texturecoordinates02 + a_texRange02.xy, a_texscale02.x);
    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);
    gl_Position.xy = a_modelView * gl_Position.xy;
}
