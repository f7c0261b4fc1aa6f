#include "host/view/PixelProbe.h"

#include "host/HostError.h"
#include "host/Threads.h"
#include "host/image/SampleRange.h"

#include <cstdint>
#include <numeric>

bool PixelProbe::Question::operator==(Question const& other) const {
    return x == other.x && y == other.y && bands == other.bands && position == other.position;
}

PixelProbe::PixelProbe(Pyramid const& pyramid)
    : reader_(pyramid.ownColours()), threads_(startThreads(1, [this](size_t) { work(); })) {}

PixelProbe::~PixelProbe() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isClosed_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void PixelProbe::ask(Question const& question) {
    auto kept = question;
    asked_ = question;
    if (threads_.empty()) return;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        waiting_ = std::move(kept);
        answer_.reset();
    }
    changed_.notify_all();
}

std::optional<std::vector<double>> PixelProbe::answer() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return answer_;
}

bool PixelProbe::isPending() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return waiting_ || isReading_;
}

void PixelProbe::wait(std::chrono::milliseconds time) const {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, time, [this] { return !waiting_ && !isReading_; });
}

void PixelProbe::work() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return isClosed_ || waiting_; });
        if (isClosed_) return;
        Question const question = std::move(*waiting_);
        waiting_.reset();
        isReading_ = true;
        lock.unlock();
        auto answer = read(question);
        lock.lock();
        isReading_ = false;
        // Another question may have come meanwhile.
        if (!waiting_) answer_ = std::move(answer);
        changed_.notify_all();
    }
}

// Nothing leaves a thread: what cannot be read has no answer, and the picture itself says what is damaged.
std::optional<std::vector<double>> PixelProbe::read(Question const& question) {
    try {
        reader_->take(question.bands, question.position);
        SampleFormat const& layout = reader_->facts().image.layout;
        std::vector<std::uint8_t> samples(layout.pixelBytes());
        reader_->read(0, {question.x, question.y, 1, 1}, samples.data());
        std::vector<size_t> bands(layout.bands);
        std::iota(bands.begin(), bands.end(), size_t{0});
        std::vector<double> numbers;
        samplerange::toNumbers(samples.data(), layout, bands, 1, numbers);
        return numbers;
    } catch (std::exception const&) {
        return std::nullopt;
    }
}
