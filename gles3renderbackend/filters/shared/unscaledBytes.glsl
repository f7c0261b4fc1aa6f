// Converts 16-bit samples for an 8-bit target, unscaled: the target clamps to 0..255 and rounds.
// In: low and high channels as sampled, 0..1. Out: signed values in units of the target's channel, 1.0 for 255, with
// errors below 0.02 / 255, which rounding removes. A high byte from 128 on, a channel beyond one half, stands for H -
// 256: 65536 / 255 less.
highp vec3 unscaledChannels(highp vec3 low, highp vec3 high) {
    return 256.0 * high + low - 257.00392 * step(0.5, high);
}
