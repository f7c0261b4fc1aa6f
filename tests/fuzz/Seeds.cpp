// velmora-fuzz-seeds FOLDER: writes the seeds that are stores, FOLDER/store-file/*.vlm, and pictures,
// FOLDER/tiff-pyramid/*.tif and FOLDER/tiff-tags/*.tif.
#include "tests/fuzz/FuzzStores.h"
#include "tests/host/image/RawTiff.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TestTiff.h"

#include <tiffio.h>

#include <cstdio>
#include <filesystem>

namespace {

using testtiff::Directory;

Directory level(std::uint32_t width, std::uint32_t height, std::uint16_t bands, std::uint16_t compression) {
    std::vector<std::uint8_t> samples(size_t{width} * height * bands);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::uint8_t>(i / bands + i % bands * 60);
    Directory made = testtiff::directory(width, height, bands, samples);
    made.tile = 16;
    made.compression = compression;
    return made;
}

Directory reduced(std::uint32_t width, std::uint32_t height, std::uint16_t bands, std::uint16_t compression) {
    Directory made = level(width, height, bands, compression);
    made.subfileType = FILETYPE_REDUCEDIMAGE;
    return made;
}

void writePictures(std::filesystem::path const& folder) {
    std::filesystem::create_directories(folder);
    auto const write = [&](char const* name, std::vector<Directory> const& directories, char const* mode) {
        testtiff::write((folder / name).string(), directories, mode);
    };
    write("lzw.tif", {level(40, 30, 1, COMPRESSION_LZW), reduced(20, 15, 1, COMPRESSION_LZW)}, "w");
    write("deflateBig.tif", {level(40, 30, 3, COMPRESSION_ADOBE_DEFLATE), reduced(10, 8, 3, COMPRESSION_PACKBITS)},
          "wb8");
    Directory colours = level(40, 30, 3, COMPRESSION_JPEG);
    colours.photometric = PHOTOMETRIC_YCBCR;
    colours.subsampled = true;
    write("jpeg.tif", {colours}, "w");
    write("webpAndZstd.tif", {level(20, 30, 3, COMPRESSION_WEBP), reduced(10, 15, 3, COMPRESSION_ZSTD)}, "w");
    Directory apart = level(20, 16, 3, COMPRESSION_NONE);
    apart.planesApart = true;
    apart.tile = 0;
    apart.rowsPerStrip = 5;
    apart.subDirectories = 1;
    apart.nodata = "7";
    write("planes.tif", {apart, reduced(10, 8, 3, COMPRESSION_NONE)}, "w");
    Directory palette = level(24, 10, 1, COMPRESSION_NONE);
    palette.bits = 4;
    palette.bytes.resize(12 * 10);
    palette.photometric = PHOTOMETRIC_PALETTE;
    for (std::uint16_t i = 0; i < 48; ++i)
        palette.palette.push_back(static_cast<std::uint16_t>(i * 1000));
    write("palette.tif", {palette}, "w8");
    std::vector<Directory> stack;
    for (size_t page = 0; page < 4; ++page) {
        stack.push_back(level(24, 20, 1, COMPRESSION_NONE));
        stack.back().subDirectories = 1;
        stack.push_back(reduced(12, 10, 1, COMPRESSION_NONE));
    }
    stack.front().description =
        R"(<OME UUID="a"><Image><Pixels DimensionOrder="XYCZT" SizeC="2" SizeZ="2" SizeT="1">)"
        R"(<Channel Name="DAPI" Color="65535"/><Channel/><TiffData IFD="0" PlaneCount="3"><UUID>a</UUID></TiffData>)"
        R"(<TiffData FirstC="1" FirstZ="1" IFD="3"/></Pixels></Image></OME>)";
    write("ome.tif", stack, "w");
    stack.front().description = "ImageJ=1\nchannels=2\nslices=1\nframes=2\n";
    write("imagej.tif", stack, "w8");
    Directory photograph = level(24, 20, 3, COMPRESSION_NONE);
    photograph.orientation = ORIENTATION_RIGHTTOP;
    photograph.iccProfile = testprofiles::exchanged("Turned round");
    write("profile.tif", {photograph, reduced(12, 10, 3, COMPRESSION_NONE)}, "w");
}

void writeTags(std::filesystem::path const& folder) {
    std::filesystem::create_directories(folder);
    rawtiff::Directory directory;
    directory.tags[270] = rawtiff::text("a description");
    directory.tags[282] = {5, {72, 1}};
    directory.tags[296] = {3, {2}};
    directory.tags[33550] = rawtiff::doubles({30, 30, 0});
    directory.tags[65000] = {7, {1, 2, 3, 4, 5}};
    directory.inner[34665].tags[33434] = {5, {1, 125}};
    directory.inner[34665].inner[40965].tags[1] = rawtiff::text("R98");
    directory.inner[34853].tags[1] = rawtiff::text("N");
    for (bool const bigEndian : {false, true})
        for (bool const big : {false, true})
            rawtiff::write(
                (folder / (std::string(bigEndian ? "bigEndian" : "littleEndian") + (big ? "Big.tif" : ".tif")))
                    .string(),
                rawtiff::structure(directory, {bigEndian, big}));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: velmora-fuzz-seeds FOLDER\n", stderr);
        return 2;
    }
    std::filesystem::path const folder = std::filesystem::path(argv[1]) / "store-file";
    std::filesystem::create_directories(folder);
    for (size_t which = 0; which < fuzzstores::kValid; ++which)
        writeFile((folder / ("valid" + std::to_string(which) + ".vlm")).string(), fuzzstores::valid(which));
    writePictures(std::filesystem::path(argv[1]) / "tiff-pyramid");
    writeTags(std::filesystem::path(argv[1]) / "tiff-tags");
    return 0;
}
