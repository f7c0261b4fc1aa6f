#include "apps/velmora/view/ImportJob.h"

#include "host/Threads.h"

namespace {

// Leaves the import from within its progress.
struct Cancelled {};

} // namespace

ImportJob::ImportJob(PictureOpener const& open, std::string const& store, ImportOptions const& options)
    : thread_(startThreads(1, [=](size_t) { run(open, store, options); })) {
    if (thread_.empty()) run(open, store, options);
}

ImportJob::~ImportJob() {
    cancelled_ = true;
    for (std::thread& thread : thread_)
        thread.join();
}

bool ImportJob::done() const {
    if (!done_) return false;
    if (failure_) std::rethrow_exception(failure_);
    return true;
}

void ImportJob::run(PictureOpener const& open, std::string const& store, ImportOptions const& options) {
    auto const check = [this] {
        if (cancelled_) throw Cancelled();
    };
    auto const watched = [&] {
        auto picture = open();
        // A picture may be read once before its first row comes.
        picture->whileReading(check);
        return ImportPreview::watch(growing_, std::move(picture));
    };
    auto const progress = [&](size_t doneRows, size_t allRows) {
        check();
        share_ = static_cast<double>(doneRows) / static_cast<double>(allRows);
    };
    try {
        importStore(watched, store, options, progress);
    } catch (Cancelled const&) {
        // Nobody asks any more.
    } catch (...) {
        failure_ = std::current_exception();
    }
    done_ = true;
}
