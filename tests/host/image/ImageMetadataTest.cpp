// What a picture's file holds beside its samples is kept byte for byte, or named.
#include "host/image/ImageMetadata.h"

#include "host/image/CodecFacts.h"
#include "host/image/SmallPicture.h"
#include "tests/host/image/RawTiff.h"
#include "tests/host/image/TestCodecs.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TiffFixture.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>

using rawtiff::Bytes;
using testtiff::Directory;

namespace {

class ImageMetadataTest : public TiffFixture {
protected:
    PictureMetadata metadataOf(std::string const& file, Options const& options = lossless()) {
        return ImageReader(file, options).metadata();
    }

    PictureMetadata metadata(Options const& options = lossless()) { return metadataOf(tiff_, options); }

    // A picture of 3 x 2 pixels with these tags beside those that it needs.
    void writeRaw(rawtiff::Directory const& directory, rawtiff::Layout const& layout = {}) const {
        rawtiff::write(tiff_, rawtiff::picture(3, 2, 3, bytes(18), directory, layout));
    }

    static Bytes itemOf(PictureMetadata const& metadata, std::string const& kind, std::string const& name = {}) {
        MetadataItem const* const item = picturemetadata::find(metadata.items, kind, name);
        if (item != nullptr) return item->bytes;
        ADD_FAILURE() << "there is no " << kind << " " << name;
        return {};
    }

    static Bytes tagOf(PictureMetadata const& metadata, std::string const& name) {
        return itemOf(metadata, picturemetadata::kTag, name);
    }

    static bool hasTag(PictureMetadata const& metadata, std::string const& name) {
        return picturemetadata::find(metadata.items, picturemetadata::kTag, name) != nullptr;
    }

    static std::vector<std::string> tagNames(PictureMetadata const& metadata) {
        std::vector<std::string> names;
        for (MetadataItem const& item : metadata.items)
            if (item.kind == picturemetadata::kTag) names.push_back(item.name);
        return names;
    }

    // A JPEG with this segment of the application with this number.
    std::string jpegWith(unsigned application, Bytes const& content) const {
        std::string const file = path("a.jpg");
        testimages::writePattern8(file, "[strip]", 40, 30, 3);
        Bytes jpeg = rawtiff::fileBytes(file);
        size_t const length = content.size() + 2;
        Bytes segment{0xff, static_cast<std::uint8_t>(0xe0 + application), static_cast<std::uint8_t>(length >> 8),
                      static_cast<std::uint8_t>(length)};
        segment.insert(segment.end(), content.begin(), content.end());
        jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
        rawtiff::write(file, jpeg);
        return file;
    }

    static Bytes withMarker(std::string const& marker, Bytes const& content) {
        Bytes made(marker.begin(), marker.end());
        made.insert(made.end(), content.begin(), content.end());
        return made;
    }
};

std::string const kExifMarker("Exif\0\0", 6);

} // namespace

TEST_F(ImageMetadataTest, TagsOfATiffAreKeptWithTheirTypes) {
    for (bool const bigEndian : {false, true})
        for (bool const big : {false, true}) {
            rawtiff::Directory directory;
            directory.tags[33550] = rawtiff::doubles({30, 30, 0});
            directory.tags[34735] = {3, {1, 1, 0, 1, 1024, 0, 1, 1}};
            directory.tags[282] = {5, {720000, 10000}};
            directory.tags[65000] = {7, {9, 8, 7}};
            directory.inner[34665].tags[33434] = {5, {1, 125}};
            writeRaw(directory, {bigEndian, big});
            PictureMetadata const found = metadata();
            EXPECT_TRUE(found.leftOut.empty());
            EXPECT_EQ(tagNames(found).size(), 5U) << "and none of those that say how the file is laid out";
            EXPECT_EQ(tagOf(found, "34735"), (Bytes{3, 0, 1, 0, 1, 0, 0, 0, 1, 0, 0, 4, 0, 0, 1, 0, 1, 0}));
            EXPECT_EQ(tagOf(found, "282"), (Bytes{5, 0, 0x80, 0xfc, 0x0a, 0, 0x10, 0x27, 0, 0}));
            EXPECT_EQ(tagOf(found, "65000"), (Bytes{7, 0, 9, 8, 7}));
            EXPECT_EQ(tagOf(found, "34665/33434"), (Bytes{5, 0, 1, 0, 0, 0, 125, 0, 0, 0}));
            EXPECT_EQ(tagOf(found, "33550").size(), 2U + 3 * 8);
        }
}

