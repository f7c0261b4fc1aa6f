#include "host/image/VipsSamples.h"

#include "host/HostError.h"
#include "host/image/Complaint.h"
#include "host/image/VipsLibrary.h"
#include "host/image/VipsOpening.h"

#include <vips/vips8>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <sstream>
#include <utility>

using vips::VError;
using vips::VImage;
using vips::VRegion;

namespace {

// Rows requested from libvips at once: enough to keep its tile caches busy, few enough to stay in them.
constexpr size_t kRowsPerRequest = 64;
constexpr auto kSourceName = "source_custom: "; // libvips' name for files that are read through our callbacks

// The decoders' messages, line by line, without function names: "vipspng: libpng read error". Lines that the file's
// callbacks add are dropped if there are others.
std::string complaintOf(std::string const& text) {
    std::istringstream lines(text);
    std::string complaint;
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        size_t const end = line.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_");
        bool const named = end != std::string::npos && end > 0 && line.compare(end, 2, ": ") == 0;
        last = named ? line.substr(end + 2) : line;
        if (line.rfind(kSourceName, 0) != 0) complaint += last + "\n";
    }
    return onOneLine(complaint.empty() ? last : complaint);
}

// The exception's text ends in what earlier attempts left in libvips' buffer: empty it for the next failure.
HostError unreadable(InputFile const& file, std::string const& text) {
    vips_error_clear();
    file.rethrow();
    return unreadableImage(file.path(), complaintOf(text));
}

// libvips keeps the complaints of all threads in one buffer. Readings of several threads go on side by side as long as
// it stays empty; a reading that finds it filled is repeated while no other goes on: then complaints are its own.
// Opening a file is always alone: trying the loaders leaves complaints.
class Readings {
public:
    using Together = std::shared_lock<std::shared_mutex>;
    using Alone = std::unique_lock<std::shared_mutex>;

    Together together() {
        std::lock_guard<std::mutex> const lock(door_);
        return Together(inside_);
    }
    // The door stays shut while this thread waits: else readings that follow one another would keep it out for ever.
    Alone alone() {
        std::lock_guard<std::mutex> const lock(door_);
        return Alone(inside_);
    }

private:
    std::mutex door_;
    std::shared_mutex inside_;
};

Readings& readings() {
    static Readings all;
    return all;
}

class VipsSamples final : public SampleSource {
public:
    VipsSamples(std::shared_ptr<InputFile> file, SampleRequest const& request)
        : file_(std::move(file)),
          request_(request),
          opened_(vipsopening::open(file_, request)),
          region_(regionOf(*file_, opened_.image)) {}

    ImageFacts const& facts() const override { return opened_.facts; }
    bool readsAnywhere() const override { return opened_.readsAnywhere; }

    void read(Region const& region, std::uint8_t* samples) override {
        size_t const rowBytes = region.width * facts().layout.pixelBytes();
        auto const x = static_cast<int>(region.x);
        auto const width = static_cast<int>(region.width);
        for (size_t row = 0; row < region.height; row += kRowsPerRequest) {
            auto const y = static_cast<int>(region.y + row);
            auto const rows = static_cast<int>(std::min(kRowsPerRequest, region.height - row));
            prepare(x, y, width, rows);
            for (int i = 0; i < rows; ++i)
                std::memcpy(samples + (row + static_cast<size_t>(i)) * rowBytes, region_.addr(x, y + i), rowBytes);
        }
    }

private:
    static VRegion regionOf(InputFile const& file, VImage const& image) {
        try {
            return VRegion::new_from_image(image);
        } catch (VError const& error) {
            throw unreadable(file, error.what());
        }
    }

    void prepare(int x, int y, int width, int rows) {
        file_->check();
        if (opened_.readsAnywhere && prepareWithOthers(x, y, width, rows)) return;
        auto const lock = readings().alone();
        // A reading that has left complaints is repeated by its own thread.
        vips_error_clear();
        if (opened_.readsAnywhere) reopen();
        prepareAlone(x, y, width, rows);
    }

    // Returns whether nothing failed and no thread complains.
    bool prepareWithOthers(int x, int y, int width, int rows) {
        auto const lock = readings().together();
        try {
            region_.prepare(x, y, width, rows);
        } catch (VError const&) {
            file_->rethrow();
            return false;
        }
        file_->rethrow();
        return *vips_error_buffer() == 0;
    }

    void prepareAlone(int x, int y, int width, int rows) {
        try {
            region_.prepare(x, y, width, rows);
        } catch (VError const& error) {
            throw unreadable(*file_, error.what());
        }
        file_->rethrow();
        // Decoders fill damaged parts with grey, and report it here only.
        std::string const complaint = vips_error_buffer();
        if (complaint.empty()) return;
        vips_error_clear();
        if (!complaint::isHarmless(complaint)) throw unreadable(*file_, complaint);
    }

    // A decoder that has failed may not go on.
    void reopen() {
        try {
            opened_ = vipsopening::open(file_, request_);
            region_ = regionOf(*file_, opened_.image);
        } catch (VError const& error) {
            throw unreadable(*file_, error.what());
        }
        vips_error_clear();
    }

    std::shared_ptr<InputFile> file_;
    SampleRequest request_;
    vipsopening::Opened opened_;
    VRegion region_;
};

} // namespace

bool vipssamples::isSlide(InputFile& file) {
    vipslibrary::start();
    auto const lock = readings().alone();
    bool const is = vipsopening::isSlide(file);
    vips_error_clear();
    return is;
}

std::unique_ptr<SampleSource> vipssamples::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    vipslibrary::start();
    auto const lock = readings().alone();
    try {
        auto source = std::make_unique<VipsSamples>(file, request);
        file->rethrow();
        vips_error_clear();
        return source;
    } catch (VError const& error) {
        throw unreadable(*file, error.what());
    }
}
