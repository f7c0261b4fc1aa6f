// In: (L, H, L, H), any L, H may carry a fraction. Out: L whole in 0..255, H whole. Carry normalisation, which keeps
// floor(256 * H + L): fract(H) moves into L as 256 * fract(H), then floor(L / 256) carries into H.
highp vec4 overunderflow(highp vec4 pairs) {
    highp vec2 fractions = fract(pairs.yw);
    highp vec2 carries = floor(pairs.xz / 256.0 + fractions);
    pairs.xz += 256.0 * (fractions - carries);
    pairs.yw += carries;
    return floor(pairs);
}
