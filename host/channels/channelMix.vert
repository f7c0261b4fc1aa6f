#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/input00.glsl"
#include "shared/vertex/input01.glsl"
varying highp vec2 v_texCoord00;
varying highp vec2 v_texCoord01;

void main() {
    v_texCoord00 = inInput00();
    v_texCoord01 = inInput01();
    gl_Position = mirrored(onTarget());
}
