#include "host/image/TiffDirectory.h"

#include "host/image/NodataSample.h"
#include "host/image/TiffFile.h"
#include "host/image/TiffStack.h"
#include "host/image/TiffTags.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr double kMillimetresPerCentimetre = 10;
constexpr size_t kLeastKeptRows = 512; // for a picture in strips, libvips keeps at least these

// Throws for a file whose directories are all reduced-size copies of a picture that lies elsewhere.
void findPages(TiffChain& chain, InputFile const& file) {
    bool more = false;
    for (size_t i = 0; i < chain.entries.size(); ++i) {
        if (!chain.entries[i].isReduced()) chain.pages.push_back(i);
        more = more || !chain.entries[i].subDirectories.empty();
    }
    if (!chain.pages.empty()) return;
    if (more)
        throw imageNotRead(file.path(),
                           "it holds previews of a picture that lies where it is not looked for, as raw files "
                           "of cameras do; export it as a plain TIFF");
    // All directories are marked as reduced copies: each counts as a page.
    for (size_t i = 0; i < chain.entries.size(); ++i)
        chain.pages.push_back(i);
}

struct Meaning {
    std::uint16_t colourBands;
    std::string colourSpace;
    bool convertible;
};

Meaning meaningOf(TiffFile const& tiff, std::uint16_t photometric, std::uint16_t compression, std::uint16_t bands) {
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
        return {1, "", false};
    case PHOTOMETRIC_RGB:
        return {3, "", false};
    case PHOTOMETRIC_PALETTE:
        return {1, "", false};
    case PHOTOMETRIC_YCBCR:
        // libvips takes the samples of other compressions for red, green and blue.
        if (compression == COMPRESSION_JPEG || compression == COMPRESSION_OJPEG) return {3, "", false};
        return {3, "YCbCr", false};
    case PHOTOMETRIC_SEPARATED:
        if (tiff.value<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK && bands >= 4)
            return {4, "CMYK", true};
        return {bands, "inks", false};
    case PHOTOMETRIC_CIELAB:
        return {3, "Lab", true};
    case PHOTOMETRIC_LOGLUV:
        return {3, "LogLuv", true};
    default:
        return {bands, "colours of TIFF's kind " + std::to_string(photometric), false};
    }
}

// Palettes have 16 bits; libvips takes the upper 8, or the lower 8 of palettes that have no others.
void describePalette(TiffFile const& tiff, TiffDirectory& directory) {
    std::array<std::uint16_t*, 3> maps{};
    auto const bits = tiff.value<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    if (bits > 16 || TIFFGetField(tiff.get(), TIFFTAG_COLORMAP, maps.data(), &maps[1], &maps[2]) != 1) return;
    size_t const count = size_t{1} << bits;
    std::uint32_t highest = 0;
    bool grey = true;
    bool round = false;
    for (size_t i = 0; i < count; ++i) {
        grey = grey && maps[0][i] == maps[1][i] && maps[1][i] == maps[2][i];
        for (std::uint16_t const* const map : maps) {
            highest = std::max<std::uint32_t>(highest, map[i]);
            unsigned const low = map[i] & 0xffu;
            round = round || (low != 0 && low != map[i] >> 8);
        }
    }
    directory.colourBands = grey ? 1 : 3;
    directory.roundsPalette = bits <= 8 && highest > 0xff && round;
}

// Offsets of the bytes of tag 338 (extra samples) that mark colours as premultiplied: libtiff does not report them.
std::vector<std::uint64_t> multipliedMarks(InputFile& file, std::uint64_t directory) {
    constexpr std::uint64_t kMostBands = 65535;
    TiffStructure const structure(TiffBytes::of(file));
    std::uint64_t const low = structure.isBigEndian() ? 1 : 0; // a word's byte that is not always 0
    std::vector<std::uint64_t> found;
    for (TiffStructure::Entry const& entry : structure.entries(directory)) {
        if (entry.tag != TIFFTAG_EXTRASAMPLES) continue;
        for (std::uint64_t i = 0; i < std::min(entry.count, kMostBands); ++i)
            if (structure.number(entry.offset + 2 * i, 2) == EXTRASAMPLE_ASSOCALPHA)
                found.push_back(entry.offset + 2 * i + low);
    }
    return found;
}

