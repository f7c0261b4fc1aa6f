// A GPU that computes the first byte of every picture wrong, for tests of the program's message.
#include <dlfcn.h>

extern "C" __attribute__((visibility("default"))) void glReadPixels(int, int, int, int, unsigned int, unsigned int,
                                                                    void*);

void glReadPixels(int x, int y, int width, int height, unsigned int format, unsigned int type, void* pixels) {
    using Function = decltype(&glReadPixels);
    static auto const real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "glReadPixels"));
    real(x, y, width, height, format, type, pixels);
    *static_cast<unsigned char*>(pixels) ^= 1U;
}
