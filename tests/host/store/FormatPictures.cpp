#include "tests/host/store/FormatPictures.h"

#include "host/image/ImageReader.h"
#include "tests/support/TemporaryFolder.h"

#include <vips/vips8>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

using formatpictures::Choice;
using formatpictures::Format;
using formatpictures::Located;
using testpictures::Picture;
using vips::VImage;

namespace {

constexpr char const* kRgb = "flower_small.rgb.depth8.ppm";
constexpr char const* kRgb16 = "flower_small.rgb.depth16.ppm";
constexpr char const* kGrey16 = "flower_small.g.depth16.pgm";
constexpr char const* kRgba = "flower_small.rgba.depth8.pam";

// Samples that a file of the ending is to hold, where they are not those of the picture it is made of.
VImage prepared(VImage const& image, std::string const& name) {
    if (name == "CmykJpeg" || name == "InksOfCmykJpeg") return image.colourspace(VIPS_INTERPRETATION_CMYK);
    if (name == "LabTiff") return image.colourspace(VIPS_INTERPRETATION_LAB);
    if (name == "FloatTiff") return image.cast(VIPS_FORMAT_FLOAT);
    if (name == "FaxTiff") return image.colourspace(VIPS_INTERPRETATION_B_W);
    if (name == "Radiance" || name == "LightOfRadiance") return image.colourspace(VIPS_INTERPRETATION_scRGB);
    return image;
}

// Read without libvips, in which the product has blocked unneeded loaders.
VImage imageOf(std::string const& path) {
    filesamples::Samples const samples = filesamples::read(path);
    bool const wide = path.find("depth16") != std::string::npos;
    std::vector<std::uint8_t> bytes(samples.values.begin(), samples.values.end());
    std::vector<std::uint16_t> const words(samples.values.begin(), samples.values.end());
    if (wide) {
        bytes.resize(2 * words.size());
        std::memcpy(bytes.data(), words.data(), bytes.size());
    }
    VipsInterpretation const grey = wide ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W;
    VipsInterpretation const colour = wide ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB;
    return VImage::new_from_memory(bytes.data(), bytes.size(), static_cast<int>(samples.width),
                                   static_cast<int>(samples.height), static_cast<int>(samples.bands),
                                   wide ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", static_cast<int>(samples.bands < 3 ? grey : colour)))
        .copy_memory();
}

// libvips cannot write this format.
void writeBmp(std::string const& from, std::string const& to) {
    filesamples::Samples const samples = filesamples::read(from);
    size_t const rowBytes = (3 * samples.width + 3) / 4 * 4;
    std::string file = "BM" + std::string(52, '\0');
    auto const put = [&](size_t at, size_t bytes, size_t value) {
        for (size_t i = 0; i < bytes; ++i)
            file[at + i] = static_cast<char>(value >> (8 * i));
    };
    put(2, 4, file.size() + rowBytes * samples.height);
    put(10, 4, file.size());
    put(14, 4, 40);
    put(18, 4, samples.width);
    put(22, 4, samples.height);
    put(26, 2, 1);
    put(28, 2, 24);
    for (size_t y = samples.height; y-- > 0;) {
        std::string row;
        for (size_t x = 0; x < samples.width; ++x)
            for (size_t const band : {2U, 1U, 0U})
                row += static_cast<char>(samples.values[(y * samples.width + x) * 3 + band]);
        row.resize(rowBytes);
        file += row;
    }
    writeFile(to, file);
}

void convert(std::string const& from, Format const& format, std::string const& to) {
    if (std::string(format.ending) == ".bmp") return writeBmp(from, to);
    if (VIPS_INIT("velmora-tests") != 0) throw std::runtime_error("libvips does not start");
    prepared(imageOf(from), format.name).write_to_file(to.c_str());
}

ImageSelection selectionOf(Choice const& choice) {
    ImageSelection selection;
    if (choice.page > 0) selection.page = choice.page;
    if (*choice.bands != '\0') selection.bands = imageselection::parseBands(choice.bands);
    if (*choice.range != '\0') imageselection::parseRange(choice.range, selection);
    selection.toSrgb = *choice.converted != '\0';
    return selection;
}

std::unique_ptr<PixelSource> openAs(ImageReader::Samples samples, std::string const& path, Choice const& choice) {
    ImageReader::Options options;
    options.samples = samples;
    options.selection = selectionOf(choice);
    options.lossless = true;
    return std::make_unique<ImageReader>(path, options);
}

} // namespace

std::vector<Format> const& formatpictures::all() {
    static std::vector<Format> const formats = {
        {"ProgressiveJpeg", "flower.png.im_q85_420_progr.jpg", "", 3, 8},
        {"GreyJpeg", "flower.png.im_q85_gray.jpg", "", 1, 8},
        {"JpegOfSeparateScans", "flower_small.q85_444_non_interleaved.jpg", "", 3, 8},
        {"Retina", "retina.jpg", "", 3, 8},
        {"DeepField", "hubble_deep_field.jpg", "", 3, 8},
        {"CmykJpeg", kRgb, ".jpg", 3, 8, {0, "", "", "an ICC profile of libvips says what inks look like"}},
        {"InksOfCmykJpeg", kRgb, ".jpg", 3, 8, {0, "4,1,2"}},

        {"Tissue", "ihc.png", "", 3, 8},
        {"Portrait", "astronaut.png", "", 3, 8},
        {"Cell", "cell.png", "", 1, 8},
        {"RgbaPng", "flower_alpha.png", "", 4, 8},
        {"Logo", "logo.png", "", 4, 8},
        {"GreyPatches", "grayscale_patches.png", "", 1, 8},
        {"Rgb16Png", "hdr_room.png", "", 3, 16},
        {"Chessboard16Png", "chessboard_RGB.png", "", 3, 16},
        {"BilevelPng", "checker_bilevel.png", "", 1, 8},
        {"FourBitPng", "ct1n0g04.png", "", 1, 8},
        {"PalettePng", "palette_color.png", "", 3, 8},
        {"FourBitPalettePng", "g10n3p04.png", "", 3, 8},
        {"PaletteAndAlphaPng", "foo3x5x4indexed.png", "", 4, 8},
        {"InterlacedPng16", kRgb16, ".png[interlace]", 3, 16},

        {"SatelliteTiff", "cbers_rgb342_crop3.tif", "", 3, 8},
        {"GreySatelliteTiff", "cbers2b_hrc_crop.tif", "", 1, 8},
        {"NatureTiff", "nat1.tif", "", 1, 8},
        {"BigEndianTiff16", "chessboard_GRAY_U16B.tif", "", 1, 16},
        {"BigTiffOfTilesOfJpeg", kRgb, ".tif[bigtiff,tile,pyramid,compression=jpeg]", 3, 8},
        {"LzwTiff16", kRgb16, ".tif[compression=lzw,predictor=horizontal]", 3, 16},
        {"ZstdTiff", kRgba, ".tif[compression=zstd]", 4, 8},
        {"PackbitsTiff16", kGrey16, ".tif[compression=packbits]", 1, 16},
        {"FaxTiff", kRgb, ".tif[bitdepth=1,compression=ccittfax4]", 1, 8},
        {"FloatTiff", kRgb, ".tif", 3, 16, {0, "", "0,255"}},
        {"LabTiff",
         kRgb,
         ".tif",
         3,
         8,
         {0, "", "", "colours are rounded on their way: ImageReaderTest has the formulas"}},

        {"Jp2", "nemo.jp2", "", 3, 8},
        {"J2kCodestream", "goodstuff.j2k", "", 3, 8},
        {"TiledJp2Of16Bits", kRgb16, ".jp2[lossless,tile-width=128,tile-height=128]", 3, 16},

        {"JpegXl", "splines.jxl", "", 3, 8},
        {"GreyJpegXl16", "pq_gradient.jxl", "", 1, 16},
        {"JpegXlWithAlpha", "cropped_traffic_light.jxl", "", 4, 8, {1}},
        {"LastFrameOfJpegXl", "cropped_traffic_light.jxl", "", 4, 8, {4}},
        {"JpegXlPhotograph", kRgb, ".jxl[Q=80]", 3, 8},

        {"Gif", "animation_patches.gif", "", 3, 8, {1}},
        {"GifWithAlpha", "traffic_light.gif", "", 4, 8, {1}},

        {"Pgm1", "flower_small.g.depth1.pgm", "", 1, 8},
        {"Pgm12", "flower_small.g.depth12.pgm", "", 1, 16},
        {"Pgm16", "flower_small.g.depth16.pgm", "", 1, 16},
        {"Ppm8", "flower_small.rgb.depth8.ppm", "", 3, 8},
        {"Ppm10", "flower_small.rgb.depth10.ppm", "", 3, 16},
        {"Ppm16", "flower_small.rgb.depth16.ppm", "", 3, 16},
        {"PamOfGreyAndAlpha", "flower_small.ga.depth8.pam", "", 2, 8},
        {"PamOfGreyAndAlpha12", "flower_small.ga.depth12.pam", "", 2, 16},
        {"PamRgba", "flower_small.rgba.depth8.pam", "", 4, 8},
        {"PamRgba12", "flower_small.rgba.depth12.pam", "", 4, 16},
        {"FloatPfm", "splines.pfm", "", 3, 16, {0, "", "auto"}},

        {"Fits16", "multi.fits", "", 1, 16, {1}},
        {"LastExtensionOfFits", "multi.fits", "", 1, 16, {3}},
        {"SpectrographFits16", "thar5s.fit", "", 1, 16},
        {"SignedFits", "simple.fits", "", 1, 16, {0, "", "auto"}},
        {"FloatFits", "vimos.fits", "", 1, 16, {1, "", "auto"}},
        {"UnsignedFits32", "NOT.fits", "", 1, 16, {0, "", "9899,124172"}},
        {"SignedFits32", "image_M12c.fits", "", 1, 16, {0, "", "-10,190"}},
        {"FitsOf17Planes", "VISIR.2004-09-30T03c17c49.095.fits", "", 3, 16, {0, "17,4,2", "-40.5,1000"}},
        {"FitsOfOneRow", "xspectr.fits", "", 1, 16, {0, "", "auto"}},

        {"Webp", kRgb, ".webp[Q=80]", 3, 8},
        {"LosslessWebpWithAlpha", kRgba, ".webp[lossless]", 4, 8},
        {"Avif", kRgb, ".avif[Q=60]", 3, 8},
        {"Bmp", kRgb, ".bmp", 3, 8},
        {"Radiance", kRgb, ".hdr", 3, 8, {0, "", "", "light is rounded on its way: ImageReaderTest has the formula"}},
        {"LightOfRadiance", kRgb, ".hdr", 3, 16, {0, "", "0,1"}},
        {"Vips16", kRgb16, ".v", 3, 16},
    };
    return formats;
}

void formatpictures::PrintTo(Format const& format, std::ostream* out) {
    *out << format.file << format.ending;
}

Located formatpictures::locate(Format const& format, std::string const& folder) {
    std::filesystem::path const collected = std::filesystem::path(VELMORA_FORMAT_PICTURES) / format.file;
    if (!std::filesystem::exists(collected))
        return {"", collected.string() + " is missing: scripts/fetch-format-pictures fetches it"};
    std::string const ending = format.ending;
    if (ending.empty()) return {collected.string(), ""};
    std::string const path = (std::filesystem::path(folder) / format.name).string();
    convert(collected.string(), format, path + ending);
    return {path + ending.substr(0, ending.find('[')), ""};
}

bool formatpictures::areRequired() {
    return std::getenv("VELMORA_REQUIRE_PHOTOGRAPHS") != nullptr;
}

std::unique_ptr<PixelSource> formatpictures::open(std::string const& path, Choice const& choice) {
    return openAs(ImageReader::Samples::kAsStored, path, choice);
}

std::unique_ptr<PixelSource> formatpictures::openAsShown(std::string const& path, Choice const& choice) {
    return openAs(ImageReader::Samples::kEightBits, path, choice);
}

Picture formatpictures::middleOf(std::string const& path, size_t side, Choice const& choice) {
    auto const source = open(path, choice);
    size_t const width = std::min(source->width(), side);
    size_t const height = std::min(source->height(), side);
    Picture picture{width, height, source->bands(), 8 * source->sampleBytes(), {}};
    source->read({(source->width() - width) / 2, (source->height() - height) / 2, width, height}, picture.bytes);
    return picture;
}

filesamples::Samples formatpictures::expected(std::string const& path, Choice const& choice) {
    ImageSelection const selection = selectionOf(choice);
    filesamples::Samples const whole = filesamples::read(path, selection.page.value_or(1));
    filesamples::Samples const samples = filesamples::withBands(whole, selection.bands);
    if (selection.automaticRange)
        return filesamples::scaled(samples, filesamples::smallest(samples), filesamples::largest(samples));
    return selection.range ? filesamples::scaled(samples, selection.range->low, selection.range->high) : samples;
}
