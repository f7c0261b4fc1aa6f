#include "tests/support/FailingAllocations.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <link.h>
#include <new>
#include <vector>

using failing_allocations::Pause;

namespace {

// Addresses of loaded code.
struct Code {
    std::uintptr_t begin;
    std::uintptr_t end;
    bool isOurs; // else the C++ library's
};

int addCode(dl_phdr_info* object, size_t, void* codes) {
    bool const isLibrary = std::strstr(object->dlpi_name, "libstdc++") != nullptr;
    bool const isOurs = *object->dlpi_name == '\0' || std::strstr(object->dlpi_name, "renderbackend") != nullptr;
    for (size_t i = 0; (isOurs || isLibrary) && i < object->dlpi_phnum; ++i) {
        ElfW(Phdr) const& part = object->dlpi_phdr[i];
        if (part.p_type != PT_LOAD || (part.p_flags & PF_X) == 0) continue;
        std::uintptr_t const begin = object->dlpi_addr + part.p_vaddr;
        static_cast<std::vector<Code>*>(codes)->push_back({begin, begin + part.p_memsz, isOurs});
    }
    return 0;
}

// The program and what it links to are loaded before main; drivers, which are loaded later, are neither.
std::vector<Code> const codes = [] {
    std::vector<Code> all;
    dl_iterate_phdr(&addCode, &all);
    return all;
}();

Code const* codeAt(void const* address) {
    auto const place = reinterpret_cast<std::uintptr_t>(address);
    for (Code const& code : codes)
        if (place >= code.begin && place < code.end) return &code;
    return nullptr;
}

// Whether the code that asks for memory is ours: the program's or the backend's, also by way of the C++ library.
bool isOurs(void const* caller) {
    Code const* const code = codeAt(caller);
    if (code == nullptr || code->isOurs) return code != nullptr;
    constexpr int kFrames = 32;
    std::array<void*, kFrames> frames{};
    int const count = backtrace(frames.data(), kFrames);
    // From the inside: this file's functions, the library's, and whoever called these.
    bool inLibrary = false;
    for (int i = 0; i < count; ++i) {
        Code const* const place = codeAt(frames[static_cast<size_t>(i)]);
        bool const isLibrary = place != nullptr && !place->isOurs;
        if (inLibrary && !isLibrary) return place != nullptr;
        inLibrary = inLibrary || isLibrary;
    }
    return false;
}

enum class Mode { Off, This, Others };

std::atomic<Mode> mode{Mode::Off};
std::atomic<size_t> count{0};
std::atomic<size_t> failing{0};
thread_local bool asked = false;
thread_local int pauses = 0;

bool fails(void const* caller) {
    Mode const now = mode;
    if (now == Mode::Off || pauses > 0 || asked != (now == Mode::This)) return false;
    Pause const pause; // memory that backtrace() needs
    return isOurs(caller) && ++count == failing;
}

void* allocate(size_t bytes, void const* caller) {
    return fails(caller) ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
}

void* allocate(size_t bytes, std::align_val_t alignment, void const* caller) {
    auto const step = static_cast<size_t>(alignment);
    return fails(caller) ? nullptr : std::aligned_alloc(step, (bytes + step - 1) / step * step);
}

void* orThrow(void* memory) {
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

} // namespace

void failing_allocations::failAt(size_t n, Threads threads) {
    asked = true;
    count = 0;
    failing = n;
    mode = threads == Threads::This ? Mode::This : Mode::Others;
}

size_t failing_allocations::stop() {
    mode = Mode::Off;
    asked = false;
    return count;
}

failing_allocations::Pause::Pause() {
    ++pauses;
}

failing_allocations::Pause::~Pause() {
    --pauses;
}

void* operator new(size_t bytes) {
    return orThrow(allocate(bytes, __builtin_return_address(0)));
}
void* operator new[](size_t bytes) {
    return orThrow(allocate(bytes, __builtin_return_address(0)));
}
void* operator new(size_t bytes, std::nothrow_t const&) noexcept {
    return allocate(bytes, __builtin_return_address(0));
}
void* operator new[](size_t bytes, std::nothrow_t const&) noexcept {
    return allocate(bytes, __builtin_return_address(0));
}
void* operator new(size_t bytes, std::align_val_t alignment) {
    return orThrow(allocate(bytes, alignment, __builtin_return_address(0)));
}
void* operator new[](size_t bytes, std::align_val_t alignment) {
    return orThrow(allocate(bytes, alignment, __builtin_return_address(0)));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t, std::align_val_t) noexcept {
    std::free(memory);
}
