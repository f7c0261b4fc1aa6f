#include "tests/host/store/FormatPictures.h"

#include "host/ImageReader.h"

#include <vips/vips8>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

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
    if (name == "CmykJpeg") return image.colourspace(VIPS_INTERPRETATION_CMYK);
    if (name == "LabTiff") return image.colourspace(VIPS_INTERPRETATION_LAB);
    if (name == "FloatTiff") return image.cast(VIPS_FORMAT_FLOAT);
    if (name == "FaxTiff") return image.colourspace(VIPS_INTERPRETATION_B_W);
    if (name == "Radiance") return image.colourspace(VIPS_INTERPRETATION_scRGB);
    return image;
}

void convert(std::string const& from, Format const& format, std::string const& to) {
    if (VIPS_INIT("velmora-tests") != 0) throw std::runtime_error("libvips does not start");
    prepared(VImage::new_from_file(from.c_str()), format.name).write_to_file(to.c_str());
}

} // namespace

std::vector<Format> const& formatpictures::all() {
    static std::vector<Format> const formats = {
        {"ProgressiveJpeg", "flower.png.im_q85_420_progr.jpg", "", 3, 8},
        {"GreyJpeg", "flower.png.im_q85_gray.jpg", "", 1, 8},
        {"JpegOfSeparateScans", "flower_small.q85_444_non_interleaved.jpg", "", 3, 8},
        {"Retina", "retina.jpg", "", 3, 8},
        {"DeepField", "hubble_deep_field.jpg", "", 3, 8},
        {"CmykJpeg", kRgb, ".jpg", 3, 8},

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
        {"FloatTiff", kRgb, ".tif", 3, 8},
        {"LabTiff", kRgb, ".tif", 3, 8},

        {"Jp2", "nemo.jp2", "", 3, 8},
        {"J2kCodestream", "goodstuff.j2k", "", 3, 8},
        {"TiledJp2Of16Bits", kRgb16, ".jp2[lossless,tile-width=128,tile-height=128]", 3, 16},

        {"JpegXl", "splines.jxl", "", 3, 8},
        {"GreyJpegXl16", "pq_gradient.jxl", "", 1, 16},
        {"JpegXlWithAlpha", "cropped_traffic_light.jxl", "", 4, 8},
        {"JpegXlPhotograph", kRgb, ".jxl[Q=80]", 3, 8},

        {"Gif", "animation_patches.gif", "", 3, 8},
        {"GifWithAlpha", "traffic_light.gif", "", 4, 8},

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
        {"FloatPfm", "splines.pfm", "", 3, 8},

        {"Fits16", "multi.fits", "", 1, 16},
        {"SpectrographFits16", "thar5s.fit", "", 1, 16},
        {"SignedFits", "simple.fits", "", 1, 8},
        {"FloatFits", "vimos.fits", "", 1, 8},
        {"UnsignedFits32", "NOT.fits", "", 1, 8},
        {"SignedFits32", "image_M12c.fits", "", 1, 8},
        {"FitsOf17Planes", "VISIR.2004-09-30T03c17c49.095.fits", "", 3, 8},
        {"FitsOfOneRow", "xspectr.fits", "", 1, 8},

        {"Webp", kRgb, ".webp[Q=80]", 3, 8},
        {"LosslessWebpWithAlpha", kRgba, ".webp[lossless]", 4, 8},
        {"Avif", kRgb, ".avif[Q=60]", 3, 8},
        {"Bmp", kRgb, ".bmp", 3, 8},
        {"Radiance", kRgb, ".hdr", 3, 8},
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

std::unique_ptr<PixelSource> formatpictures::open(std::string const& path) {
    return std::make_unique<ImageReader>(path, ImageReader::Samples::kAsStored);
}

Picture formatpictures::middleOf(std::string const& path, std::size_t side) {
    auto const source = open(path);
    std::size_t const width = std::min(source->width(), side);
    std::size_t const height = std::min(source->height(), side);
    Picture picture{width, height, source->bands(), 8 * source->sampleBytes(), {}};
    source->read({(source->width() - width) / 2, (source->height() - height) / 2, width, height}, picture.bytes);
    return picture;
}
