// 16-bit samples on their way to an 8-bit target, unscaled: the target clamps to 0..255 and rounds.
// In: low and high channels as sampled, 0..1. Out: signed values, off by less than 0.01, so they still round right.
// A high byte from 128 on, a channel beyond one half, stands for H - 256.
highp vec3 unscaledValues(highp vec3 low, highp vec3 high) {
    return 65280.0 * high + 255.0 * low - 65536.0 * step(0.5, high);
}
