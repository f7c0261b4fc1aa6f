#include "shared/outputSize.glsl"
// 0.0 in even rows of the destination's texel grid, 1.0 in odd ones.
highp float rowParity() {
    return floor(mod(gl_FragCoord.y + a_outputSize.y, 2.0));
}
