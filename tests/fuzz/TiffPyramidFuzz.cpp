// An input is a TIFF file. It is opened as a pyramid, and regions of its levels are read: as they lie in the file, and
// upright in the colours of their profile.
#include "host/HostError.h"
#include "host/pyramid/Pyramid.h"
#include "host/pyramid/PyramidTiles.h"
#include "host/pyramid/TiffPyramid.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <optional>

namespace {

using Bytes = std::vector<std::uint8_t>;
using fuzz::require;

constexpr size_t kSide = 40; // of the regions
constexpr size_t kLevels = 3;

// Empty if the region is refused.
template <class Source>
std::optional<Bytes> read(Source& source, size_t level, Region const& region) {
    Bytes samples(region.width * region.height * source.facts().image.layout.pixelBytes());
    bool const done = fuzz::succeeds<HostError>([&] { source.read(level, region, samples.data()); });
    return done ? std::optional(samples) : std::nullopt;
}

// The corners and the middle of a picture.
std::vector<Region> regionsOf(Size const& size) {
    size_t const width = std::min(kSide, size.width);
    size_t const height = std::min(kSide, size.height);
    return {{0, 0, width, height},
            {(size.width - width) / 2, (size.height - height) / 2, width, height},
            {size.width - width, size.height - height, width, height}};
}

// A region of which no part fails is read again, by another reader, row by row.
template <class Source>
void requireSame(Source& source, Source& other, size_t level, Region const& region) {
    std::optional<Bytes> const whole = read(source, level, region);
    if (!whole) return;
    Bytes rows;
    for (size_t y = 0; y < region.height; ++y) {
        std::optional<Bytes> const row = read(other, level, {region.x, region.y + y, region.width, 1});
        require(row.has_value(), "a row of a region that was read is read");
        rows.insert(rows.end(), row->begin(), row->end());
    }
    require(rows == *whole, "a region has the same samples as its rows");
}

void requireFacts(PyramidFacts const& facts) {
    SampleFormat const& layout = facts.image.layout;
    require(facts.stack.pages() > 0 && layout.bands % facts.stack.planes == 0, "planes have equally many bands");
    require(layout.bands > 0 && layout.colours <= layout.bands, "colours are bands");
    require(!facts.levels.empty() && facts.levels.size() <= 130, "there are levels, and not too many");
    require(facts.levels.front().size.width == layout.width && facts.levels.front().size.height == layout.height,
            "the first level is the picture");
    for (size_t i = 0; i < facts.levels.size(); ++i) {
        PyramidLevel const& level = facts.levels[i];
        require(level.size.width > 0 && level.size.height > 0 && level.unit.width > 0 && level.unit.height > 0,
                "levels have samples");
        if (i > 0)
            require(level.size.width <= facts.levels[i - 1].size.width &&
                        level.size.height <= facts.levels[i - 1].size.height,
                    "levels decrease");
    }
}

void requireReads(Pyramid const& pyramid) {
    requireFacts(pyramid.facts());
    auto const one = pyramid.reader();
    auto const other = pyramid.reader();
    for (size_t level = 0; level < std::min(kLevels, pyramid.facts().levels.size()); ++level)
        for (Region const& region : regionsOf(pyramid.facts().levels[level].size))
            requireSame(*one, *other, level, region);
    SampleFormat const& layout = pyramid.facts().image.layout;
    ImageStack const& stack = pyramid.facts().stack;
    std::vector<size_t> const last = {layout.bands - 1, 0};
    one->take(last, {stack.slices - 1, stack.times - 1});
    other->take(last, {stack.slices - 1, stack.times - 1});
    requireSame(*one, *other, 0, regionsOf(layout.size()).back());
    PyramidTiles tiles(pyramid.reader());
    PyramidTiles others(pyramid.reader());
    for (size_t const level : {1u, 3u})
        requireSame(tiles, others, level, regionsOf(tiles.size(level)).back());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    static TemporaryFolder const kFolder;
    std::string const path = kFolder.path("picture.tif");
    writeFile(path, std::string(bytes, bytes + size));
    std::shared_ptr<PyramidFile> file;
    if (!fuzz::succeeds<HostError>([&] {
            InputFile input(path);
            file = tiffpyramid::open(input, {}, 100000);
        }))
        return 0;
    if (!file) return 0;
    requireFacts(file->facts());
    // Decoders are tested by their own projects: a few large tiles take long, and are not our subject.
    std::uint64_t unitBytes = 0;
    for (PyramidLevel const& level : file->facts().levels)
        unitBytes = std::max(unitBytes, std::uint64_t{level.unit.width} * level.unit.height *
                                            file->facts().image.layout.pixelBytes());
    if (unitBytes > 4'000'000) return 0;

    ImageSelection shown;
    shown.isUpright = true;
    shown.followsProfile = true;
    for (ImageSelection const& selection : {ImageSelection(), shown})
        requireReads(Pyramid(path, file, selection));
    return 0;
}
