#include "host/pyramid/TiffPyramid.h"

#include "host/image/PixelDensity.h"
#include "host/image/TiffStack.h"
#include "host/pyramid/TiffUnits.h"
#include "host/pyramid/UnitReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace {

constexpr size_t kMostLevels = 64;              // considered of a page
constexpr double kSameRatio = 0.01;             // relative difference of the ratios of a level's sides
constexpr double kRounding = 1.5;               // of a level's sides, in its samples
constexpr double kLeastStep = 1.5;              // between pages that are levels
constexpr std::uint64_t kHandleBytes = 1 << 20; // of libtiff, per level and plane: tables of tiles, the decoder
constexpr size_t kMostHandles = 32;             // of a reader

struct TiffLevels final : UnitFile {
    using UnitFile::UnitFile;

    std::uint64_t fileBytes = 0;
    std::vector<TiffLevel> levels;
};

class TiffReader final : public UnitReader {
public:
    TiffReader(std::shared_ptr<TiffLevels> opened, InputFile::Check check)
        : UnitReader(opened), opened_(std::move(opened)), check_(std::move(check)) {
        open();
    }

    void setCheck(InputFile::Check const& check) override {
        check_ = check;
        if (file_) file_->setCheck(check);
    }

protected:
    std::vector<std::uint8_t> decode(Unit const& unit) override {
        if (!file_) open();
        std::array<size_t, 2> const key{unit.level, unit.plane};
        std::unique_ptr<TiffUnits>& units = units_.get(key);
        if (!units) {
            units = std::make_unique<TiffUnits>(*file_, opened_->levels[unit.level], unit.plane,
                                                opened_->facts.image.nodata);
            units_.setSize(key, 1);
        }
        return units->decode(unit.number, sizeOf(unit.region));
    }

    void drop() noexcept override {
        units_.evictTo(0);
        file_.reset();
    }

private:
    void open() {
        auto file = std::make_unique<InputFile>(opened_->path, check_);
        if (file->size() != opened_->fileBytes) throw changed(opened_->path);
        file_ = std::move(file);
    }

    std::shared_ptr<TiffLevels> opened_;
    InputFile::Check check_;
    std::unique_ptr<InputFile> file_;                                               // null after a failure
    LruMap<std::array<size_t, 2>, std::unique_ptr<TiffUnits>> units_{kMostHandles}; // of levels and planes
};

class TiffPyramid final : public PyramidFile {
public:
    explicit TiffPyramid(std::shared_ptr<TiffLevels> opened) : opened_(std::move(opened)) {}

    PyramidFacts const& facts() const override { return opened_->facts; }
    std::unique_ptr<LevelReader> reader(InputFile::Check const& check) const override {
        return std::make_unique<TiffReader>(opened_, check);
    }

private:
    std::shared_ptr<TiffLevels> opened_;
};

// A directory that may be a level.
struct Copy {
    TiffLevel level;
    std::string colourSpace;
    bool isMultiplied = false;
};

// Whether the sides have the ratio of the full picture's, but for rounding.
bool hasShapeOf(SampleFormat const& full, SampleFormat const& copy) {
    double const across = static_cast<double>(full.width) / static_cast<double>(copy.width);
    double const down = static_cast<double>(full.height) / static_cast<double>(copy.height);
    if (std::abs(across / down - 1) <= kSameRatio) return true;
    return std::abs(static_cast<double>(copy.width) - static_cast<double>(full.width) / down) < kRounding ||
           std::abs(static_cast<double>(copy.height) - static_cast<double>(full.height) / across) < kRounding;
}

bool isCopyOf(Copy const& full, Copy const& copy) {
    SampleFormat const& a = full.level.layout.samples;
    SampleFormat const& b = copy.level.layout.samples;
    return isSmaller(b.size(), a.size()) && a.bands == b.bands && a.type == b.type && a.colours == b.colours &&
           a.alpha == b.alpha && full.colourSpace == copy.colourSpace && full.isMultiplied == copy.isMultiplied &&
           hasShapeOf(a, b);
}

// Finds the levels of a page.
class LevelFinder {
public:
    LevelFinder(TiffFile& tiff, TiffChain const& chain, size_t page) : tiff_(tiff), chain_(chain), page_(page) {}

