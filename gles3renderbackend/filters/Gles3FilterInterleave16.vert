#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/input00.glsl"
#include "shared/vertex/input01.glsl"
#include "shared/vertex/input02.glsl"
uniform highp vec2 a_texscale00;
uniform highp vec2 a_texscale01;
uniform highp vec2 a_texscale02;
varying highp vec3 v_texCoord00; // .z is the width of one texel
varying highp vec3 v_texCoord01;
varying highp vec3 v_texCoord02;

void main() {
    v_texCoord00 = vec3(inInput00(), a_texscale00.x);
    v_texCoord01 = vec3(inInput01(), a_texscale01.x);
    v_texCoord02 = vec3(inInput02(), a_texscale02.x);
    gl_Position = mirrored(onTarget());
}