TEST_F(ImageMetadataTest, TagsAreThoseOfThePageThatIsTaken) {
    Directory first = grey(5);
    first.software = "first";
    Directory second = grey(6);
    second.software = "second";
    write({first, second});
    EXPECT_EQ(tagOf(metadata(withPage(2)), "305"), withMarker(std::string("\2\0second\0", 9), {}));
}

TEST_F(ImageMetadataTest, TheProfileIsThatOfTheSamples) {
    Directory page = testtiff::directory(5, 4, 3, bytes(60));
    page.iccProfile = testprofiles::rgb(testprofiles::kAdobe, 2.2, "wide");
    write({page});
    PictureMetadata const whole = metadata();
    EXPECT_EQ(itemOf(whole, picturemetadata::kProfile), page.iccProfile);
    EXPECT_FALSE(hasTag(whole, "34675")) << "once";
    EXPECT_TRUE(whole.leftOut.empty());

    PictureMetadata const bands = metadata(withBands({3, 2, 1}));
    EXPECT_EQ(picturemetadata::find(bands.items, picturemetadata::kProfile), nullptr);
    ASSERT_EQ(bands.leftOut.size(), 1U);
    EXPECT_TRUE(has(bands.leftOut[0], "ICC profile")) << bands.leftOut[0];
    EXPECT_TRUE(has(bands.leftOut[0], tiff_)) << bands.leftOut[0];

    Options followed = lossless();
    followed.selection.followsProfile = true;
    PictureMetadata const converted = metadata(followed);
    EXPECT_EQ(picturemetadata::find(converted.items, picturemetadata::kProfile), nullptr);
    EXPECT_TRUE(converted.leftOut.empty()) << "it was not lost";
}

TEST_F(ImageMetadataTest, TagsOfSamplesAreKeptWithTheSamplesAlone) {
    rawtiff::Directory directory;
    directory.tags[42113] = rawtiff::text("255");
    directory.tags[280] = {3, {0, 0, 0}};
    writeRaw(directory);
    PictureMetadata const whole = metadata();
    EXPECT_TRUE(hasTag(whole, "42113"));
    EXPECT_TRUE(hasTag(whole, "280"));

    for (Options const& options : {withRange(0, 100), withBands({1, 2, 3})}) {
        PictureMetadata const changed = metadata(options);
        EXPECT_FALSE(hasTag(changed, "42113"));
        EXPECT_FALSE(hasTag(changed, "280"));
        ASSERT_EQ(changed.leftOut.size(), 1U);
        EXPECT_TRUE(has(changed.leftOut[0], "tags 280, 42113 describe samples")) << changed.leftOut[0];
    }

    directory.tags[262] = {3, {0}}; // 0 is white: samples are inverted
    directory.tags.erase(280);
    rawtiff::write(tiff_, rawtiff::picture(3, 2, 1, bytes(6), directory, {}));
    PictureMetadata const inverted = metadata();
    EXPECT_FALSE(hasTag(inverted, "42113"));
    ASSERT_EQ(inverted.leftOut.size(), 1U);
    EXPECT_TRUE(has(inverted.leftOut[0], "tag 42113 describes samples")) << inverted.leftOut[0];
}

TEST_F(ImageMetadataTest, TagsThatCannotBeKeptAreNamed) {
    rawtiff::Directory directory;
    directory.tags[65001] = {13, {8}};
    writeRaw(directory);
    PictureMetadata const found = metadata();
    ASSERT_EQ(found.leftOut.size(), 1U);
    EXPECT_TRUE(has(found.leftOut[0], "tag 65001 cannot be kept")) << found.leftOut[0];
    EXPECT_TRUE(tagNames(found).empty());
}