    // Those of a page. Of a stack, other pages are no levels.
    std::vector<TiffLevel> find(Copy const& full, bool isStack) {
        std::vector<TiffLevel> levels{full.level};
        for (std::uint64_t const offset : copiesOf(page_)) {
            auto const copy = at(offset);
            if (copy && isCopyOf(full, *copy)) levels.push_back(copy->level);
        }
        if (!isStack) addPages(full, levels);
        auto const width = [](TiffLevel const& level) { return level.layout.samples.width; };
        std::stable_sort(levels.begin() + 1, levels.end(),
                         [&](TiffLevel const& a, TiffLevel const& b) { return width(a) > width(b); });
        dropEqual(levels);
        return levels;
    }

    // Adds the directories of the stack's other planes to the levels of its first. Levels that a plane lacks go.
    void addPlanes(TiffStack const& stack, std::vector<TiffLevel>& levels) const {
        std::vector<std::uint64_t> const first = copiesOf(page_);
        for (size_t plane = 1; plane < stack.pages.size(); ++plane) {
            size_t const page = chain_.pages[stack.pages[plane]];
            levels.front().offsets.push_back(chain_.entries[page].offset);
            std::vector<std::uint64_t> const copies = copiesOf(page);
            for (auto level = levels.begin() + 1; level != levels.end();) {
                auto const copy = std::find(first.begin(), first.end(), level->offsets.front()) - first.begin();
                bool const isThere = static_cast<size_t>(copy) < copies.size();
                if (isThere) level->offsets.push_back(copies[static_cast<size_t>(copy)]);
                level = isThere ? level + 1 : levels.erase(level);
            }
        }
    }

    // The number of pages that are levels.
    size_t pagesTaken() const { return pagesTaken_; }

    // Empty if the directory is damaged, or its samples are not decoded.
    std::optional<Copy> at(std::uint64_t offset) {
        try {
            return require(offset);
        } catch (HostError const&) {
            tiff_.file().rethrow();
            return std::nullopt;
        }
    }

    std::optional<Copy> require(std::uint64_t offset) {
        if (TIFFSetSubDirectory(tiff_.get(), offset) != 1) throw tiff_.failure();
        TiffDirectory const directory = TiffDirectory::current(tiff_);
        auto layout = TiffLayout::of(tiff_, directory);
        if (!layout) return std::nullopt;
        return Copy{{{offset}, std::move(*layout)}, directory.colourSpace, directory.isMultiplied};
    }

private:
    // Directories that state that they are copies of the page.
    std::vector<std::uint64_t> copiesOf(size_t page) const {
        auto const& entries = chain_.entries;
        std::vector<std::uint64_t> found = entries[page].subDirectories;
        bool const isOnly = chain_.pages.size() == 1;
        size_t i = isOnly ? 0 : page;
        for (; i < entries.size() && found.size() < kMostLevels; ++i) {
            if (entries[i].isMask() || entries[i].isBeside() || i == page) continue;
            if (!entries[i].isReduced()) break;
            found.push_back(entries[i].offset);
        }
        if (found.size() > kMostLevels) found.resize(kMostLevels);
        return found;
    }

    void addPages(Copy const& full, std::vector<TiffLevel>& levels) {
        if (!full.level.layout.tiled) return;
        auto last = static_cast<double>(full.level.layout.samples.width);
        size_t tried = 0;
        for (size_t const page : chain_.pages) {
            if (page <= page_ || chain_.entries[page].isMask() || ++tried > kMostLevels) continue;
            auto const copy = at(chain_.entries[page].offset);
            if (!copy || !copy->level.layout.tiled || !isCopyOf(full, *copy)) continue;
            auto const width = static_cast<double>(copy->level.layout.samples.width);
            if (width * kLeastStep > last) continue;
            last = width;
            levels.push_back(copy->level);
            ++pagesTaken_;
        }
    }

    static void dropEqual(std::vector<TiffLevel>& levels) {
        std::vector<TiffLevel> kept;
        for (TiffLevel& level : levels)
            if (kept.empty() || isSmaller(level.layout.samples.size(), kept.back().layout.samples.size()))
                kept.push_back(std::move(level));
        levels = std::move(kept);
    }

    TiffFile& tiff_;
    TiffChain const& chain_;
    size_t page_;
    size_t pagesTaken_ = 0;
};

