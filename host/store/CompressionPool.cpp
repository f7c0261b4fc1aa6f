#include "host/store/CompressionPool.h"

#include "host/Threads.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

CompressionPool::EncoderMaker codecsFor(StoreInfo const& info) {
    return [info]() -> CompressionPool::Encoder {
        auto const codec = std::make_shared<TileCodec>(info);
        return [codec](RawTile const& tile) { return codec->encode(tile); };
    };
}

} // namespace

CompressionPool::CompressionPool(StoreInfo const& info, size_t jobs) : CompressionPool(codecsFor(info), jobs) {}

CompressionPool::CompressionPool(EncoderMaker maker, size_t jobs) : maker_(std::move(maker)) {
    threads_ = startThreads(std::max<size_t>(jobs, 1), [this](size_t) { work(); });
    maxWaiting_ = kMaxWaitingTilesPerJob * std::max<size_t>(threads_.size(), 1);
    if (threads_.empty()) ownEncoder_ = maker_();
}

CompressionPool::~CompressionPool() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        waiting_.clear();
    }
    endThreads();
}

void CompressionPool::add(RawTile&& tile) {
    if (ownEncoder_) {
        finished_.push_back(ownEncoder_(tile));
        return;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    roomWaits_.wait(lock, [this] { return waiting_.size() < maxWaiting_ || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    waiting_.push_back(std::move(tile));
    tileWaits_.notify_one();
}

std::vector<StoredTile> CompressionPool::take() {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
    return std::exchange(finished_, {});
}

std::vector<StoredTile> CompressionPool::finish() {
    endThreads();
    return take();
}

void CompressionPool::work() {
    try {
        compressTiles();
    } catch (...) {
        std::lock_guard<std::mutex> const lock(mutex_);
        failure_ = std::current_exception();
        roomWaits_.notify_all();
    }
}

void CompressionPool::compressTiles() {
    Encoder const encode = maker_();
    while (true) {
        std::unique_lock<std::mutex> lock(mutex_);
        tileWaits_.wait(lock, [this] { return !waiting_.empty() || closed_; });
        if (waiting_.empty()) return;
        RawTile const tile = std::move(waiting_.front());
        waiting_.pop_front();
        roomWaits_.notify_one();
        lock.unlock();
        StoredTile stored = encode(tile);
        lock.lock();
        finished_.push_back(std::move(stored));
    }
}

void CompressionPool::endThreads() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        closed_ = true;
        tileWaits_.notify_all();
    }
    for (std::thread& thread : threads_)
        thread.join();
    threads_.clear();
}
