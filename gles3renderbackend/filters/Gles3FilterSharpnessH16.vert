#version 100
#include "shared/vertex/onTarget.glsl"
#include "shared/vertex/prevCurrNext.glsl"

void main() {
    findPrevCurrNext();
    gl_Position = onTarget();
}
