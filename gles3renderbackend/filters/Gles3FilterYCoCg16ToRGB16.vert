#version 100
#include "shared/vertex/mirrored.glsl"
#include "shared/vertex/prevCurrNext.glsl"

void main() {
    findPrevCurrNext();
    gl_Position = mirrored(onTarget());
}
