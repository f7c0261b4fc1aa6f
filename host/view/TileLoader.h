#pragma once

#include "host/view/BandReader.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

struct LoadedTile {
    PictureTile tile;
    std::vector<BandPart> parts;
};

/// Threads that read what picture tiles are rebuilt from.
///
///     one thread    want() -> waiting_ -> threads -> finished_ -> take()    the same thread
///
/// Everything that is shared lies behind one mutex. The threads rest while kFinishedTiles are finished and not taken, so
/// that a GL thread that is slower than they are does not fill the memory.
class TileLoader {
public:
    /// threads: 0: as many as the machine has cores. Throws what TileStore throws.
    TileLoader(std::string const& storePath, std::size_t threads, std::shared_ptr<SampleCache> const& cache);
    /// Waits for the tiles in work.
    ~TileLoader();
    TileLoader(TileLoader const&) = delete;
    TileLoader& operator=(TileLoader const&) = delete;

    /// The tiles to read, the first one first, in place of those that still wait. Tiles that are in work or finished stay
    /// so and are not read twice.
    void want(std::vector<PictureTile> const& tiles);
    /// A tile that is finished, the one that was finished first; empty where there is none. Throws what a thread threw.
    std::unique_ptr<LoadedTile> take();
    /// Until a tile is finished, for at most so long; returns at once where none waits or is in work.
    void wait(std::chrono::milliseconds time);
    /// Tiles that wait, are in work or have not been taken.
    std::size_t pending() const;

private:
    static constexpr std::size_t kFinishedTiles = 16;

    void work(BandReader& reader);
    void readTiles(BandReader& reader);

    mutable std::mutex mutex_;
    std::condition_variable workWaits_;   // or closed_
    std::condition_variable tileIsThere_; // or failure_
    std::deque<PictureTile> waiting_;
    std::set<PictureTile> taken_; // in work or finished
    std::deque<std::unique_ptr<LoadedTile>> finished_;
    std::exception_ptr failure_;
    bool closed_ = false;
    std::vector<std::unique_ptr<BandReader>> readers_;
    std::vector<std::thread> threads_;
};
