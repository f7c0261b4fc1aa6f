#include "host/pyramid/StorePyramid.h"

#include "host/pyramid/UnitReader.h"
#include "host/store/KeptMetadata.h"
#include "host/store/StoreLevels.h"

#include <algorithm>
#include <utility>

namespace {

// That of a view's tiles. The bands of a smaller one overlap more with those of its neighbours.
constexpr size_t kUnitSide = 512;

struct StoreFile final : UnitFile {
    std::shared_ptr<SampleCache> tiles;
    size_t levels = 0;

    StoreFile(std::string const& path_, size_t cacheBytes)
        : UnitFile(path_, cacheBytes), tiles(std::make_shared<SampleCache>(cacheBytes)) {}
};

class StoreReader final : public UnitReader {
public:
    StoreReader(std::shared_ptr<StoreFile> file, InputFile::Check check)
        : UnitReader(file), file_(std::move(file)), check_(std::move(check)) {}

    void setCheck(InputFile::Check const& check) override { check_ = check; }

protected:
    std::vector<std::uint8_t> decode(Unit const& unit) override {
        if (check_) check_();
        if (!opened_)
            opened_ = std::make_unique<Opened>(*file_, [this] {
                if (check_) check_();
            });
        std::vector<std::uint8_t> samples(unit.region.width * unit.region.height *
                                          file_->facts.image.layout.pixelBytes());
        opened_->levels.read(unit.level, unit.region, samples.data());
        return samples;
    }

    void drop() noexcept override { opened_.reset(); }

private:
    struct Opened {
        TileStore store;
        StoreLevels levels;

        Opened(StoreFile const& file, InputFile::Check const& check)
            : store(file.path, check), levels(store, file.tiles) {
            ImageFacts const facts = keptIn(store).facts;
            requireSame(file.path, file.facts, 0, facts);
            if (store.info().levels != file.levels) throw changed(file.path);
        }
    };

    std::shared_ptr<StoreFile> file_;
    InputFile::Check check_;
    std::unique_ptr<Opened> opened_;
};

class StorePyramid final : public PyramidFile {
public:
    explicit StorePyramid(std::shared_ptr<StoreFile> file) : file_(std::move(file)) {}

    PyramidFacts const& facts() const override { return file_->facts; }
    std::unique_ptr<LevelReader> reader(InputFile::Check const& check) const override {
        return std::make_unique<StoreReader>(file_, check);
    }

private:
    std::shared_ptr<StoreFile> file_;
};

} // namespace

std::unique_ptr<PyramidFile> storepyramid::open(std::string const& path, size_t cacheBytes,
                                                InputFile::Check const& check) {
    TileStore store(path, check);
    auto file = std::make_shared<StoreFile>(path, cacheBytes);
    file->facts.image = keptIn(store).facts;
    file->levels = store.info().levels;
    StoreLevels const levels(store, file->tiles);
    for (size_t level = 0; level <= file->levels; ++level) {
        Size const size = levels.size(level);
        // A side of 1 has no half.
        if (level > 0 && !isSmaller(size, file->facts.levels.back().size)) break;
        file->facts.levels.push_back({size, {std::min(kUnitSide, size.width), std::min(kUnitSide, size.height)}});
    }
    file->facts.sharedBytes = cacheBytes;
    return std::make_unique<StorePyramid>(std::move(file));
}