TEST_F(ImageMetadataTest, ADescriptionOfAllPagesIsNotThatOfOne) {
    Directory page = grey(5);
    page.description = R"(<?xml version="1.0"?><OME><Image><Pixels SizeC="2"/></Image></OME>)";
    write({page, grey(5)});
    PictureMetadata const found = metadata(withPage(1));
    EXPECT_FALSE(hasTag(found, "270"));
    ASSERT_EQ(found.leftOut.size(), 1U);
    EXPECT_TRUE(has(found.leftOut[0], "description is of all its pages")) << found.leftOut[0];
    write({page});
    EXPECT_TRUE(hasTag(metadata(), "270"));
}

TEST_F(ImageMetadataTest, AnOrientationThatIsFollowedIsNotKept) {
    rawtiff::Directory directory;
    directory.tags[274] = {3, {6}};
    writeRaw(directory);
    EXPECT_EQ(tagOf(metadata(), "274"), (Bytes{3, 0, 6, 0}));
    Options upright = lossless();
    upright.selection.isUpright = true;
    EXPECT_FALSE(hasTag(metadata(upright), "274"));
}

TEST_F(ImageMetadataTest, TagsOfAnExifBlockAreTags) {
    rawtiff::Directory directory;
    directory.tags[271] = rawtiff::text("Velmora");
    directory.tags[274] = {3, {6}};
    directory.tags[513] = {4, {8}}; // where a thumbnail lies
    directory.inner[34665].tags[33434] = {5, {1, 125}};
    directory.inner[34853].tags[2] = {5, {47, 1, 30, 1, 0, 1}};
    Bytes const block = withMarker(kExifMarker, rawtiff::structure(directory, {true, false}));
    std::string const file = jpegWith(1, block);
    PictureMetadata const found = metadataOf(file);
    EXPECT_EQ(itemOf(found, picturemetadata::kExif), block);
    EXPECT_EQ(tagOf(found, "271"), withMarker(std::string("\2\0Velmora\0", 10), {}));
    EXPECT_EQ(tagOf(found, "274"), (Bytes{3, 0, 6, 0}));
    EXPECT_EQ(tagOf(found, "34665/33434"), (Bytes{5, 0, 1, 0, 0, 0, 125, 0, 0, 0}));
    EXPECT_EQ(tagOf(found, "34853/2").size(), 2U + 24);
    EXPECT_FALSE(hasTag(found, "513"));
    std::string const properties = [&] {
        Bytes const json = itemOf(found, picturemetadata::kProperties);
        return std::string(json.begin(), json.end());
    }();
    EXPECT_TRUE(has(properties, R"("make": "Velmora")")) << properties;
    Options upright = lossless();
    upright.selection.isUpright = true;
    EXPECT_FALSE(hasTag(metadataOf(file, upright), "274"));
}

TEST_F(ImageMetadataTest, XmpIsKept) {
    std::string const xml = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
    std::string const marker("http://ns.adobe.com/xap/1.0/\0", 29);
    EXPECT_EQ(itemOf(metadataOf(jpegWith(1, withMarker(marker + xml, {}))), picturemetadata::kXmp),
              Bytes(xml.begin(), xml.end()));
}

// JFIF states dots per inch.
TEST_F(ImageMetadataTest, TheDensityOfAPrintIsKeptAsTags) {
    Bytes const jfif = withMarker(std::string("JFIF\0\1\2", 7), {1, 0x01, 0x2c, 0x00, 0x60, 0, 0});
    std::string const file = jpegWith(0, jfif);
    PictureMetadata const found = metadataOf(file);
    EXPECT_EQ(tagOf(found, "282"), (Bytes{5, 0, 0xe0, 0x93, 0x04, 0, 0xe8, 0x03, 0, 0})) << "300000 / 1000";
    EXPECT_EQ(tagOf(found, "283"), (Bytes{5, 0, 0x00, 0x77, 0x01, 0, 0xe8, 0x03, 0, 0})) << "96000 / 1000";
    EXPECT_EQ(tagOf(found, "296"), (Bytes{3, 0, 2, 0})) << "inch";
}

