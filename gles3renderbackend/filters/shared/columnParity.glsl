#include "shared/outputSize.glsl"
// 0.0 in even columns of the destination's texel grid, 1.0 in odd ones. Assumed: the device keeps gl_FragCoord in 32
// bits. The language grants it mediump only, whose 10 bits end at column 1023.
highp float columnParity() {
    return floor(mod(gl_FragCoord.x + a_outputSize.x, 2.0));
}
