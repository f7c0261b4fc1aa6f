#pragma once

#include "host/annotations/GeoJson.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A file of annotations that is read on a thread of its own, or by the caller where the system gives none.
///
/// One thread at a time.
class AnnotationFile {
public:
    explicit AnnotationFile(std::string path);
    /// Stops the read that is under way.
    ~AnnotationFile();
    AnnotationFile(AnnotationFile const&) = delete;
    AnnotationFile& operator=(AnnotationFile const&) = delete;

    std::string const& path() const { return path_; }
    bool isPending() const;
    /// Until it is read, for at most so long.
    void wait(std::chrono::milliseconds time) const;
    /// What it holds; null: it is still being read, or was taken. Throws what geojson::read throws.
    std::unique_ptr<geojson::Content> take();

private:
    void read();

    std::string const path_;
    std::atomic<bool> isClosed_{false};
    mutable std::mutex mutex_;
    mutable std::condition_variable isRead_;
    bool isPending_ = true;
    std::unique_ptr<geojson::Content> content_;
    std::exception_ptr failure_;
    std::vector<std::thread> threads_; // one, or none
};
