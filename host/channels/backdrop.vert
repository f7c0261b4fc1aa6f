#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/input00.glsl"
varying highp vec2 v_texCoord00;

void main() {
    v_texCoord00 = inInput00();
    gl_Position = mirrored(onTarget());
}