void setTags(TiffFile const& tiff, ImageFacts& facts) {
    // libtiff takes other values than 1 to 8 for none.
    facts.orientation = tiff.value<std::uint16_t>(TIFFTAG_ORIENTATION);
    std::uint32_t count = 0;
    void* bytes = nullptr;
    if (TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &count, &bytes) == 1) {
        auto const* const profile = static_cast<std::uint8_t const*>(bytes);
        facts.iccProfile.assign(profile, profile + count);
    }
}

void setFacts(TiffFile const& tiff, TiffDirectory const& directory, PyramidFacts& facts) {
    ImageFacts& image = facts.image;
    image.format = "TIFF";
    image.colourSpace = directory.colourSpace;
    image.convertible = directory.convertible;
    image.heldBytes = directory.heldBytes;
    image.nodata = directory.nodata;
    image.properties = directory.properties;
    facts.isMultiplied = directory.isMultiplied;
    setTags(tiff, image);
    if (!pixeldensity::setFromOme(image, directory.description))
        pixeldensity::set(image, pixeldensity::Origin::Tag, directory.pixelsPerMillimetreX,
                          directory.pixelsPerMillimetreY);
}

void setLevels(std::vector<TiffLevel> const& levels, PyramidFacts& facts) {
    facts.image.layout = levels.front().layout.samples;
    std::uint64_t const handles = std::min(levels.size() * levels.front().offsets.size(), kMostHandles);
    std::uint64_t largest = 0;
    for (TiffLevel const& level : levels) {
        TiffLayout const& layout = level.layout;
        facts.levels.push_back({layout.samples.size(), layout.unit});
        largest =
            std::max<std::uint64_t>(largest, layout.samples.pixelBytes() * layout.unit.width * layout.unit.height);
    }
    facts.image.levels = levels.size();
    // A unit, and what it is decoded from.
    facts.readerBytes = 3 * largest + handles * kHandleBytes;
}

// That of the first directory, which tells what the pages are.
std::string descriptionOf(TiffFile& tiff, TiffChain const& chain) {
    if (TIFFSetSubDirectory(tiff.get(), chain.entries.front().offset) != 1) throw tiff.failure();
    return TiffDirectory::current(tiff).description;
}

// Planes are bands of which the file does not say that they are red, green and blue.
void setStack(TiffStack const& stack, PyramidFacts& facts) {
    facts.stack = stack.size;
    facts.image.stack = stack.size;
    facts.image.bands = stack.bands;
    SampleFormat& layout = facts.image.layout;
    layout.bands *= stack.size.planes;
    if (stack.size.planes > 1) {
        layout.colours = 0;
        layout.alpha = false;
    }
}

} // namespace

std::unique_ptr<PyramidFile> tiffpyramid::open(InputFile& file, SampleRequest const& request, size_t cacheBytes) {
    TiffFile tiff(file, "rmDOC");
    TiffChain const chain = TiffChain::read(tiff);
    size_t const first = requirePage(file, request, chain.pages.size(), "pages") - 1;
    std::string const description = descriptionOf(tiff, chain);
    auto const whole = TiffStack::of(chain, description);
    auto const stack = request.page ? std::nullopt : whole;
    size_t const page = chain.pages[stack ? stack->pages.front() : first];
    LevelFinder finder(tiff, chain, page);
    auto const full = finder.require(chain.entries[page].offset);
    if (!full) return nullptr;

    auto opened = std::make_shared<TiffLevels>(file.path(), cacheBytes);
    opened->fileBytes = file.size();
    setFacts(tiff, TiffDirectory::current(tiff), opened->facts);
    // One plane alone has pixels as large as all of them.
    if (request.page && whole && std::count(whole->pages.begin(), whole->pages.end(), first) != 0)
        pixeldensity::setFromOme(opened->facts.image, description);
    opened->levels = finder.find(*full, stack.has_value());
    if (stack) finder.addPlanes(*stack, opened->levels);
    opened->facts.image.pages = chain.pages.size() - (request.page ? 0 : finder.pagesTaken());
    setLevels(opened->levels, opened->facts);
    if (stack) setStack(*stack, opened->facts);
    file.rethrow();
    return std::make_unique<TiffPyramid>(std::move(opened));
}
