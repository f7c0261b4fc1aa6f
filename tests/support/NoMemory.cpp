// A system that runs out of memory: from the n-th on since main began, no `new` of the program and of its libraries
// succeeds; n comes from the environment.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <new>

namespace {

std::atomic<bool> hasBegun{false};
std::atomic<long> counted{0};

long failing() {
    static char const* const text = std::getenv("VELMORA_FAILING_NEW");
    static long const number = text == nullptr ? 0 : std::strtol(text, nullptr, 10);
    return number;
}

bool isOfProgram(void const* caller) {
    Dl_info info{};
    if (dladdr(caller, &info) == 0 || info.dli_fname == nullptr) return false;
    char const* const slash = std::strrchr(info.dli_fname, '/');
    char const* const name = slash == nullptr ? info.dli_fname : slash + 1;
    return std::strcmp(name, "velmora") == 0 || std::strstr(name, "renderbackend") != nullptr;
}

void* allocated(size_t bytes, void const* caller) {
    bool const counts = hasBegun && isOfProgram(caller);
    return counts && failing() != 0 && ++counted >= failing() ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
}

} // namespace

// The program's first system call, which starts the counting.
using Handler = void (*)(int);
extern "C" __attribute__((visibility("default"))) Handler signal(int number, Handler handler) noexcept {
    static auto const real = reinterpret_cast<Handler (*)(int, Handler)>(dlsym(RTLD_NEXT, "signal"));
    hasBegun = true;
    return real(number, handler);
}

__attribute__((visibility("default"))) void* operator new(size_t bytes) {
    void* const memory = allocated(bytes, __builtin_return_address(0));
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
// Drivers call this one: AddressSanitizer's own would not fit the operator delete below.
__attribute__((visibility("default"))) void* operator new(size_t bytes, std::nothrow_t const&) noexcept {
    return allocated(bytes, __builtin_return_address(0));
}
__attribute__((visibility("default"))) void operator delete(void* memory) noexcept {
    std::free(memory);
}
__attribute__((visibility("default"))) void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
