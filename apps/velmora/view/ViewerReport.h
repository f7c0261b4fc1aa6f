#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

/// What the viewer has measured of itself.
class ViewerReport {
public:
    void firstPicture() { note(firstPicture_); }
    void fullDetail() { note(fullDetail_); }
    void frame() { ++frames_; }

    /// To standard output. Times are from the making of the report.
    void print() const;

private:
    using Clock = std::chrono::steady_clock;

    static void note(std::optional<Clock::time_point>& time) {
        if (!time) time = Clock::now();
    }
    void printTime(char const* name, std::optional<Clock::time_point> const& time) const;

    Clock::time_point start_ = Clock::now();
    std::optional<Clock::time_point> firstPicture_;
    std::optional<Clock::time_point> fullDetail_;
    size_t frames_ = 0;
};
