#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

/// A line on a terminal that shows the progress of a job:
///
///     reading photo.tif  [##########--------------]  42%  0:07 left
///
/// Draws nothing if the stream is no terminal.
class ProgressBar {
public:
    /// pixelsPerStep: if it is not 0, the line shows the rate in million pixels per second.
    ProgressBar(std::string const& title, std::FILE* stream, size_t pixelsPerStep = 0);
    /// Erases the line.
    ~ProgressBar();

    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    /// done of total steps; redraws at most ten times per second.
    void update(size_t done, size_t total);

    /// The line for `done` of `total` steps, without rate and time left.
    static std::string line(std::string const& title, size_t done, size_t total);
    /// "0:07 left" after so many seconds, in which a share of the work was done; empty if that says nothing.
    static std::string timeLeft(double seconds, double share);
    /// "  12.5 Mpixel/s" for `pixels` in `seconds`; empty if either is 0.
    static std::string rate(size_t pixels, double seconds);

private:
    using Clock = std::chrono::steady_clock;

    std::string title_;
    std::FILE* stream_;
    size_t pixelsPerStep_;
    bool shown_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDraw_{};
};
