#pragma once

#include "host/view/TileReader.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Threads that read what picture tiles are made of.
///
///     one thread    want() -> waiting_ -> threads: inWork_ -> finished_ -> take()    the same thread
///                   hand() -> handed_  ------^
///
/// Everything that is shared lies behind one mutex. The threads rest while kFinishedTiles are finished and not taken,
/// so that a GL thread that is slower than they are does not fill the memory. Nothing is allocated on the way of a tile
/// but by reading it, so that a thread cannot fail otherwise.
///
/// Where the system gives fewer threads than are asked for, those do the work; where it gives none, take() and hand()
/// do.
class TileLoader {
public:
    /// A thread for each of the readers.
    explicit TileLoader(std::vector<std::unique_ptr<TileReader>> readers);
    /// close().
    ~TileLoader();
    TileLoader(TileLoader const&) = delete;
    TileLoader& operator=(TileLoader const&) = delete;

    /// The tiles to read, the first one first, in place of those that still wait. Tiles that are in work or finished
    /// stay so and are not read twice. Where it throws, what waited before still waits.
    void want(std::vector<TileJob> const& jobs);
    /// A tile that is finished, the one that was finished first, or that could not be read; empty where there is none.
    /// Such a tile may be wanted again.
    std::unique_ptr<LoadedTile> take();
    /// Has a thread copy the tile's pixels into its room, before anything else; take() gives it once more then. Where
    /// it throws, they are copied, and the tile is gone.
    void hand(std::unique_ptr<LoadedTile> tile);
    /// Copies what was handed over and no thread has begun, so that the GPU has not to wait for threads that read.
    void copyHanded();
    /// Ends the threads, after the tiles that they have in work, and copies what was handed over: the GPU waits for it.
    /// Then take() gives what is finished, and nothing more is read.
    void close();
    /// Until a tile is finished, for at most so long; returns at once where none waits or is in work.
    void wait(std::chrono::milliseconds time);
    /// Tiles that wait, are in work or have not been taken.
    size_t pending() const;
    /// That were given.
    size_t threads() const { return threads_.size(); }

private:
    static constexpr size_t kFinishedTiles = 16;
    using Tiles = std::list<std::unique_ptr<LoadedTile>>;

    void work(TileReader& reader);
    void readNext(TileReader& reader, std::unique_lock<std::mutex>& lock);
    void copyNext(std::unique_lock<std::mutex>& lock);
    bool mayRead() const { return !waiting_.empty() && finished_.size() < kFinishedTiles; }
    bool isTaken(TileJob const& job) const;

    mutable std::mutex mutex_;
    std::condition_variable workWaits_; // or closed_
    std::condition_variable tileIsThere_;
    Tiles waiting_;
    Tiles handed_;
    Tiles inWork_;
    Tiles finished_;
    bool closed_ = false;
    std::vector<std::unique_ptr<TileReader>> readers_;
    std::vector<std::thread> threads_;
};
