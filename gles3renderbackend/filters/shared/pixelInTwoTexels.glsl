#include "shared/packValues.glsl"
#include "shared/signedValues.glsl"
// A pixel of three 16-bit channels lies in two texels: even (c0 low, c0 high, c1 low), odd (c1 high, c2 low, c2 high).

// In: the even and the odd texel. Out: the three channels as signed whole values.
highp vec3 pixelOf(highp vec4 even, highp vec4 odd) {
    return signedValues(vec3(even.rb, odd.g), vec3(even.g, odd.rb));
}

// In: three whole values and the parity of the fragment's column. Out: the half of the pixel that this column holds.
highp vec4 halfOfPixel(highp vec3 values, highp float odd) {
    highp vec4 first = packValues(values.xy);
    highp vec4 second = packValues(values.zz);
    return vec4(mix(first.rgb, vec3(first.a, second.rg), odd), 1.0);
}
