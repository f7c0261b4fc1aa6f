#include "host/pyramid/DecoderPyramid.h"

#include "host/pyramid/UnitReader.h"

#include <algorithm>
#include <utility>

namespace {

constexpr size_t kUnitSide = 256;
// libvips and OpenSlide keep what they have decoded. A decoder is opened anew after so many bytes.
constexpr std::uint64_t kMostKeptBytes = 128 << 20;

struct DecoderFile final : UnitFile {
    using UnitFile::UnitFile;

    SampleRequest request;
};

class DecoderReader final : public UnitReader {
public:
    DecoderReader(std::shared_ptr<DecoderFile> file, InputFile::Check check)
        : UnitReader(file), file_(std::move(file)), check_(std::move(check)), levels_(file_->facts.levels.size()) {}

    void setCheck(InputFile::Check const& check) override {
        check_ = check;
        for (Level const& level : levels_)
            if (level.file) level.file->setCheck(check);
    }

protected:
    std::vector<std::uint8_t> decode(Unit const& unit) override {
        if (keptBytes_ > kMostKeptBytes) drop();
        if (!levels_[unit.level].source) levels_[unit.level] = opened(unit.level);
        std::vector<std::uint8_t> samples(unit.region.width * unit.region.height *
                                          file_->facts.image.layout.pixelBytes());
        levels_[unit.level].source->read(unit.region, samples.data());
        keptBytes_ += samples.size();
        return samples;
    }

    void drop() noexcept override {
        for (Level& level : levels_)
            level = {};
        keptBytes_ = 0;
    }

private:
    struct Level {
        std::shared_ptr<InputFile> file;
        std::unique_ptr<SampleSource> source;
    };

    Level opened(size_t level) const {
        Level opened;
        opened.file = std::make_shared<InputFile>(file_->path, check_);
        SampleRequest request = file_->request;
        request.level = level;
        opened.source = openSamples(opened.file, request);
        requireSame(file_->path, file_->facts, level, opened.source->facts());
        return opened;
    }

    std::shared_ptr<DecoderFile> file_;
    InputFile::Check check_;
    std::vector<Level> levels_;
    std::uint64_t keptBytes_ = 0;
};

class DecoderPyramid final : public PyramidFile {
public:
    explicit DecoderPyramid(std::shared_ptr<DecoderFile> file) : file_(std::move(file)) {}

    PyramidFacts const& facts() const override { return file_->facts; }
    std::unique_ptr<LevelReader> reader(InputFile::Check const& check) const override {
        return std::make_unique<DecoderReader>(file_, check);
    }

private:
    std::shared_ptr<DecoderFile> file_;
};

} // namespace

std::unique_ptr<PyramidFile> decoderpyramid::open(std::string const& path, SampleRequest const& request,
                                                  ImageFacts const& facts, std::vector<Size> const& sizes,
                                                  size_t cacheBytes) {
    auto file = std::make_shared<DecoderFile>(path, cacheBytes);
    file->request = request;
    file->facts.image = facts;
    for (Size const& size : sizes)
        file->facts.levels.push_back({size, {std::min(kUnitSide, size.width), std::min(kUnitSide, size.height)}});
    file->facts.readerBytes = 2 * kMostKeptBytes;
    return std::make_unique<DecoderPyramid>(std::move(file));
}
