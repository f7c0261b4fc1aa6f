#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct libdeflate_compressor;

/// Threads that compress the strips of a TIFF: deflate with horizontal prediction. Strips go in and come out in the
/// same order; the bytes do not depend on the number of threads.
///
///     one thread     add() -> strips_ -> workers compress any of them -> take()     the same thread
///
/// If the system gives fewer threads than asked for, these do the work; if it gives none, take() does.
class StripCompressor {
public:
    using Strip = std::vector<std::uint8_t>;

    struct Layout {
        size_t rowBytes = 0;
        size_t bands = 0;
        size_t bits = 8; ///< of a sample: 8, or 16 in the machine's byte order, which become little-endian
    };

    /// jobs: threads beside the caller's.
    StripCompressor(Layout const& layout, size_t jobs);
    /// Waits for the strips in work; drops the others.
    ~StripCompressor();
    StripCompressor(StripCompressor const&) = delete;
    StripCompressor& operator=(StripCompressor const&) = delete;

    /// Whole rows.
    void add(Strip&& rows);
    /// Whether so many strips wait already that the next one should be taken.
    bool isFull() const;
    bool isEmpty() const { return strips_.empty(); }
    /// The compressed bytes of the strip that was added first: it waits for them, and compresses strips meanwhile.
    /// Throws std::bad_alloc.
    Strip take();

private:
    enum class State { Waiting, InWork, Done };

    struct Slot {
        Strip bytes;     // the rows; a worker has them while it compresses
        size_t size = 0; // of the bytes, those that a worker has included
        State state = State::Waiting;
        std::exception_ptr failure;
    };

    struct FreesCompressor {
        void operator()(libdeflate_compressor* compressor) const;
    };
    using Compressor = std::unique_ptr<libdeflate_compressor, FreesCompressor>;

    void work();
    Slot* nextWaiting();
    void compress(Slot& slot, Compressor& compressor, std::unique_lock<std::mutex>& lock) const;
    static Strip deflated(Strip const& bytes, Compressor& compressor);

    Layout const layout_;
    size_t const most_;
    mutable std::mutex mutex_;
    std::condition_variable stripWaits_; // signals a waiting strip, or closed_
    std::condition_variable stripIsDone_;
    std::deque<Slot> strips_; // in order; only take() removes, only the caller's thread adds
    bool closed_ = false;
    Compressor own_; // the caller's
    std::vector<std::thread> threads_;
};
