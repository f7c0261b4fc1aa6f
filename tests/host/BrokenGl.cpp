// A driver that cannot render to any texture: what the program says then is a test.
extern "C" __attribute__((visibility("default"))) unsigned int glCheckFramebufferStatus(unsigned int);

unsigned int glCheckFramebufferStatus(unsigned int) {
    constexpr unsigned int kFramebufferUnsupported = 0x8cdd;
    return kFramebufferUnsupported;
}
