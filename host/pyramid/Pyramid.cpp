#include "host/pyramid/Pyramid.h"

#include "host/MemoryBudget.h"
#include "host/image/ImageRefusal.h"
#include "host/image/Orientation.h"
#include "host/image/ShownSamples.h"
#include "host/image/TiffDirectory.h"
#include "host/image/VipsSamples.h"
#include "host/pyramid/DecoderPyramid.h"
#include "host/pyramid/MemoryPyramid.h"
#include "host/pyramid/StorePyramid.h"
#include "host/pyramid/TiffPyramid.h"
#include "host/store/TileStore.h"

#include <utility>

namespace {

PyramidTaking takingOf(ImageSelection const& selection, ImageFacts const& facts) {
    PyramidTaking taking;
    taking.bands = facts.layout.bands;
    for (size_t const band : selection.bands)
        taking.chosen.push_back(band - 1);
    if (selection.isUpright) taking.orientation = facts.orientation;
    return taking;
}

// Chosen bands are grey or RGB, with alpha or without.
PyramidFacts ofBands(PyramidFacts facts, std::vector<size_t> const& chosen) {
    if (chosen.empty()) return facts;
    SampleFormat& layout = facts.image.layout;
    layout.bands = chosen.size();
    layout.colours = layout.bands <= 2 ? 1 : 3;
    layout.alpha = layout.bands > layout.colours;
    std::vector<BandFacts> named;
    if (!facts.image.bands.empty())
        for (size_t const band : chosen)
            named.push_back(facts.image.bands.at(band));
    facts.image.bands = std::move(named);
    facts.image.colourSpace.clear();
    facts.image.convertible = false;
    facts.isMultiplied = false;
    return facts;
}

PyramidFacts turnedUpright(PyramidFacts facts) {
    int const turn = facts.image.orientation;
    for (PyramidLevel& level : facts.levels)
        level = {orientation::turned(level.size, turn), orientation::turned(level.unit, turn)};
    facts.image = uprightFacts(facts.image);
    return facts;
}

// The sizes that the decoder gives.
std::vector<Size> sizesOf(std::string const& path, SampleRequest request, ImageFacts const& facts,
                          InputFile::Check const& check) {
    std::vector<Size> sizes{facts.layout.size()};
    for (request.level = 1; request.level < facts.levels; ++request.level) {
        auto const source = openSamples(std::make_shared<InputFile>(path, check), request);
        SampleFormat const& layout = source->facts().layout;
        bool const isLevel = isSmaller(layout.size(), sizes.back()) && layout.bands == facts.layout.bands &&
                             layout.type == facts.layout.type;
        if (!isLevel) break; // levels are numbered without gaps
        sizes.push_back(layout.size());
    }
    return sizes;
}

std::uint64_t bytesOf(SampleFormat const& layout, Size const& size) {
    return std::uint64_t{layout.pixelBytes()} * size.width * size.height;
}

struct Opened {
    std::unique_ptr<PyramidFile> file;
    std::string reason;
};

std::string tooLarge(ImageFacts const& facts, std::uint64_t bytes, std::uint64_t most, bool hasLevels) {
    return std::string(hasLevels ? "its smallest level" : "it has no smaller levels, and") + " takes " +
           memorybudget::toText(bytes) + " as " + facts.format + " decoded, more than the " +
           memorybudget::toText(most) + " that are decoded at once";
}

std::unique_ptr<PyramidFile> storeOf(std::string const& path, PyramidOptions const& options) {
    if (options.selection.page.value_or(1) != 1)
        throw HostError(HostError::Kind::Usage, "'" + path + "' is a tile store, of one picture; leave out --page");
    return storepyramid::open(path, options.cacheBytes, options.check);
}

Opened open(std::string const& path, PyramidOptions const& options) {
    if (TileStore::isStore(path)) return {storeOf(path, options), ""};
    auto const file = std::make_shared<InputFile>(path, options.check);
    SampleRequest request;
    request.page = options.selection.page;
    request.toSrgb = options.selection.toSrgb;
    request.asNumbers = !request.toSrgb;
    // A slide is a TIFF too: OpenSlide knows more about it.
    if (isTiff(*file) && !request.toSrgb && !vipssamples::isSlide(*file))
        if (auto tiff = tiffpyramid::open(*file, request, options.cacheBytes)) return {std::move(tiff), ""};
    auto const source = openSamples(file, request);
    ImageFacts const facts = source->facts();
    imagerefusal::requireMemory(path, facts);
    bool const hasDecoders = source->readsAnywhere() && facts.levels > 1;
    std::vector<Size> const sizes = sizesOf(path, request, facts, options.check);
    if (hasDecoders) return {decoderpyramid::open(path, request, facts, sizes, options.cacheBytes), ""};
    std::uint64_t const bytes = bytesOf(facts.layout, sizes.front());
    if (bytes <= options.memoryBytes) return {memorypyramid::open(path, request, facts, sizes), ""};
    return {nullptr, tooLarge(facts, bytes, options.memoryBytes, false)};
}

} // namespace

Pyramid::Pyramid(std::string path, std::shared_ptr<PyramidFile const> file, ImageSelection const& selection)
    : path_(std::move(path)), file_(std::move(file)), taking_(takingOf(selection, file_->facts().image)) {
    PyramidFacts facts = ofBands(file_->facts(), taking_.chosen);
    if (selection.isUpright) facts = turnedUpright(std::move(facts));
    // Chosen bands are numbers, and multiplied colours are imported.
    if (selection.followsProfile && taking_.chosen.empty() && !facts.isMultiplied) {
        auto const choice = SrgbConversion::of(facts.image);
        taking_.conversion = choice.conversion;
        if (choice.conversion) facts.image = convertedFacts(std::move(facts.image), choice);
    }
    facts_ = std::make_shared<PyramidFacts const>(std::move(facts));
}

std::unique_ptr<PyramidReader> Pyramid::reader(InputFile::Check const& check) const {
    return std::make_unique<PyramidReader>(facts_, file_->reader(check), taking_, path_);
}

std::unique_ptr<PyramidReader> Pyramid::ownColours(InputFile::Check const& check) const {
    PyramidTaking taking = taking_;
    taking.conversion.reset();
    return std::make_unique<PyramidReader>(facts_, file_->reader(check), std::move(taking), path_);
}

PyramidOpening openPyramid(std::string const& path, PyramidOptions const& options) {
    Opened opened = open(path, options);
    if (!opened.file) return {nullptr, opened.reason};
    ImageFacts const& facts = opened.file->facts().image;
    ImageSelection selection = options.selection;
    selection.range.reset();
    selection.automaticRange = false;
    imagerefusal::requireSelectable(path, facts, selection);
    // Planes are read one after the other.
    Size const& smallest = opened.file->facts().levels.back().size;
    std::uint64_t const bytes = bytesOf(facts.layout, smallest) / opened.file->facts().stack.planes;
    if (bytes > options.memoryBytes)
        return {nullptr, tooLarge(facts, bytes, options.memoryBytes, opened.file->facts().levels.size() > 1)};
    return {std::make_unique<Pyramid>(path, std::move(opened.file), selection), ""};
}
