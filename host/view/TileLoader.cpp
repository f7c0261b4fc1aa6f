#include "host/view/TileLoader.h"

#include <algorithm>

TileLoader::TileLoader(std::string const& storePath, std::size_t threads, std::shared_ptr<SampleCache> const& cache) {
    std::size_t const count = threads != 0 ? threads : std::max(1U, std::thread::hardware_concurrency());
    // Opened here: a store that cannot be read is known before the first thread starts.
    for (std::size_t i = 0; i < count; ++i)
        readers_.push_back(std::make_unique<BandReader>(storePath, cache));
    for (auto const& reader : readers_)
        threads_.emplace_back([this, &own = *reader] { work(own); });
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

void TileLoader::want(std::vector<PictureTile> const& tiles) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        waiting_.clear();
        std::copy_if(tiles.begin(), tiles.end(), std::back_inserter(waiting_),
                     [this](PictureTile const& tile) { return taken_.count(tile) == 0; });
    }
    workWaits_.notify_all();
}

std::unique_ptr<LoadedTile> TileLoader::take() {
    std::unique_ptr<LoadedTile> tile;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (failure_) std::rethrow_exception(failure_);
        if (finished_.empty()) return nullptr;
        tile = std::move(finished_.front());
        finished_.pop_front();
        taken_.erase(tile->tile);
    }
    workWaits_.notify_one();
    return tile;
}

void TileLoader::wait(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> lock(mutex_);
    tileIsThere_.wait_for(lock, time,
                          [this] { return !finished_.empty() || failure_ || (waiting_.empty() && taken_.empty()); });
}

std::size_t TileLoader::pending() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return waiting_.size() + taken_.size();
}

void TileLoader::work(BandReader& reader) {
    try {
        readTiles(reader);
    } catch (...) {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            failure_ = std::current_exception();
        }
        tileIsThere_.notify_all();
    }
}

void TileLoader::readTiles(BandReader& reader) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        workWaits_.wait(lock, [this] { return closed_ || (!waiting_.empty() && finished_.size() < kFinishedTiles); });
        if (closed_) return;
        auto tile = std::make_unique<LoadedTile>();
        tile->tile = waiting_.front();
        waiting_.pop_front();
        taken_.insert(tile->tile);
        lock.unlock();
        tile->parts = reader.read(tile->tile);
        lock.lock();
        finished_.push_back(std::move(tile));
        tileIsThere_.notify_all();
    }
}
