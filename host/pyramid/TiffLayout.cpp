#include "host/pyramid/TiffLayout.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <tuple>

namespace {

constexpr std::uint64_t kMostUnitBytes = std::uint64_t{128} << 20; // decoded tile or strip
constexpr std::uint64_t kLargestSide = (std::uint64_t{1} << 31) - 1;

bool decodes(std::uint16_t compression) {
    constexpr std::array<std::uint16_t, 12> known{
        COMPRESSION_NONE,     COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4,
        COMPRESSION_LZW,      COMPRESSION_JPEG,     COMPRESSION_DEFLATE,   COMPRESSION_ADOBE_DEFLATE,
        COMPRESSION_PACKBITS, COMPRESSION_LZMA,     COMPRESSION_ZSTD,      COMPRESSION_WEBP};
    return std::find(known.begin(), known.end(), compression) != known.end() && TIFFIsCODECConfigured(compression) != 0;
}

std::optional<SampleType> typeOf(std::uint16_t format, size_t bits) {
    switch (format) {
    case SAMPLEFORMAT_UINT:
        if (bits <= 8) return SampleType::Unsigned8;
        if (bits == 16) return SampleType::Unsigned16;
        if (bits == 32) return SampleType::Unsigned32;
        return std::nullopt;
    case SAMPLEFORMAT_INT:
        if (bits == 8) return SampleType::Signed8;
        if (bits == 16) return SampleType::Signed16;
        if (bits == 32) return SampleType::Signed32;
        return std::nullopt;
    case SAMPLEFORMAT_IEEEFP:
        if (bits == 32) return SampleType::Float32;
        if (bits == 64) return SampleType::Float64;
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

// Palettes have 16 bits; the upper 8 are taken, or the lower 8 of palettes that have no others.
std::vector<std::uint8_t> paletteOf(TiffFile const& tiff, size_t bits, size_t bands) {
    std::array<std::uint16_t*, 3> maps{};
    if (TIFFGetField(tiff.get(), TIFFTAG_COLORMAP, maps.data(), &maps[1], &maps[2]) != 1) return {};
    size_t const count = size_t{1} << bits;
    std::uint16_t highest = 0;
    for (std::uint16_t const* const map : maps)
        highest = std::max(highest, *std::max_element(map, map + count));
    std::vector<std::uint8_t> palette;
    for (size_t i = 0; i < count; ++i)
        for (size_t band = 0; band < bands; ++band)
            palette.push_back(static_cast<std::uint8_t>(highest > 0xff ? maps[band][i] >> 8 : maps[band][i]));
    return palette;
}

// Whether the meaning of the bands is one that libtiff's bytes have.
bool isPlainMeaning(TiffFile const& tiff, TiffDirectory const& directory) {
    switch (directory.photometric) {
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
        return false;
    case PHOTOMETRIC_YCBCR: {
        if (directory.compression == COMPRESSION_JPEG) return true;
        std::array<std::uint16_t, 2> steps{};
        TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_YCBCRSUBSAMPLING, steps.data(), &steps[1]);
        return steps[0] == 1 && steps[1] == 1;
    }
    default:
        return true;
    }
}

bool setSamples(TiffFile const& tiff, TiffDirectory const& directory, TiffLayout& layout) {
    layout.bits = tiff.value<std::uint16_t>(TIFFTAG_BITSPERSAMPLE);
    layout.bands = tiff.value<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL);
    auto const type = typeOf(tiff.value<std::uint16_t>(TIFFTAG_SAMPLEFORMAT), layout.bits);
    bool const isWhole = layout.bits >= 8;
    bool const isPart = layout.bits == 1 || layout.bits == 2 || layout.bits == 4;
    if (!type || layout.bands == 0 || (!isWhole && !(isPart && layout.bands == 1))) return false;
    bool const isJpeg = directory.compression == COMPRESSION_JPEG || directory.compression == COMPRESSION_WEBP;
    if (isJpeg && layout.bits != 8) return false;

    SampleFormat& samples = layout.samples;
    samples.type = *type;
    samples.bands = layout.bands;
    samples.colours = directory.colourSpace.empty() ? directory.colourBands : 0;
    samples.alpha = directory.hasAlpha;
    layout.inverted = directory.photometric == PHOTOMETRIC_MINISWHITE;
    layout.toRgb = directory.photometric == PHOTOMETRIC_YCBCR && directory.compression == COMPRESSION_JPEG;
    if (layout.toRgb && (layout.bands != 3 || layout.planesApart)) return false;
    if (directory.photometric != PHOTOMETRIC_PALETTE) return samples.bands >= samples.colours;
    if (directory.roundsPalette || layout.bits > 8 || layout.bands != 1 || *type != SampleType::Unsigned8) return false;
    samples.bands = samples.colours;
    samples.alpha = false;
    layout.palette = paletteOf(tiff, layout.bits, samples.bands);
    return !layout.palette.empty();
}

bool setUnits(TiffFile const& tiff, TiffLayout& layout) {
    SampleFormat& samples = layout.samples;
    samples.width = tiff.value<std::uint32_t>(TIFFTAG_IMAGEWIDTH);
    samples.height = tiff.value<std::uint32_t>(TIFFTAG_IMAGELENGTH);
    layout.unit = {samples.width, std::min<size_t>(tiff.value<std::uint32_t>(TIFFTAG_ROWSPERSTRIP), samples.height)};
    if (layout.tiled)
        layout.unit = {tiff.value<std::uint32_t>(TIFFTAG_TILEWIDTH), tiff.value<std::uint32_t>(TIFFTAG_TILELENGTH)};
    for (size_t const side : {samples.width, samples.height, layout.unit.width, layout.unit.height})
        if (side == 0 || side > kLargestSide) return false;
    // At most, of the file and of what it becomes. Divisions, because products may overflow.
    std::uint64_t const pixelBytes = layout.bands * 8;
    if (layout.unit.height > kMostUnitBytes / pixelBytes / layout.unit.width) return false;
    layout.units = {(samples.width + layout.unit.width - 1) / layout.unit.width,
                    (samples.height + layout.unit.height - 1) / layout.unit.height};
    std::uint64_t const count =
        std::uint64_t{layout.units.width} * layout.units.height * (layout.planesApart ? layout.bands : 1);
    if (count > std::numeric_limits<std::uint32_t>::max()) return false;
    std::uint64_t const held = layout.tiled ? TIFFNumberOfTiles(tiff.get()) : TIFFNumberOfStrips(tiff.get());
    std::uint64_t const decoded = layout.tiled
                                      ? TIFFTileSize64(tiff.get())
                                      : TIFFVStripSize64(tiff.get(), static_cast<std::uint32_t>(layout.unit.height));
    return held == count && decoded == layout.rowBytes() * layout.unit.height;
}

template <class Sample>
void invert(Sample white, size_t bands, size_t pixels, std::uint8_t* samples) {
    for (size_t i = 0; i < pixels; ++i, samples += bands * sizeof(Sample)) {
        Sample value{};
        std::memcpy(&value, samples, sizeof value);
        value = static_cast<Sample>(white - value);
        std::memcpy(samples, &value, sizeof value);
    }
}

// The first band, which is grey.
void invertGrey(SampleFormat const& layout, size_t pixels, std::uint8_t* samples) {
    switch (layout.type) {
    case SampleType::Unsigned8:
    case SampleType::Signed8:
        return invert<std::uint8_t>(0xff, layout.bands, pixels, samples);
    case SampleType::Unsigned16:
        return invert<std::uint16_t>(0xffff, layout.bands, pixels, samples);
    case SampleType::Signed16:
        // Modulo 2^16, as for the others: the smallest sample has no counterpart.
        return invert<std::uint16_t>(0x7fff, layout.bands, pixels, samples);
    case SampleType::Unsigned32:
        return invert<std::uint32_t>(0xffffffff, layout.bands, pixels, samples);
    case SampleType::Signed32:
        return invert<std::uint32_t>(0x7fffffff, layout.bands, pixels, samples);
    case SampleType::Float32:
        return invert<float>(1, layout.bands, pixels, samples);
    case SampleType::Float64:
        return invert<double>(1, layout.bands, pixels, samples);
    }
}

} // namespace

