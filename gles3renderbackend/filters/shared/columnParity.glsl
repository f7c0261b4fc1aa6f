#include "shared/outputSize.glsl"
// 0.0 in even columns of the destination's texel grid, 1.0 in odd ones.
highp float columnParity() {
    return floor(mod(gl_FragCoord.x + a_outputSize.x, 2.0));
}
