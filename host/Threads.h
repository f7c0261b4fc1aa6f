#pragma once

#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

/// Threads of `work`, which is told which of them it runs on: 0, 1, ... `count` of them, or as many as the system
/// gives, perhaps none. The caller joins them. Throws std::bad_alloc, before the first thread is started.
std::vector<std::thread> startThreads(size_t count, std::function<void(size_t thread)> const& work);

/// As many as a user may ask for.
constexpr size_t kMaxJobs = 1024;

/// `wanted` threads, or where that is 0 one for each core.
size_t threadsFor(size_t wanted);
