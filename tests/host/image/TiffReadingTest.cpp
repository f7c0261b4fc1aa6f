// Pages and layouts of TIFF files: each is written here with libtiff, and samples are compared with those of a reader
// that is independent of the product.
#include "tests/host/image/TiffFixture.h"

#include <tiffio.h>

using testtiff::Directory;
using testtiff::directory;

namespace {

class TiffReadingTest : public TiffFixture {};

} // namespace

TEST_F(TiffReadingTest, SamplesAreTheFilesInStripsAndTilesAndPlanes) {
    Directory strips = directory(70, 50, 3, bytes(10500));
    strips.rowsPerStrip = 7;
    Directory tiles = strips;
    tiles.tile = 16;
    Directory apart = strips;
    apart.planesApart = true;
    for (std::string const mode : {"w", "w8", "wb"})
        for (Directory const& one : {strips, tiles, apart}) {
            write({one}, mode);
            expectOwnSamples(tiff_);
        }
}

TEST_F(TiffReadingTest, SixteenBitsOfEitherByteOrderAreTheFiles) {
    std::vector<std::uint16_t> samples(12);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::uint16_t>(5003 * i + 7);
    for (std::string const mode : {"wl", "wb"}) {
        write({directory(2, 2, 3, samples)}, mode);
        EXPECT_EQ(valuesOf(tiff_), std::vector<double>(samples.begin(), samples.end())) << mode;
    }
}

TEST_F(TiffReadingTest, SeveralPagesAreRefusedAndEachIsTaken) {
    write({grey(8, 1), grey(9, 2), grey(10, 3)});
    EXPECT_EQ(refusal(tiff_), "'" + tiff_ + "' holds 3 pages; one of them is taken: choose --page N (1 to 3)");
    for (size_t page = 1; page <= 3; ++page) {
        expectOwnSamples(tiff_, withPage(page), page);
        EXPECT_EQ(ImageReader(tiff_, withPage(page)).selection().text, "page " + std::to_string(page) + " of 3");
    }
    EXPECT_EQ(misuse(tiff_, withPage(4)), "'" + tiff_ + "' holds 3 pages; --page is 1 to 3");
    EXPECT_EQ(misuse(tiff_, withPage(0)), "'" + tiff_ + "' holds 3 pages; --page is 1 to 3");
}

TEST_F(TiffReadingTest, APageThatThereIsAloneNeedNotBeChosen) {
    write({grey(8)});
    expectOwnSamples(tiff_);
    expectOwnSamples(tiff_, withPage(1));
    EXPECT_EQ(ImageReader(tiff_, withPage(1)).selection().text, "");
    EXPECT_EQ(misuse(tiff_, withPage(2)), "'" + tiff_ + "' holds one picture; --page is 1");
}

TEST_F(TiffReadingTest, SmallerCopiesAreNoPages) {
    Directory half = grey(8, 100);
    half.subfileType = FILETYPE_REDUCEDIMAGE;
    write({grey(16), half});
    expectOwnSamples(tiff_);
    // The full picture need not be the first.
    write({half, grey(16)});
    expectOwnSamples(tiff_, lossless(), 2);
    write({half, grey(16), half, grey(17)});
    EXPECT_TRUE(has(refusal(tiff_), "2 pages"));
    expectOwnSamples(tiff_, withPage(1), 2);
    expectOwnSamples(tiff_, withPage(2), 4);
}

TEST_F(TiffReadingTest, MasksArePages) {
    Directory mask = grey(16, 9);
    mask.subfileType = FILETYPE_MASK;
    write({grey(16), mask});
    EXPECT_TRUE(has(refusal(tiff_), "2 pages"));
}

TEST_F(TiffReadingTest, CopiesBelowADirectoryAreNoPages) {
    Directory full = grey(16);
    full.subDirectories = 1;
    Directory half = grey(8);
    half.subfileType = FILETYPE_REDUCEDIMAGE;
    write({full, half});
    expectOwnSamples(tiff_);
}

TEST_F(TiffReadingTest, PreviewsOfAPictureThatIsNotFoundAreRefused) {
    Directory preview = grey(8);
    preview.subfileType = FILETYPE_REDUCEDIMAGE;
    preview.subDirectories = 1;
    write({preview, grey(16)});
    EXPECT_TRUE(has(refusal(tiff_), "previews"));
    // Without sub-directories it is the only picture.
    preview.subDirectories = 0;
    write({preview});
    expectOwnSamples(tiff_);
}

// Descriptions in XML are for programs.
TEST_F(TiffReadingTest, TagsSayHowThePictureWasMade) {
    Directory made = grey(8);
    made.description = "a cell";
    made.software = "Microscope 2";
    write({made});
    EXPECT_EQ(propertiesOf(tiff_), (std::vector<std::string>{"software: Microscope 2", "description: a cell"}));
    made.description = "<OME/>";
    made.software.clear();
    write({made});
    EXPECT_TRUE(propertiesOf(tiff_).empty());
}

TEST_F(TiffReadingTest, AnotherOrientationIsTold) {
    Directory turned = grey(8);
    turned.orientation = ORIENTATION_RIGHTTOP;
    write({turned});
    expectOwnSamples(tiff_);
    EXPECT_EQ(ImageReader(tiff_, lossless()).notes(),
              std::vector<std::string>{"'" + tiff_ +
                                       "' asks to be turned or mirrored (orientation 6); its pixels are taken as they "
                                       "lie in the file"});
    turned.orientation = ORIENTATION_TOPLEFT;
    write({turned});
    EXPECT_TRUE(ImageReader(tiff_, lossless()).notes().empty());
}

TEST_F(TiffReadingTest, MoreThanTheFileHoldsIsRefusedBeforeItIsRead) {
    struct Case {
        std::uint16_t compression;
        std::uint32_t width; // wider than the file can hold
    };
    for (Case const& one : {Case{COMPRESSION_NONE, 90000}, Case{COMPRESSION_PACKBITS, 900000},
                            Case{COMPRESSION_LZW, 9000000}, Case{COMPRESSION_ADOBE_DEFLATE, 9000000}}) {
        Directory picture = grey(8);
        picture.compression = one.compression;
        write({picture});
        // Its header states another width.
        std::string file = readFile(tiff_);
        size_t entry = file.find(std::string("\x00\x01\x04\x00\x01\x00\x00\x00", 8));
        if (entry == std::string::npos) entry = file.find(std::string("\x00\x01\x03\x00\x01\x00\x00\x00", 8));
        ASSERT_NE(entry, std::string::npos);
        file[entry + 2] = 4;
        for (size_t i = 0; i < 4; ++i)
            file[entry + 8 + i] = static_cast<char>(one.width >> (8 * i));
        writeFile(tiff_, file);
        EXPECT_TRUE(has(refusal(tiff_), std::to_string(one.width) + " x 8 pixels, which are more than the file holds"))
            << refusal(tiff_);
    }
}

TEST_F(TiffReadingTest, PagesBesideAStackAreTold) {
    Directory page = grey(5);
    page.description =
        R"(<?xml version="1.0"?><OME><Image><Pixels DimensionOrder="XYCZT" SizeC="2" SizeZ="1" SizeT="1">)"
        R"(<TiffData/></Pixels></Image></OME>)";
    write({page, grey(5, 9), grey(5, 11)});
    Options options = lossless();
    options.anySamples = true;
    auto const notes = ImageReader(tiff_, options).notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_TRUE(has(notes[0], "has 3 pages, of which the 2 of its first image are shown")) << notes[0];
    options.selection.page = 3;
    EXPECT_TRUE(ImageReader(tiff_, options).notes().empty());
}