std::optional<TiffLayout> TiffLayout::of(TiffFile const& tiff, TiffDirectory const& directory) {
    TiffLayout layout;
    layout.tiled = directory.tiled;
    layout.planesApart = tiff.value<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL) > 1 &&
                         tiff.value<std::uint16_t>(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    if (!decodes(directory.compression) || !isPlainMeaning(tiff, directory)) return std::nullopt;
    if (!setSamples(tiff, directory, layout)) return std::nullopt;
    if (layout.toRgb) TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (!setUnits(tiff, layout)) return std::nullopt;
    return layout;
}

void TiffLayout::expand(std::uint8_t const* decoded, size_t rows, size_t band, std::uint8_t* to) const {
    size_t const sampleBytes = bytesOf(samples.type);
    size_t const pixels = rows * unit.width;
    if (bits < 8 || !palette.empty()) {
        expandIndices(decoded, rows, to);
    } else if (planesApart) {
        std::uint8_t* next = to + band * sampleBytes;
        for (size_t i = 0; i < pixels; ++i, next += samples.pixelBytes())
            std::memcpy(next, decoded + i * sampleBytes, sampleBytes);
    } else {
        std::memcpy(to, decoded, pixels * samples.pixelBytes());
    }
    if (inverted && band == 0) invertGrey(samples, pixels, to);
}

// Numbers of at most 8 bits, of greys or of colours in the palette.
void TiffLayout::expandIndices(std::uint8_t const* decoded, size_t rows, std::uint8_t* to) const {
    unsigned const most = (1u << bits) - 1;
    for (size_t row = 0; row < rows; ++row)
        for (size_t x = 0; x < unit.width; ++x, to += samples.bands) {
            size_t const bit = x * bits;
            unsigned const index = decoded[row * rowBytes() + bit / 8] >> (8 - bits - bit % 8) & most;
            if (palette.empty())
                *to = static_cast<std::uint8_t>(index * (0xff / most));
            else
                std::copy_n(&palette[index * samples.bands], samples.bands, to);
        }
}

bool TiffLayout::operator==(TiffLayout const& other) const {
    auto const all = [](TiffLayout const& one) {
        return std::tie(one.samples.width, one.samples.height, one.samples.bands, one.samples.type, one.samples.colours,
                        one.samples.alpha, one.unit.width, one.unit.height, one.tiled, one.planesApart, one.inverted,
                        one.toRgb, one.bits, one.bands, one.palette);
    };
    return all(*this) == all(other);
}
