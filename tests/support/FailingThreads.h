#pragma once

#include <cstddef>

/// Stands before pthread_create in a program that links FailingThreads.cpp: the system gives so many threads more, then
/// none, as it does at a limit of processes or of memory.
class ThreadLimit {
public:
    explicit ThreadLimit(std::size_t threads);
    ~ThreadLimit();
    ThreadLimit(ThreadLimit const&) = delete;
    ThreadLimit& operator=(ThreadLimit const&) = delete;

    /// Threads that were asked for in vain.
    static std::size_t refused();
};
