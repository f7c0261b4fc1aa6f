#include "tests/gles3renderbackend/FailingAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> failing{0};

void* allocate(size_t bytes) {
    size_t expected = bytes;
    if (bytes != 0 && failing.compare_exchange_strong(expected, 0)) return nullptr;
    return std::malloc(bytes == 0 ? 1 : bytes);
}

} // namespace

void backendtest::failNextAllocation(size_t bytes) {
    failing = bytes;
}

// The forms for single objects are replaced together, so that no memory of the one is given back to the other.
void* operator new(size_t bytes) {
    if (void* const memory = allocate(bytes)) return memory;
    throw std::bad_alloc();
}
void* operator new(size_t bytes, std::nothrow_t const&) noexcept {
    return allocate(bytes);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}
