#include "host/output/StripCompressor.h"

#include "host/Threads.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int kLevel = 7; // as libtiff: small enough for zlib's 6
constexpr size_t kStripsPerJob = 4;
constexpr size_t kMostBytes = size_t{64} << 20; // of strips that wait, beyond the first

// Each sample as its difference from the one to its left, of the same band.
void predict8(std::uint8_t* row, size_t samples, size_t bands) {
    for (size_t i = samples; i-- > bands;)
        row[i] = static_cast<std::uint8_t>(row[i] - row[i - bands]);
}

void predict16(std::uint8_t* row, size_t samples, size_t bands) {
    auto const at = [row](size_t i) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, row + 2 * i, sizeof sample);
        return sample;
    };
    for (size_t i = samples; i-- > 0;) {
        auto const difference = static_cast<unsigned>(at(i) - (i < bands ? 0 : at(i - bands)));
        row[2 * i] = static_cast<std::uint8_t>(difference);
        row[2 * i + 1] = static_cast<std::uint8_t>(difference >> 8U);
    }
}

void predict(StripCompressor::Strip& rows, StripCompressor::Layout const& layout) {
    for (size_t at = 0; at < rows.size(); at += layout.rowBytes) {
        if (layout.bits == 8)
            predict8(&rows[at], layout.rowBytes, layout.bands);
        else
            predict16(&rows[at], layout.rowBytes / 2, layout.bands);
    }
}

} // namespace

StripCompressor::StripCompressor(Layout const& layout, size_t jobs)
    : layout_(layout), most_(kStripsPerJob * std::max<size_t>(jobs, 1)) {
    threads_ = startThreads(jobs, [this](size_t) { work(); });
}

StripCompressor::~StripCompressor() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        closed_ = true;
    }
    stripWaits_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void StripCompressor::add(Strip&& rows) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        Slot& slot = strips_.emplace_back();
        slot.size = rows.size();
        slot.bytes = std::move(rows);
    }
    stripWaits_.notify_one();
}

bool StripCompressor::isFull() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    size_t bytes = 0;
    for (Slot const& slot : strips_)
        bytes += slot.size;
    return strips_.size() >= most_ || bytes >= kMostBytes;
}

StripCompressor::Strip StripCompressor::take() {
    std::unique_lock<std::mutex> lock(mutex_);
    Slot& first = strips_.front();
    while (first.state != State::Done) {
        if (Slot* const waiting = nextWaiting())
            compress(*waiting, own_, lock);
        else
            stripIsDone_.wait(lock);
    }
    if (first.failure) std::rethrow_exception(first.failure);
    Strip bytes = std::move(first.bytes);
    strips_.pop_front();
    return bytes;
}

void StripCompressor::work() {
    Compressor compressor;
    std::unique_lock<std::mutex> lock(mutex_);
    while (!closed_) {
        if (Slot* const waiting = nextWaiting()) {
            compress(*waiting, compressor, lock);
            stripIsDone_.notify_one();
        } else {
            stripWaits_.wait(lock);
        }
    }
}

StripCompressor::Slot* StripCompressor::nextWaiting() {
    auto const found =
        std::find_if(strips_.begin(), strips_.end(), [](Slot const& slot) { return slot.state == State::Waiting; });
    return found == strips_.end() ? nullptr : &*found;
}

// A deque's elements stay where they are while others are added and removed at its ends.
void StripCompressor::compress(Slot& slot, Compressor& compressor, std::unique_lock<std::mutex>& lock) const {
    slot.state = State::InWork;
    Strip rows = std::move(slot.bytes);
    Strip bytes;
    std::exception_ptr failure;
    lock.unlock();
    try {
        predict(rows, layout_);
        bytes = deflated(rows, compressor);
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    slot.bytes = std::move(bytes);
    slot.size = slot.bytes.size();
    slot.failure = failure;
    slot.state = State::Done;
}

void StripCompressor::FreesCompressor::operator()(libdeflate_compressor* compressor) const {
    libdeflate_free_compressor(compressor);
}

StripCompressor::Strip StripCompressor::deflated(Strip const& bytes, Compressor& compressor) {
    if (!compressor) compressor.reset(libdeflate_alloc_compressor(kLevel));
    if (!compressor) throw std::bad_alloc();
    Strip result(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()));
    result.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), result.data(), result.size()));
    result.shrink_to_fit();
    return result;
}
