#version 100
// a_geometry comes first: uniforms get their locations in this order, and one at location 0 counts as missing.
uniform highp vec4 a_geometry;
uniform highp mat2 a_modelView;
uniform highp vec4 a_texRange00;
uniform highp vec2 a_texscale00;
attribute highp vec2 a_position;
attribute highp vec2 a_texturecoordinates00;
varying highp vec2 v_texCoord00;
varying highp vec2 v_texCoord01;

// The input is twice as wide as the output: an output pixel's centre lies between its two texels.
void main() {
    highp vec2 stepX = vec2(a_texscale00.x, 0.0);
    v_texCoord00 = a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy - 0.5 * stepX;
    v_texCoord01 = v_texCoord00 + stepX;
    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);
    gl_Position.xy = a_modelView * gl_Position.xy;
}
