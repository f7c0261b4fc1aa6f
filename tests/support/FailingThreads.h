#pragma once

#include <cstddef>

/// Stands before pthread_create in a program that links FailingThreads.cpp: the system gives so many threads more, then
/// none, as it does at a limit of processes or of memory.
class ThreadLimit {
public:
    explicit ThreadLimit(size_t threads);
    ~ThreadLimit();
    ThreadLimit(ThreadLimit const&) = delete;
    ThreadLimit& operator=(ThreadLimit const&) = delete;

    /// Threads that were asked for in vain.
    static size_t refused();
};
