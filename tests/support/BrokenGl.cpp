// A driver that cannot render to any texture, and whose name is no text, for tests of the program's message.
#include <dlfcn.h>

extern "C" {
__attribute__((visibility("default"))) unsigned int glCheckFramebufferStatus(unsigned int);
__attribute__((visibility("default"))) unsigned char const* glGetString(unsigned int);
}

unsigned int glCheckFramebufferStatus(unsigned int) {
    constexpr unsigned int kFramebufferUnsupported = 0x8cdd;
    return kFramebufferUnsupported;
}

unsigned char const* glGetString(unsigned int name) {
    constexpr unsigned int kRenderer = 0x1f01;
    using Function = decltype(&glGetString);
    static auto const real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "glGetString"));
    static constexpr unsigned char kName[] = "broken \"\xff\x1b[2J\"";
    return name == kRenderer ? kName : real(name);
}
