#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// Threads that run jobs in the order of submission. The destructor waits for all jobs.
class WorkerThreads {
public:
    explicit WorkerThreads(size_t count) {
        for (size_t i = 0; i < count; ++i)
            threads_.emplace_back([this] { work(); });
    }
    WorkerThreads(WorkerThreads const&) = delete;
    WorkerThreads& operator=(WorkerThreads const&) = delete;
    ~WorkerThreads() {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            closed_ = true;
        }
        changed_.notify_all();
        for (auto& thread : threads_)
            thread.join();
    }

    void run(std::function<void()> job) {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            jobs_.push_back(std::move(job));
        }
        changed_.notify_one();
    }

private:
    void work() {
        for (;;) {
            std::function<void()> job;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                changed_.wait(lock, [this] { return closed_ || !jobs_.empty(); });
                if (jobs_.empty()) return;
                job = std::move(jobs_.front());
                jobs_.pop_front();
            }
            job();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> jobs_;
    bool closed_ = false;
    std::vector<std::thread> threads_; // last: the threads use the other members
};
