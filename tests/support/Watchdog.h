#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace backendtest {

/// Ends the test program, as failed, where a wait that has no time limit of its own lasts too long: nobody can end it
/// from outside, so the tests after it do not run either.
class Watchdog {
public:
    explicit Watchdog(std::string wait, std::chrono::seconds limit = std::chrono::seconds(120))
        : thread_([this, wait = std::move(wait), limit] { watch(wait, limit); }) {}
    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            over_ = true;
        }
        changed_.notify_one();
        thread_.join();
    }

private:
    void watch(std::string const& wait, std::chrono::seconds limit) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (changed_.wait_for(lock, limit, [this] { return over_; })) return;
        std::fprintf(stderr, "[  FAILED  ] still waiting: %s\n", wait.c_str());
        std::_Exit(EXIT_FAILURE);
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool over_ = false;
    std::thread thread_; // last: it uses the others
};

} // namespace backendtest
