#include "host/view/TileLoader.h"

#include "host/Threads.h"

#include <algorithm>

TileLoader::TileLoader(std::string const& storePath, size_t threads, std::shared_ptr<SampleCache> const& cache) {
    size_t const count = threadsFor(threads);
    // Opened here: a store that cannot be read is known before the first thread starts.
    for (size_t i = 0; i < count; ++i)
        readers_.push_back(std::make_unique<BandReader>(storePath, cache));
    threads_ = startThreads(count, [this](size_t thread) { work(*readers_[thread]); });
}

TileLoader::~TileLoader() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        closed_ = true;
    }
    workWaits_.notify_all();
    for (auto& thread : threads_)
        thread.join();
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
    return std::any_of(inWork_.begin(), inWork_.end(), isIt) || std::any_of(finished_.begin(), finished_.end(), isIt);
}

std::unique_ptr<LoadedTile> TileLoader::take() {
    std::unique_ptr<LoadedTile> tile;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (threads_.empty() && mayRead()) readNext(*readers_.front(), lock);
        if (finished_.empty()) return nullptr;
        tile = std::move(finished_.front());
        finished_.pop_front();
    }
    workWaits_.notify_one();
    return tile;
}

void TileLoader::wait(std::chrono::milliseconds time) {
    if (threads_.empty()) return;
    std::unique_lock<std::mutex> lock(mutex_);
    tileIsThere_.wait_for(lock, time, [this] { return !finished_.empty() || (waiting_.empty() && inWork_.empty()); });
}

size_t TileLoader::pending() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return waiting_.size() + inWork_.size() + finished_.size();
}

void TileLoader::work(BandReader& reader) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        workWaits_.wait(lock, [this] { return closed_ || mayRead(); });
        if (closed_) return;
        readNext(reader, lock);
    }
}

// The first that waits. The lock is open while it is read.
void TileLoader::readNext(BandReader& reader, std::unique_lock<std::mutex>& lock) {
    auto const next = waiting_.begin();
    inWork_.splice(inWork_.end(), waiting_, next);
    LoadedTile& tile = **next;
    lock.unlock();
    try {
        tile.parts = reader.read(tile.job);
    } catch (...) {
        tile.failure = std::current_exception();
    }
    lock.lock();
    finished_.splice(finished_.end(), inWork_, next);
    tileIsThere_.notify_all();
}
