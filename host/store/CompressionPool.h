#pragma once

#include "host/store/TileCodec.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// Threads that compress tiles. Tiles go in and, in any order, come out as they are stored.
///
///     one thread     add() -> waiting_ -> workers -> finished_ -> take()     the same thread
///
/// Everything that is shared lies behind one mutex. add() waits while kMaxWaitingTilesPerJob tiles per job wait
/// already, so that a reader that is faster than the compression does not fill the memory.
///
/// Where the system gives fewer threads than are asked for, those do the work; where it gives none, add() does.
class CompressionPool {
public:
    static constexpr size_t kMaxWaitingTilesPerJob = 16;

    /// What makes of a tile what is stored. Each thread has one of its own, which it makes itself.
    using Encoder = std::function<StoredTile(RawTile const&)>;
    using EncoderMaker = std::function<Encoder()>;

    /// Tiles of a store are encoded by TileCodec.
    CompressionPool(StoreInfo const& info, size_t jobs);
    /// jobs: threads; for 0 there is one.
    CompressionPool(EncoderMaker maker, size_t jobs);
    /// Waits for the tiles in work; those that wait are dropped.
    ~CompressionPool();
    CompressionPool(CompressionPool const&) = delete;
    CompressionPool& operator=(CompressionPool const&) = delete;

    /// Throws what a worker threw.
    void add(RawTile&& tile);
    /// What has been compressed so far. Throws as above.
    std::vector<StoredTile> take();
    /// Waits for all tiles and returns the rest of them. No add() after it. Throws as above.
    std::vector<StoredTile> finish();

private:
    void work();
    void compressTiles();
    void endThreads();

    EncoderMaker maker_;
    Encoder ownEncoder_; // where there are no threads
    size_t maxWaiting_ = kMaxWaitingTilesPerJob;
    std::mutex mutex_;
    std::condition_variable tileWaits_; // or closed_
    std::condition_variable roomWaits_; // or failure_
    std::deque<RawTile> waiting_;
    std::vector<StoredTile> finished_;
    std::exception_ptr failure_;
    bool closed_ = false;
    std::vector<std::thread> threads_; // empty: finished, or none was given
};
