// A sample v of 16 bits is a low and a high byte: v = 256 * H + L, a high byte from 128 on stands for H - 256.
// In: low and high channels as sampled, 0..1. Out: whole values, -32768..32767.
highp vec3 signedValues(highp vec3 low, highp vec3 high) {
    highp vec3 highBytes = floor(255.0 * high + 0.5);
    return 256.0 * (highBytes - 256.0 * step(127.5, highBytes)) + floor(255.0 * low + 0.5);
}
