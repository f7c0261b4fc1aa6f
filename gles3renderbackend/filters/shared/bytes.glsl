// In: a texel, channels in 0..1. Out: its whole bytes, 0..255.
highp vec4 toBytes(highp vec4 texel) {
    return floor(255.0 * texel + 0.5);
}
