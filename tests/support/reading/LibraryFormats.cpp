// PNG, JPEG and TIFF by libpng, libjpeg and libtiff.
#include "tests/support/reading/FileSamples.h"

#include <tiffio.h>

#include <png.h>

// after stdio.h, which it needs and does not include
#include <cstdio>
#include <jpeglib.h>

#include <array>
#include <cstring>
#include <memory>
#include <stdexcept>

using filesamples::Bytes;
using filesamples::Samples;

namespace {

using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

File open(std::string const& path) {
    File file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) throw std::runtime_error("no file " + path);
    return file;
}

// A sample of 1 to 16 bits in a row; 16-bit samples are big-endian.
unsigned packed(std::uint8_t const* row, size_t index, unsigned bits) {
    if (bits == 16) return 256u * row[2 * index] + row[2 * index + 1];
    size_t const bit = index * bits;
    return (row[bit / 8] >> (8 - bits - bit % 8)) & ((1u << bits) - 1);
}

[[noreturn]] void failPng(png_structp, png_const_charp message) {
    throw std::runtime_error(message);
}

struct Png {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, failPng, nullptr);
    png_infop info = png_create_info_struct(png);
    Png() = default;
    Png(Png const&) = delete;
    Png& operator=(Png const&) = delete;
    ~Png() { png_destroy_read_struct(&png, &info, nullptr); }
};

struct Transparency {
    png_bytep alphas = nullptr; // for a palette
    int count = 0;
    png_color_16p colour = nullptr; // the transparent colour of a picture without a palette
    bool any = false;
};

[[noreturn]] void failJpeg(j_common_ptr jpeg) {
    std::array<char, JMSG_LENGTH_MAX> text{};
    (*jpeg->err->format_message)(jpeg, text.data());
    throw std::runtime_error(text.data());
}

template <class Value>
Value field(TIFF* tiff, std::uint32_t tag) {
    Value value{};
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

// A sample in the machine's byte order.
double tiffSample(std::uint8_t const* samples, size_t index, unsigned bits, unsigned format) {
    if (bits < 8) return packed(samples, index, bits) * 255.0 / ((1 << bits) - 1);
    auto const as = [&](auto value) {
        std::memcpy(&value, samples + index * sizeof(value), sizeof(value));
        return static_cast<double>(value);
    };
    bool const isSigned = format == SAMPLEFORMAT_INT;
    if (format == SAMPLEFORMAT_IEEEFP) return bits == 32 ? as(float{}) : as(double{});
    if (bits == 8) return isSigned ? as(std::int8_t{}) : as(std::uint8_t{});
    if (bits == 16) return isSigned ? as(std::int16_t{}) : as(std::uint16_t{});
    return isSigned ? as(std::int32_t{}) : as(std::uint32_t{});
}

// Rows of a strip, or of a row of tiles, one after the other.
void readTiles(TIFF* tiff, Samples& samples, unsigned bits, unsigned format) {
    auto const tileWidth = field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH);
    auto const tileHeight = field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH);
    Bytes tile(static_cast<size_t>(TIFFTileSize(tiff)));
    for (std::uint32_t y0 = 0; y0 < samples.height; y0 += tileHeight)
        for (std::uint32_t x0 = 0; x0 < samples.width; x0 += tileWidth) {
            if (TIFFReadTile(tiff, tile.data(), x0, y0, 0, 0) < 0) throw std::runtime_error("a tile cannot be read");
            for (size_t y = y0; y < std::min<size_t>(y0 + tileHeight, samples.height); ++y)
                for (size_t x = x0; x < std::min<size_t>(x0 + tileWidth, samples.width); ++x)
                    for (size_t band = 0; band < samples.bands; ++band)
                        samples.values[(y * samples.width + x) * samples.bands + band] = tiffSample(
                            tile.data(), ((y - y0) * tileWidth + x - x0) * samples.bands + band, bits, format);
        }
}

void readRows(TIFF* tiff, Samples& samples, unsigned bits, unsigned format) {
    bool const apart = field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    Bytes row(static_cast<size_t>(TIFFScanlineSize(tiff)));
    for (size_t plane = 0; plane < (apart ? samples.bands : 1); ++plane)
        for (size_t y = 0; y < samples.height; ++y) {
            auto const line = static_cast<std::uint32_t>(y);
            if (TIFFReadScanline(tiff, row.data(), line, static_cast<std::uint16_t>(plane)) < 0)
                throw std::runtime_error("a row cannot be read");
            for (size_t i = 0; i < samples.width * (apart ? 1 : samples.bands); ++i)
                samples.values[apart ? (y * samples.width + i) * samples.bands + plane
                                     : y * samples.width * samples.bands + i] = tiffSample(row.data(), i, bits, format);
        }
}

} // namespace

