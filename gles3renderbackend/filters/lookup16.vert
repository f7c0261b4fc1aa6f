#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/texelPair.glsl"

void main() {
    findTexelPair();
    gl_Position = mirrored(onTarget());
}
