#include "tests/support/FailingAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

enum class Mode { Off, This, Others };

std::atomic<Mode> mode{Mode::Off};
std::atomic<size_t> count{0};
std::atomic<size_t> failing{0};
thread_local bool asked = false;
thread_local int pauses = 0;

bool fails() {
    Mode const now = mode;
    if (now == Mode::Off || pauses > 0 || asked != (now == Mode::This)) return false;
    return ++count == failing;
}

void* allocate(size_t bytes) {
    return fails() ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
}

void* allocate(size_t bytes, std::align_val_t alignment) {
    auto const step = static_cast<size_t>(alignment);
    return fails() ? nullptr : std::aligned_alloc(step, (bytes + step - 1) / step * step);
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
    return orThrow(allocate(bytes));
}
void* operator new[](size_t bytes) {
    return orThrow(allocate(bytes));
}
void* operator new(size_t bytes, std::nothrow_t const&) noexcept {
    return allocate(bytes);
}
void* operator new[](size_t bytes, std::nothrow_t const&) noexcept {
    return allocate(bytes);
}
void* operator new(size_t bytes, std::align_val_t alignment) {
    return orThrow(allocate(bytes, alignment));
}
void* operator new[](size_t bytes, std::align_val_t alignment) {
    return orThrow(allocate(bytes, alignment));
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