Samples filesamples::readPng(std::string const& path) {
    File const file = open(path);
    Png const png;
    png_init_io(png.png, file.get());
    png_set_user_limits(png.png, 10000000, 10000000);
    png_read_png(png.png, png.info, PNG_TRANSFORM_IDENTITY, nullptr);
    Samples samples{png_get_image_width(png.png, png.info), png_get_image_height(png.png, png.info), 0, {}};
    unsigned const bits = png_get_bit_depth(png.png, png.info);
    unsigned const type = png_get_color_type(png.png, png.info);
    png_colorp palette = nullptr;
    int paletteSize = 0;
    png_get_PLTE(png.png, png.info, &palette, &paletteSize);
    Transparency clear;
    clear.any = png_get_tRNS(png.png, png.info, &clear.alphas, &clear.count, &clear.colour) != 0;
    bool const indexed = type == PNG_COLOR_TYPE_PALETTE;
    size_t const held = png_get_channels(png.png, png.info);
    samples.bands = (indexed ? 3 : held) + (clear.any ? 1 : 0);
    double const expand = bits < 8 ? 255.0 / ((1 << bits) - 1) : 1;
    double const opaque = bits == 16 ? 65535 : 255;
    for (size_t y = 0; y < samples.height; ++y) {
        std::uint8_t const* const row = png_get_rows(png.png, png.info)[y];
        for (size_t x = 0; x < samples.width; ++x) {
            if (indexed) {
                unsigned const index = packed(row, x, bits);
                png_color const colour = palette[index];
                samples.values.insert(samples.values.end(),
                                      {double(colour.red), double(colour.green), double(colour.blue)});
                if (clear.any)
                    samples.values.push_back(static_cast<int>(index) < clear.count ? clear.alphas[index] : opaque);
                continue;
            }
            bool isClear = clear.any;
            for (size_t band = 0; band < held; ++band) {
                unsigned const value = packed(row, x * held + band, bits);
                samples.values.push_back(value * expand);
                if (!clear.any) continue;
                std::array<unsigned, 3> const colour{clear.colour->red, clear.colour->green, clear.colour->blue};
                isClear = isClear && value == (held == 1 ? clear.colour->gray : colour[band]);
            }
            if (clear.any) samples.values.push_back(isClear ? 0 : opaque);
        }
    }
    return samples;
}

Samples filesamples::readJpeg(std::string const& path) {
    File const file = open(path);
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    errors.error_exit = failJpeg;
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    Samples samples{jpeg.output_width, jpeg.output_height, static_cast<size_t>(jpeg.output_components), {}};
    // Adobe's inks are inverted: 255 is none.
    bool const inverted = jpeg.out_color_space == JCS_CMYK && jpeg.saw_Adobe_marker != 0;
    Bytes row(samples.width * samples.bands);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW rows = row.data();
        jpeg_read_scanlines(&jpeg, &rows, 1);
        for (auto const sample : row)
            samples.values.push_back(inverted ? 255 - sample : sample);
    }
    jpeg_destroy_decompress(&jpeg);
    return samples;
}

Samples filesamples::readTiff(std::string const& path, size_t page) {
    std::unique_ptr<TIFF, decltype(&TIFFClose)> const file(TIFFOpen(path.c_str(), "r"), TIFFClose);
    if (!file || TIFFSetDirectory(file.get(), static_cast<tdir_t>(page - 1)) != 1)
        throw std::runtime_error("no page of " + path);
    TIFF* const tiff = file.get();
    if (field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION) == COMPRESSION_JPEG)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    Samples samples{field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH),
                    field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH),
                    field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL),
                    {}};
    samples.values.resize(samples.width * samples.height * samples.bands);
    unsigned const bits = field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE);
    unsigned const format = field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT);
    if (TIFFIsTiled(tiff) != 0)
        readTiles(tiff, samples, bits, format);
    else
        readRows(tiff, samples, bits, format);
    // Samples are inverted if 0 is white.
    if (field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_MINISWHITE)
        for (double& value : samples.values)
            value = (bits == 16 ? 65535 : 255) - value;
    return samples;
}
