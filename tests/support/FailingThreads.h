#pragma once

#include <cstddef>

/// Replaces pthread_create in a program that links FailingThreads.cpp: the system starts a limited number of threads
/// more, then none, as at a limit of processes or of memory.
class ThreadLimit {
public:
    explicit ThreadLimit(size_t threads);
    ~ThreadLimit();
    ThreadLimit(ThreadLimit const&) = delete;
    ThreadLimit& operator=(ThreadLimit const&) = delete;

    /// Number of threads refused.
    static size_t refused();
};
