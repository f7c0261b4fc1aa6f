// A failing disk: loaded before the C library, it makes reads from byte kFirstBad on fail in files whose names contain
// the text of VELMORA_BROKEN_FILE.
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace {

constexpr off_t kFirstBad = 8192;

bool isBroken(int descriptor) {
    char const* const name = std::getenv("VELMORA_BROKEN_FILE");
    if (name == nullptr) return false;
    std::array<char, 4096> target{};
    std::string const link = "/proc/self/fd/" + std::to_string(descriptor);
    ssize_t const length = readlink(link.c_str(), target.data(), target.size() - 1);
    return length > 0 && std::string(target.data()).find(name) != std::string::npos;
}

template <class Function>
Function* real(char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) ssize_t pread(int descriptor, void* bytes, size_t count, off_t offset) {
    if (offset + static_cast<off_t>(count) > kFirstBad && isBroken(descriptor)) {
        errno = EIO;
        return -1;
    }
    return real<decltype(pread)>("pread")(descriptor, bytes, count, offset);
}

__attribute__((visibility("default"))) size_t fread(void* bytes, size_t size, size_t count, std::FILE* file) {
    if (std::ftell(file) + static_cast<off_t>(size * count) > kFirstBad && isBroken(fileno(file))) {
        errno = EIO;
        return 0;
    }
    return real<decltype(fread)>("fread")(bytes, size, count, file);
}
}
