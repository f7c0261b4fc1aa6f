#pragma once

#include "host/image/SampleSource.h"
#include "host/pyramid/Pyramid.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// The samples of single pixels as a picture file has them, whatever is shown: those of the pixel that was asked for
/// last, read on a thread of its own. Where the system gives no thread, or the file cannot be read there, there is no
/// answer.
///
/// One thread at a time.
class PixelProbe {
public:
    struct Question {
        size_t x = 0; ///< within the picture
        size_t y = 0;
        std::vector<size_t> bands; ///< indices of the picture's bands, one at least
        StackPosition position;

        bool operator==(Question const& other) const;
        bool operator!=(Question const& other) const { return !(*this == other); }
    };

    /// Throws HostError if the file cannot be opened.
    explicit PixelProbe(Pyramid const& pyramid);
    /// Waits for the read that is under way.
    ~PixelProbe();
    PixelProbe(PixelProbe const&) = delete;
    PixelProbe& operator=(PixelProbe const&) = delete;

    /// Takes the place of the question before.
    void ask(Question const& question);
    /// The question that was asked last; empty: none.
    std::optional<Question> const& asked() const { return asked_; }
    /// The bands' samples; empty: they are not read yet, or cannot be read.
    std::optional<std::vector<double>> answer() const;
    /// Whether an answer is on its way.
    bool isPending() const;
    /// Until it is there, for at most so long.
    void wait(std::chrono::milliseconds time) const;

private:
    void work();
    std::optional<std::vector<double>> read(Question const& question);

    std::unique_ptr<PyramidReader> reader_; // the thread's
    std::optional<Question> asked_;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::optional<Question> waiting_; // for the thread
    bool isReading_ = false;
    bool isClosed_ = false;
    std::optional<std::vector<double>> answer_;
    std::vector<std::thread> threads_; // one, or none
};
