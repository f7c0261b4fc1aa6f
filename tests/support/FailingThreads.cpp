#include "tests/support/FailingThreads.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <limits>
#include <pthread.h>

namespace {

constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();

std::atomic<size_t> left{kNoLimit};
std::atomic<size_t> refusals{0};

bool isRefused() {
    size_t now = left;
    while (now != kNoLimit) {
        if (now == 0) return true;
        if (left.compare_exchange_weak(now, now - 1)) return false;
    }
    return false;
}

} // namespace

ThreadLimit::ThreadLimit(size_t threads) {
    refusals = 0;
    left = threads;
}

ThreadLimit::~ThreadLimit() {
    left = kNoLimit;
}

size_t ThreadLimit::refused() {
    return refusals;
}

extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     pthread_attr_t const* attributes,
                                                                     void* (*start)(void*), void* argument) {
    static auto const create = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    if (isRefused()) {
        ++refusals;
        return EAGAIN;
    }
    return create(thread, attributes, start, argument);
}