TEST_F(ImageMetadataTest, TheHeaderOfAFitsIsKept) {
    testimages::writePattern16(path("a.fits"), "", 7, 5, 1);
    Bytes const file = rawtiff::fileBytes(path("a.fits"));
    std::string const header(file.begin(), file.begin() + 2880);
    Bytes const kept = itemOf(metadataOf(path("a.fits")), picturemetadata::kFits);
    size_t const end = header.find("END     ");
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(std::string(kept.begin(), kept.end()).substr(0, end), header.substr(0, end));
    EXPECT_EQ(kept.size() % 80, 0U);
}

TEST_F(ImageMetadataTest, CommentsOfAJpegAreProperties) {
    std::string const file = jpegWith(14, {'x'}); // 0xee, which comes right before 0xef
    Bytes jpeg = rawtiff::fileBytes(file);
    for (std::string const comment : {"second", "first"}) {
        Bytes const segment =
            withMarker(std::string("\xff\xfe\0", 3) + static_cast<char>(comment.size() + 2) + comment, {});
        jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
    }
    rawtiff::write(file, jpeg);
    EXPECT_EQ(propertiesOf(file), (std::vector<std::string>{"comment: first", "comment: second"}));
    // Any number of 0xff may come before a marker.
    Bytes padded = jpeg;
    padded.insert(padded.begin() + 2, 3, 0xff);
    rawtiff::write(path("padded.jpg"), padded);
    EXPECT_EQ(propertiesOf(path("padded.jpg")), propertiesOf(file));
    Bytes const json = itemOf(metadataOf(file), picturemetadata::kProperties);
    EXPECT_TRUE(has({json.begin(), json.end()}, "first\\nsecond")) << "names that come again share a text";
    jpeg.resize(30);
    rawtiff::write(file, jpeg);
    InputFile cut(file);
    EXPECT_EQ(codecfacts::commentsOfJpeg(cut).size(), 2U);
}

TEST_F(ImageMetadataTest, BoxesOfJpeg2000AreKept) {
    testcodecs::Jpeg2000 picture;
    picture.width = 3;
    picture.height = 1;
    picture.components = {{1, 2, 3}};
    rawtiff::Directory geo;
    geo.tags[33550] = rawtiff::doubles({30, 30, 0});
    geo.tags[256] = {3, {1}};
    Bytes const tiff = rawtiff::structure(geo, {});
    std::string const xml = "<gml/>";
    std::string const geoUuid = "\xb1\x4b\xf8\xbd\x08\x3d\x4b\x43\xa5\xae\x8c\xd7\xd5\xa6\xce\x03";
    std::string const xmpUuid = "\xbe\x7a\xcf\xcb\x97\xa9\x42\xe8\x9c\x71\x99\x94\x91\xe3\xaf\xac";
    std::string const file = testcodecs::jp2File(testcodecs::jpeg2000(path("a.j2k"), picture), picture, "") +
                             testcodecs::box("xml ", xml) +
                             testcodecs::box("uuid", geoUuid + std::string(tiff.begin(), tiff.end())) +
                             testcodecs::box("uuid", xmpUuid + "<x/>") + testcodecs::box("uuid", "short");
    writeFile(path("a.jp2"), file);
    PictureMetadata const found = metadataOf(path("a.jp2"));
    EXPECT_EQ(itemOf(found, picturemetadata::kBox, "xml "), Bytes(xml.begin(), xml.end()));
    EXPECT_EQ(itemOf(found, picturemetadata::kBox, "uuid/b14bf8bd083d4b43a5ae8cd7d5a6ce03"), tiff);
    EXPECT_EQ(itemOf(found, picturemetadata::kXmp), (Bytes{'<', 'x', '/', '>'}));
    EXPECT_EQ(itemOf(found, picturemetadata::kBox, "uuid"), (Bytes{'s', 'h', 'o', 'r', 't'}));
    EXPECT_EQ(tagNames(found), std::vector<std::string>{"33550"});
    EXPECT_EQ(found.items.size(), 5U);
}

