#pragma once

#include "apps/velmora/view/ImportPreview.h"
#include "host/store/StoreImporter.h"

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// Imports a picture into a store on a thread of its own, while another thread looks on.
class ImportJob {
public:
    /// Where the system gives no thread the import is over when this returns.
    ImportJob(PictureOpener const& open, std::string const& store, ImportOptions const& options);
    /// Stops the import where it still runs; nothing of it is left then.
    ~ImportJob();
    ImportJob(ImportJob const&) = delete;
    ImportJob& operator=(ImportJob const&) = delete;

    /// Whether it has come to an end. Throws what the import threw.
    bool done() const;
    /// Of the rows, the share that has been read.
    double share() const { return share_; }
    ImportPreview const& picture() const { return *growing_; }

private:
    void run(PictureOpener const& open, std::string const& store, ImportOptions const& options);

    std::shared_ptr<ImportPreview> growing_ = std::make_shared<ImportPreview>();
    std::atomic<double> share_{0};
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> done_{false};
    std::exception_ptr failure_;      // the thread's until done_
    std::vector<std::thread> thread_; // one, or none
};
