#pragma once

#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

/// Starts threads that run `work` with their number, 0, 1, ...: `count` of them, or as many as the system gives,
/// perhaps none. The caller joins them. Throws std::bad_alloc, before the first thread is started.
std::vector<std::thread> startThreads(size_t count, std::function<void(size_t thread)> const& work);

/// Upper limit of --jobs.
constexpr size_t kMaxJobs = 1024;

/// `wanted` threads; 0: one per core.
size_t threadsFor(size_t wanted);
