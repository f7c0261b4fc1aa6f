#include "host/annotations/AnnotationFile.h"

#include "host/Threads.h"

#include <utility>

namespace {

struct Closed {};

} // namespace

AnnotationFile::AnnotationFile(std::string path) : path_(std::move(path)) {
    threads_ = startThreads(1, [this](size_t) { read(); });
    if (threads_.empty()) read();
}

AnnotationFile::~AnnotationFile() {
    isClosed_ = true;
    for (std::thread& thread : threads_)
        thread.join();
}

void AnnotationFile::read() {
    std::unique_ptr<geojson::Content> content;
    std::exception_ptr failure;
    try {
        content = std::make_unique<geojson::Content>(geojson::read(path_, [this] {
            if (isClosed_) throw Closed();
        }));
    } catch (...) {
        failure = std::current_exception();
    }
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        content_ = std::move(content);
        failure_ = failure;
        isPending_ = false;
    }
    isRead_.notify_all();
}

bool AnnotationFile::isPending() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return isPending_;
}

void AnnotationFile::wait(std::chrono::milliseconds time) const {
    std::unique_lock<std::mutex> lock(mutex_);
    isRead_.wait_for(lock, time, [this] { return !isPending_; });
}

std::unique_ptr<geojson::Content> AnnotationFile::take() {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    return std::move(content_);
}
