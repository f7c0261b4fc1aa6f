#version 100
// a_geometry comes first: uniforms get their locations in this order, and one at location 0 counts as missing.
uniform highp vec4 a_geometry;
uniform highp mat2 a_modelView;
uniform highp vec4 a_texRange00;
attribute highp vec2 a_position;
varying highp vec2 v_texCoord00;

void main() {
    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);
    // Clip space to texture space, before the mirroring: the source lies upright under the target.
    v_texCoord00 = 0.5 * (gl_Position.xy + 1.0);
    v_texCoord00 = a_texRange00.zw * v_texCoord00 + a_texRange00.xy;
    gl_Position.xy = a_modelView * gl_Position.xy;
}
