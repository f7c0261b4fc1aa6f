#include "tests/gles3renderbackend/FailingAllocation.h"

#include "tests/support/RecordingGl.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr std::int64_t kNone = -1;

std::atomic<size_t> failingBytes{0};
std::atomic<std::int64_t> allocationsBeforeFailure{kNone};

bool itsTurnToFail() {
    if (allocationsBeforeFailure < 0 || RecordingGl::atWork()) return false;
    return allocationsBeforeFailure.fetch_sub(1) == 0; // which leaves kNone
}

void* allocate(size_t bytes) {
    size_t expected = bytes;
    if (bytes != 0 && failingBytes.compare_exchange_strong(expected, 0)) return nullptr;
    if (itsTurnToFail()) return nullptr;
    return std::malloc(bytes == 0 ? 1 : bytes);
}

} // namespace

void backendtest::failNextAllocation(size_t bytes) {
    failingBytes = bytes;
}

void backendtest::failAllocationAfter(size_t skip) {
    allocationsBeforeFailure = static_cast<std::int64_t>(skip);
}

bool backendtest::letAllocationsSucceed() {
    return allocationsBeforeFailure.exchange(kNone) != kNone;
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
