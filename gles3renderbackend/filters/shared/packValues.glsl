#include "shared/overunderflow.glsl"
#include "shared/packPairs.glsl"
// In: two whole values, -65536..65535. Out: a texel (L, H, L, H), channels in 0..1, two's complement.
highp vec4 packValues(highp vec2 values) {
    return packPairs(overunderflow(vec4(values.x, 0.0, values.y, 0.0)));
}