void describeBands(TiffFile const& tiff, InputFile& file, TiffDirectory& directory) {
    auto const bands = tiff.value<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    Meaning meaning = meaningOf(tiff, directory.photometric, directory.compression, bands);
    directory.colourBands = meaning.colourBands;
    directory.colourSpace = std::move(meaning.colourSpace);
    directory.convertible = meaning.convertible;
    directory.extraBands = static_cast<std::uint16_t>(bands - std::min(bands, meaning.colourBands));
    if (directory.photometric == PHOTOMETRIC_PALETTE) describePalette(tiff, directory);

    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1 || count == 0) return;
    directory.isMultiplied = std::find(kinds, kinds + count, EXTRASAMPLE_ASSOCALPHA) != kinds + count;
    directory.hasAlpha = kinds[0] == EXTRASAMPLE_ASSOCALPHA || kinds[0] == EXTRASAMPLE_UNASSALPHA;
    if (directory.isMultiplied) directory.multipliedTags = multipliedMarks(file, TIFFCurrentDirOffset(tiff.get()));
}

// libvips would report such samples as damage.
void requireReadSamples(TiffFile const& tiff, InputFile const& file) {
    auto const bits = tiff.value<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    auto const format = tiff.value<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (format == SAMPLEFORMAT_COMPLEXINT || format == SAMPLEFORMAT_COMPLEXIEEEFP)
        throw imageNotRead(file.path(), "complex numbers in a TIFF are not read; save their real parts alone");
    bool const isFloat = format == SAMPLEFORMAT_IEEEFP;
    std::array<unsigned, 6> const read{1, 2, 4, 8, 16, 32};
    if (isFloat ? bits == 32 : std::find(read.begin(), read.end(), bits) != read.end()) return;
    throw imageNotRead(file.path(), std::string(isFloat ? "floats" : "samples") + " of " + std::to_string(bits) +
                                        " bits in a TIFF are not read; save it with " +
                                        (isFloat || bits > 16 ? "32" : "16") + " bits per sample");
}

// Upper bound of decoded bytes per byte of the file; 0: unbounded.
std::uint64_t mostBytesPerByte(std::uint16_t compression) {
    switch (compression) {
    case COMPRESSION_NONE:
        return 1;
    case COMPRESSION_PACKBITS:
        return 64;
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
        return 1032;
    case COMPRESSION_LZW:
        return 2048;
    default:
        return 0;
    }
}

void describeSize(TiffFile const& tiff, InputFile const& file, TiffDirectory& directory) {
    auto const width = tiff.value<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    auto const height = tiff.value<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    auto const bits = std::uint64_t{tiff.value<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1)} *
                      tiff.value<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    directory.tiled = TIFFIsTiled(tiff.get()) != 0;
    std::uint64_t const rowBytes = (width * bits + 7) / 8;
    if (directory.tiled) {
        // Two rows of tiles, decoded; libvips refuses tiles of a side above 10000.
        directory.heldBytes = 2 * rowBytes * std::min(tiff.value<std::uint32_t>(TIFFTAG_TILELENGTH, 1), 10000u);
    } else {
        // Two strips, but single rows if strips are high and bands interleaved.
        std::uint64_t const strip = std::min(tiff.value<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, height), height);
        bool const together = tiff.value<std::uint16_t>(TIFFTAG_PLANARCONFIG, 1) == PLANARCONFIG_CONTIG &&
                              directory.photometric != PHOTOMETRIC_YCBCR;
        directory.heldBytes = 2 * rowBytes * (strip > 128 && together ? 1 : strip);
        directory.heldBytes = std::max(directory.heldBytes, rowBytes * std::min<std::uint64_t>(height, kLeastKeptRows));
    }
    std::uint64_t const most = mostBytesPerByte(directory.compression);
    if (most != 0 && height != 0 && rowBytes > most * file.size() / height)
        throw unreadableImage(file.path(), "its header says " + std::to_string(width) + " x " + std::to_string(height) +
                                               " pixels, which are more than the file holds");
}

void describeResolution(TiffFile const& tiff, TiffDirectory& directory) {
    double millimetres = 0;
    switch (tiff.value<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH)) {
    case RESUNIT_INCH:
        millimetres = kMillimetresPerInch;
        break;
    case RESUNIT_CENTIMETER:
        millimetres = kMillimetresPerCentimetre;
        break;
    default: // units that state only the shape of a pixel
        return;
    }
    directory.pixelsPerMillimetreX = double{tiff.value<float>(TIFFTAG_XRESOLUTION, 0)} / millimetres;
    directory.pixelsPerMillimetreY = double{tiff.value<float>(TIFFTAG_YRESOLUTION, 0)} / millimetres;
}

// libtiff does not know the tag: it gives a count and the values as they lie in the file.
std::optional<double> nodataOf(TiffFile const& tiff) {
    TIFFField const* const field = TIFFFindField(tiff.get(), tifftags::kNodata, TIFF_ANY);
    if (field == nullptr || TIFFFieldDataType(field) != TIFF_ASCII || TIFFFieldPassCount(field) == 0)
        return std::nullopt;
    std::uint32_t count = 0;
    void* bytes = nullptr;
    if (TIFFGetField(tiff.get(), tifftags::kNodata, &count, &bytes) != 1) return std::nullopt;
    return nodatasample::parse({static_cast<char const*>(bytes), count});
}