TEST_F(ImageMetadataTest, BoxesAndTheProfileOfJpegXlAreKept) {
    testcodecs::JpegXl picture;
    picture.width = 3;
    picture.height = 1;
    picture.frames = {{1, 2, 3, 4, 5, 6, 7, 8, 9}};
    rawtiff::Directory directory;
    directory.tags[271] = rawtiff::text("Velmora");
    directory.tags[274] = {3, {6}};
    Bytes const tiff = rawtiff::structure(directory, {true, false});
    std::string const codestream = testcodecs::jpegXl(picture);
    ASSERT_EQ(codestream.substr(0, 2), "\xff\x0a") << "no container yet";
    std::string const file =
        testcodecs::box("JXL ", "\x0d\x0a\x87\x0a") + testcodecs::box("ftyp", std::string("jxl \0\0\0\0jxl ", 12)) +
        testcodecs::box("Exif", std::string("\0\0\0\2xx", 6) + std::string(tiff.begin(), tiff.end())) +
        testcodecs::box("jxlc", codestream) + testcodecs::box("xml ", "<x/>") + testcodecs::box("brob", "xml ...");
    writeFile(path("a.jxl"), file);
    PictureMetadata const found = metadataOf(path("a.jxl"));
    EXPECT_EQ(itemOf(found, picturemetadata::kExif), tiff);
    EXPECT_EQ(itemOf(found, picturemetadata::kXmp), (Bytes{'<', 'x', '/', '>'}));
    EXPECT_EQ(itemOf(found, picturemetadata::kBox, "brob").size(), 7U);
    EXPECT_FALSE(hasTag(found, "274")) << "libjxl turns pictures itself";
    EXPECT_TRUE(hasTag(found, "271"));
    Bytes const profile = itemOf(found, picturemetadata::kProfile);
    ASSERT_GT(profile.size(), 128U);
    EXPECT_EQ(std::string(profile.begin() + 36, profile.begin() + 40), "acsp");
    EXPECT_EQ(valuesOf(path("a.jxl")), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    // sRGB, as libjxl describes it, changes nothing.
    Options shown = lossless();
    shown.selection.followsProfile = true;
    EXPECT_EQ(valuesOf(path("a.jxl"), shown), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

// 5 x 3: no side is the other one, and no sum divides evenly.
TEST_F(ImageMetadataTest, SmallPicturesComeBackAsTheyWere) {
    for (size_t bands = 1; bands <= 4; ++bands) {
        SmallPicture const picture{{5, 3}, bands, bytes(15 * bands)};
        auto const back = smallpicture::fromPng(smallpicture::toPng(picture));
        ASSERT_TRUE(back);
        EXPECT_EQ(back->size.width, picture.size.width);
        EXPECT_EQ(back->size.height, picture.size.height);
        EXPECT_EQ(back->bands, bands);
        EXPECT_EQ(back->samples, picture.samples);
    }
    EXPECT_FALSE(smallpicture::fromPng({}));
    EXPECT_FALSE(smallpicture::fromPng(bytes(100)));
    Bytes damaged = smallpicture::toPng({{5, 3}, 3, bytes(45)});
    damaged.resize(damaged.size() / 2);
    EXPECT_FALSE(smallpicture::fromPng(damaged));
}

TEST_F(ImageMetadataTest, ShrunkPicturesHaveFourBands) {
    SmallPicture const grey = smallpicture::shrunk({{2, 2}, 1, {10, 20, 30, 41}}, 1);
    EXPECT_EQ(grey.samples, (Bytes{25, 25, 25, 255}));
    SmallPicture const alpha = smallpicture::shrunk({{2, 1}, 2, {10, 100, 20, 200}}, 2);
    EXPECT_EQ(alpha.samples, (Bytes{10, 10, 10, 100, 20, 20, 20, 200}));
    SmallPicture const odd = smallpicture::shrunk({{3, 1}, 3, {0, 10, 20, 2, 12, 22, 9, 9, 9}}, 2);
    EXPECT_EQ(odd.samples, (Bytes{1, 11, 21, 255, 9, 9, 9, 255})) << "the last square has one pixel";
}
