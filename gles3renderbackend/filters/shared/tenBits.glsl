// Sharpening works on 10 bits. In: whole values. Out: negative ones as 0, those above 1023 as 1023.
highp vec3 clampToTenBits(highp vec3 values) {
    return clamp(values, 0.0, 1023.0);
}
