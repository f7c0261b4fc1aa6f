#pragma once

#include "host/view/BandReader.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct LoadedTile {
    TileJob job;
    std::vector<BandPart> parts;
    std::exception_ptr failure; ///< what kept the tile from being read; empty: nothing
};

/// Threads that read what picture tiles are rebuilt from.
///
///     one thread    want() -> waiting_ -> threads: inWork_ -> finished_ -> take()    the same thread
///
/// Everything that is shared lies behind one mutex. The threads rest while kFinishedTiles are finished and not taken,
/// so that a GL thread that is slower than they are does not fill the memory. Nothing is allocated on the way of a tile
/// but by reading it, so that a thread cannot fail otherwise.
///
/// Where the system gives fewer threads than are asked for, those do the work; where it gives none, take() does.
class TileLoader {
public:
    /// threads: 0: as many as the machine has cores. Throws what TileStore throws.
    TileLoader(std::string const& storePath, size_t threads, std::shared_ptr<SampleCache> const& cache);
    /// Waits for the tiles in work.
    ~TileLoader();
    TileLoader(TileLoader const&) = delete;
    TileLoader& operator=(TileLoader const&) = delete;

    /// The tiles to read, the first one first, in place of those that still wait. Tiles that are in work or finished
    /// stay so and are not read twice. Where it throws, what waited before still waits.
    void want(std::vector<TileJob> const& jobs);
    /// A tile that is finished, the one that was finished first, or that could not be read; empty where there is none.
    /// Such a tile may be wanted again.
    std::unique_ptr<LoadedTile> take();
    /// Until a tile is finished, for at most so long; returns at once where none waits or is in work.
    void wait(std::chrono::milliseconds time);
    /// Tiles that wait, are in work or have not been taken.
    size_t pending() const;
    /// That were given.
    size_t threads() const { return threads_.size(); }

private:
    static constexpr size_t kFinishedTiles = 16;
    using Tiles = std::list<std::unique_ptr<LoadedTile>>;

    void work(BandReader& reader);
    void readNext(BandReader& reader, std::unique_lock<std::mutex>& lock);
    bool mayRead() const { return !waiting_.empty() && finished_.size() < kFinishedTiles; }
    bool isTaken(TileJob const& job) const;

    mutable std::mutex mutex_;
    std::condition_variable workWaits_; // or closed_
    std::condition_variable tileIsThere_;
    Tiles waiting_;
    Tiles inWork_;
    Tiles finished_;
    bool closed_ = false;
    std::vector<std::unique_ptr<BandReader>> readers_;
    std::vector<std::thread> threads_;
};
