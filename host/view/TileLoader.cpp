#include "host/view/TileLoader.h"

#include "host/Threads.h"

#include <algorithm>

TileLoader::TileLoader(std::vector<std::unique_ptr<TileReader>> readers)
    : readers_(std::move(readers)),
      threads_(startThreads(readers_.size(), [this](size_t thread) { work(*readers_[thread]); })) {}

TileLoader::~TileLoader() {
    close();
}

void TileLoader::close() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        closed_ = true;
    }
    workWaits_.notify_all();
    for (auto& thread : threads_)
        thread.join();
    threads_.clear();
    copyHanded();
}

void TileLoader::want(std::vector<TileJob> const& jobs) {
    Tiles wanted;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        for (TileJob const& job : jobs) {
            if (isTaken(job)) continue;
            wanted.push_back(std::make_unique<LoadedTile>());
            wanted.back()->job = job;
        }
        waiting_.swap(wanted);
    }
    workWaits_.notify_all();
}

bool TileLoader::isTaken(TileJob const& job) const {
    auto const isIt = [&](std::unique_ptr<LoadedTile> const& one) { return one->job == job; };
    auto const has = [&](Tiles const& tiles) { return std::any_of(tiles.begin(), tiles.end(), isIt); };
    return has(handed_) || has(inWork_) || has(finished_);
}

std::unique_ptr<LoadedTile> TileLoader::take() {
    std::unique_ptr<LoadedTile> tile;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (threads_.empty() && !closed_ && mayRead()) readNext(*readers_.front(), lock);
        if (finished_.empty()) return nullptr;
        tile = std::move(finished_.front());
        finished_.pop_front();
    }
    workWaits_.notify_one();
    return tile;
}

void TileLoader::hand(std::unique_ptr<LoadedTile> tile) {
    {
        Tiles handed;
        try {
            handed.emplace_back();
        } catch (...) {
            // The ring waits for every room that it has given.
            tile->room->write(tile->pixels, 0);
            throw;
        }
        handed.back() = std::move(tile);
        std::lock_guard<std::mutex> const lock(mutex_);
        handed_.splice(handed_.end(), handed);
    }
    if (threads_.empty())
        copyHanded();
    else
        workWaits_.notify_one();
}

void TileLoader::copyHanded() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!handed_.empty())
        copyNext(lock);
}

void TileLoader::wait(std::chrono::milliseconds time) {
    if (threads_.empty()) return;
    std::unique_lock<std::mutex> lock(mutex_);
    tileIsThere_.wait_for(
        lock, time, [this] { return !finished_.empty() || (waiting_.empty() && handed_.empty() && inWork_.empty()); });
}

size_t TileLoader::pending() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return waiting_.size() + handed_.size() + inWork_.size() + finished_.size();
}

void TileLoader::work(TileReader& reader) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        workWaits_.wait(lock, [this] { return closed_ || !handed_.empty() || mayRead(); });
        if (closed_) return;
        handed_.empty() ? readNext(reader, lock) : copyNext(lock);
    }
}

// The first that waits. The lock is open while it is read.
void TileLoader::readNext(TileReader& reader, std::unique_lock<std::mutex>& lock) {
    auto const next = waiting_.begin();
    inWork_.splice(inWork_.end(), waiting_, next);
    LoadedTile& tile = **next;
    lock.unlock();
    try {
        reader.read(tile);
    } catch (...) {
        tile.failure = std::current_exception();
    }
    lock.lock();
    finished_.splice(finished_.end(), inWork_, next);
    tileIsThere_.notify_all();
}

// The first that was handed over. The lock is open while it is copied.
void TileLoader::copyNext(std::unique_lock<std::mutex>& lock) {
    auto const next = handed_.begin();
    inWork_.splice(inWork_.end(), handed_, next);
    LoadedTile& tile = **next;
    lock.unlock();
    tile.room->write(tile.pixels, 0);
    lock.lock();
    finished_.splice(finished_.end(), inWork_, next);
    tileIsThere_.notify_all();
}
