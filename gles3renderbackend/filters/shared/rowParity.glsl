#include "shared/outputSize.glsl"
// 0.0 in even rows of the destination's texel grid, 1.0 in odd ones. Assumed: the device keeps gl_FragCoord in 32 bits.
// The language grants it mediump only, whose 10 bits end at row 1023.
highp float rowParity() {
    return floor(mod(gl_FragCoord.y + a_outputSize.y, 2.0));
}
