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
/// If the system gives fewer threads than asked for, these do the work; if it gives none, add() does.
class CompressionPool {
public:
    static constexpr size_t kMaxWaitingTilesPerJob = 16;

    /// Encodes one tile. Each thread makes an encoder of its own.
    using Encoder = std::function<StoredTile(RawTile const&)>;
    using EncoderMaker = std::function<Encoder()>;

    /// Tiles of a store are encoded by TileCodec.
    CompressionPool(StoreInfo const& info, size_t jobs);
    /// jobs: number of threads; 0 counts as 1.
    CompressionPool(EncoderMaker maker, size_t jobs);
    /// Waits for the tiles in work; drops the queue.
    ~CompressionPool();
    CompressionPool(CompressionPool const&) = delete;
    CompressionPool& operator=(CompressionPool const&) = delete;

    /// Throws what a worker threw.
    void add(RawTile&& tile);
    /// The tiles compressed so far. Throws what a worker threw.
    std::vector<StoredTile> take();
    /// Waits for all tiles and returns the rest of them. No add() after it. Throws what a worker threw.
    std::vector<StoredTile> finish();

private:
    void work();
    void compressTiles();
    void endThreads();

    EncoderMaker maker_;
    Encoder ownEncoder_; // used if there are no threads
    size_t maxWaiting_ = kMaxWaitingTilesPerJob;
    std::mutex mutex_;
    std::condition_variable tileWaits_; // signals a waiting tile, or closed_
    std::condition_variable roomWaits_; // signals room in the queue, or failure_
    std::deque<RawTile> waiting_;
    std::vector<StoredTile> finished_;
    std::exception_ptr failure_;
    bool closed_ = false;
    std::vector<std::thread> threads_; // empty: finished, or none was started
};
