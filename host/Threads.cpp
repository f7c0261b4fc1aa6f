#include "host/Threads.h"

#include <algorithm>
#include <new>
#include <system_error>

std::vector<std::thread> startThreads(size_t count, std::function<void(size_t thread)> const& work) {
    std::vector<std::thread> threads;
    threads.reserve(count);
    try {
        for (size_t i = 0; i < count; ++i)
            threads.emplace_back(work, i);
    } catch (std::system_error const&) {
        return threads; // limits of processes and of memory: the threads that run do the work
    } catch (std::bad_alloc const&) {
        return threads;
    }
    return threads;
}

size_t threadsFor(size_t wanted) {
    return wanted != 0 ? wanted : std::max(1U, std::thread::hardware_concurrency());
}