// Descriptions in XML and the like are for programs.
std::vector<ImageProperty> propertiesOf(TiffFile const& tiff) {
    struct Tag {
        std::uint32_t tag;
        char const* name;
    };
    std::array<Tag, 7> const tags{{{TIFFTAG_MAKE, "make"},
                                   {TIFFTAG_MODEL, "model"},
                                   {TIFFTAG_SOFTWARE, "software"},
                                   {TIFFTAG_DATETIME, "date"},
                                   {TIFFTAG_ARTIST, "artist"},
                                   {TIFFTAG_COPYRIGHT, "copyright"},
                                   {TIFFTAG_IMAGEDESCRIPTION, "description"}}};
    std::vector<ImageProperty> found;
    for (auto const& [tag, name] : tags) {
        char const* value = nullptr;
        bool const isThere = TIFFGetField(tiff.get(), tag, &value) == 1 && value != nullptr && *value != 0;
        if (isThere && *value != '<') found.push_back({name, value});
    }
    return found;
}

TiffChain::Kind kindOf(TiffFile const& tiff) {
    TiffChain::Kind kind;
    kind.width = tiff.value<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    kind.height = tiff.value<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    kind.bands = tiff.value<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    kind.bits = tiff.value<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    kind.sampleFormat = tiff.value<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    kind.photometric = tiff.value<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    return kind;
}

} // namespace

bool isTiff(InputFile& file) {
    std::array<char, 4> start{};
    file.readAt(0, start.data(), start.size());
    std::string const magic(start.begin(), start.end());
    return magic == std::string("II*\0", 4) || magic == std::string("II+\0", 4) || magic == std::string("MM\0*", 4) ||
           magic == std::string("MM\0+", 4);
}

bool TiffChain::Kind::operator==(Kind const& other) const {
    return width == other.width && height == other.height && bands == other.bands && bits == other.bits &&
           sampleFormat == other.sampleFormat && photometric == other.photometric;
}

bool TiffChain::Entry::isReduced() const {
    return (subfileType & FILETYPE_REDUCEDIMAGE) != 0;
}

bool TiffChain::Entry::isBeside() const {
    constexpr std::uint32_t kBeside = 8;
    return isReduced() && (subfileType & kBeside) != 0;
}

bool TiffChain::Entry::isMask() const {
    return (subfileType & FILETYPE_MASK) != 0;
}

TiffChain TiffChain::read(TiffFile const& tiff) {
    TiffChain chain;
    do {
        Entry entry;
        entry.offset = TIFFCurrentDirOffset(tiff.get());
        entry.subfileType = tiff.value<std::uint32_t>(TIFFTAG_SUBFILETYPE, 0);
        entry.kind = kindOf(tiff);
        std::uint16_t count = 0;
        toff_t* offsets = nullptr;
        if (TIFFGetField(tiff.get(), TIFFTAG_SUBIFD, &count, &offsets) == 1)
            entry.subDirectories.assign(offsets, offsets + count);
        chain.entries.push_back(std::move(entry));
    } while (TIFFReadDirectory(tiff.get()) == 1);
    tiff.file().rethrow();
    findPages(chain, tiff.file());
    return chain;
}

TiffDirectory TiffDirectory::current(TiffFile const& tiff) {
    TiffDirectory directory;
    directory.photometric = tiff.value<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    directory.compression = tiff.value<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    describeBands(tiff, tiff.file(), directory);
    describeSize(tiff, tiff.file(), directory);
    describeResolution(tiff, directory);
    char const* description = nullptr;
    if (TIFFGetField(tiff.get(), TIFFTAG_IMAGEDESCRIPTION, &description) == 1) directory.description = description;
    directory.properties = propertiesOf(tiff);
    directory.nodata = nodataOf(tiff);
    return directory;
}

TiffDirectory TiffDirectory::read(InputFile& file, SampleRequest const& request) {
    TiffFile const tiff(file, "rmC");
    TiffChain const chain = TiffChain::read(tiff);
    size_t const index = chain.pages[requirePage(file, request, chain.pages.size(), "pages") - 1];
    if (TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(index)) != 1) throw tiff.failure();
    requireReadSamples(tiff, file);
    TiffDirectory directory = current(tiff);
    directory.pages = chain.pages.size();
    directory.index = index;
    directory.offset = chain.entries[index].offset;
    auto const stack = request.page ? std::nullopt : TiffStack::of(chain, directory.description);
    if (stack) directory.stack = stack->size;
    return directory;
}
