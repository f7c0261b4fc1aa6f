// In: (L, H, L, H), L in 0..255, H whole in -256..255. Out: a texel, channels in 0..1; negative H as two's complement.
highp vec4 packPairs(highp vec4 pairs) {
    pairs.yw += 256.0 * step(0.5, -pairs.yw);
    return pairs / 255.0;
}
