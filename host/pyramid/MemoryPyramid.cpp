#include "host/pyramid/MemoryPyramid.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

constexpr size_t kUnitSide = 512;
constexpr size_t kPartBytes = 4 * 1024 * 1024; // decoded between two calls of the check

// What readers share.
struct Opened {
    struct Level {
        std::mutex mutex;
        std::shared_ptr<std::vector<std::uint8_t> const> samples; // null: not decoded
    };

    std::string path;
    SampleRequest request;
    PyramidFacts facts;
    std::vector<Level> levels;

    explicit Opened(size_t count) : levels(count) {}
};

class MemoryLevelReader final : public LevelReader {
public:
    MemoryLevelReader(std::shared_ptr<Opened> opened, InputFile::Check check)
        : opened_(std::move(opened)), check_(std::move(check)), samples_(opened_->levels.size()) {}

    void setCheck(InputFile::Check const& check) override { check_ = check; }
    PyramidStatistics statistics() const override { return statistics_; }

    void read(size_t level, size_t /*plane*/, Region const& region, std::uint8_t* samples) override {
        if (!samples_[level]) samples_[level] = take(level);
        size_t const pixelBytes = opened_->facts.image.layout.pixelBytes();
        size_t const width = opened_->facts.levels[level].size.width;
        for (size_t row = 0; row < region.height; ++row)
            std::memcpy(samples + row * region.width * pixelBytes,
                        samples_[level]->data() + ((region.y + row) * width + region.x) * pixelBytes,
                        region.width * pixelBytes);
    }

private:
    std::shared_ptr<std::vector<std::uint8_t> const> take(size_t level) {
        Opened::Level& shared = opened_->levels[level];
        std::lock_guard<std::mutex> const lock(shared.mutex);
        if (!shared.samples) {
            shared.samples = std::make_shared<std::vector<std::uint8_t> const>(decoded(level));
            ++statistics_.decodedUnits;
            statistics_.decodedBytes += shared.samples->size();
        }
        return shared.samples;
    }

    std::vector<std::uint8_t> decoded(size_t level) const {
        auto const file = std::make_shared<InputFile>(opened_->path, check_);
        SampleRequest request = opened_->request;
        request.level = level;
        auto const source = openSamples(file, request);
        SampleFormat const& layout = source->facts().layout;
        requireSame(opened_->path, opened_->facts, level, source->facts());
        std::vector<std::uint8_t> samples(layout.rowBytes() * layout.height);
        size_t const rowsAtOnce = std::clamp<size_t>(kPartBytes / layout.rowBytes(), 1, layout.height);
        for (size_t y = 0; y < layout.height; y += rowsAtOnce) {
            file->check();
            source->read({0, y, layout.width, std::min(rowsAtOnce, layout.height - y)},
                         &samples[y * layout.rowBytes()]);
        }
        return samples;
    }

    std::shared_ptr<Opened> opened_;
    InputFile::Check check_;
    std::vector<std::shared_ptr<std::vector<std::uint8_t> const>> samples_; // of the levels that were read
    PyramidStatistics statistics_;
};

class MemoryPyramidFile final : public PyramidFile {
public:
    explicit MemoryPyramidFile(std::shared_ptr<Opened> opened) : opened_(std::move(opened)) {}

    PyramidFacts const& facts() const override { return opened_->facts; }
    std::unique_ptr<LevelReader> reader(InputFile::Check const& check) const override {
        return std::make_unique<MemoryLevelReader>(opened_, check);
    }

private:
    std::shared_ptr<Opened> opened_;
};

} // namespace

std::unique_ptr<PyramidFile> memorypyramid::open(std::string const& path, SampleRequest const& request,
                                                 ImageFacts const& facts, std::vector<Size> const& sizes) {
    auto opened = std::make_shared<Opened>(sizes.size());
    opened->path = path;
    opened->request = request;
    opened->facts.image = facts;
    for (Size const& size : sizes) {
        Size const unit{std::min(kUnitSide, size.width), std::min(kUnitSide, size.height)};
        opened->facts.levels.push_back({size, unit});
        opened->facts.sharedBytes += facts.layout.pixelBytes() * size.width * size.height;
    }
    opened->facts.sharedBytes += facts.heldBytes;
    return std::make_unique<MemoryPyramidFile>(std::move(opened));
}
