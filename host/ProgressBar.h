#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

/// A line on a terminal that shows how far a job is:
///
///     reading photo.tif  [##########--------------]  42%  0:07 left
///
/// Draws nothing where the stream is no terminal. A class of our own: Debian packages no C++ library for it.
class ProgressBar {
public:
    ProgressBar(std::string title, std::FILE* stream);
    /// Wipes the line.
    ~ProgressBar();

    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    /// done of total steps; redraws at most ten times a second.
    void update(size_t done, size_t total);

    /// The line for a share of the work, without the time left.
    static std::string line(std::string const& title, size_t done, size_t total);

private:
    using Clock = std::chrono::steady_clock;

    std::string title_;
    std::FILE* stream_;
    bool shown_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDraw_{};
};
