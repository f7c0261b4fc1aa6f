#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/input00.glsl"
#include "shared/vertex/input01.glsl"
uniform highp vec2 a_texscale00;
uniform highp vec2 a_texscale01;
varying highp vec3 v_texCoord00; // .z is the height of one texel
varying highp vec3 v_texCoord01;

void main() {
    v_texCoord00 = vec3(inInput00(), a_texscale00.y);
    v_texCoord01 = vec3(inInput01(), a_texscale01.y);
    gl_Position = mirrored(onTarget());
}
