#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/input00.glsl"
uniform highp vec2 a_texscale00;
varying highp vec3 v_texCoord00; // .z is the width of one texel

void main() {
    v_texCoord00 = vec3(inInput00(), a_texscale00.x);
    gl_Position = mirrored(onTarget());
}
