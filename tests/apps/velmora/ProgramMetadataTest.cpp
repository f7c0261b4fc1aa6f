// What a picture's file holds beside its samples goes into a store, and comes out of it byte for byte.
#include "host/image/ImageReader.h"
#include "host/image/SmallPicture.h"
#include "host/store/TileStore.h"
#include "tests/apps/velmora/OutputFixture.h"
#include "tests/host/image/RawTiff.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TestTiff.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TestImages.h"

#include <nlohmann/json.hpp>

using rawtiff::Bytes;
using testtiff::Directory;

namespace {

class ProgramMetadataTest : public OutputFixture {
protected:
    static constexpr int kDamaged = 10;

    static Bytes noise(size_t count, unsigned start) {
        Bytes made(count);
        for (size_t i = 0; i < count; ++i)
            made[i] = static_cast<std::uint8_t>(start + i * 37 + i * i / 5);
        return made;
    }

    static Directory tiled(std::uint32_t width, std::uint32_t height, unsigned start) {
        Directory made = testtiff::directory(width, height, 3, noise(size_t{width} * height * 3, start));
        made.tile = 128;
        return made;
    }

    // As a scanner of slides writes it, with a thumbnail and a label.
    void writeSlide() {
        Directory full = tiled(300, 200, 1);
        full.description = "Aperio Image Library v10.0.51\n300x200|AppMag = 40|MPP = 0.25";
        Directory thumbnail = tiled(30, 20, 9);
        thumbnail.tile = 0;
        label_ = tiled(60, 24, 5);
        label_.tile = 0;
        label_.description = "Aperio Image Library v10.0.51\nlabel 60x24 \r\n";
        testtiff::write(path("a.svs"), {full, thumbnail, label_});
    }

    std::string import(std::string const& image, std::vector<std::string> const& options = {}) const {
        std::vector<std::string> arguments{"import", path(image), store_, "--force"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto const result = runVelmora(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return result.err;
    }

    rawtiff::Directory exported() const {
        auto const result = runVelmora({"export", store_, path("out.tif"), "--force"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return rawtiff::read(rawtiff::fileBytes(path("out.tif")));
    }

    std::string info(std::string const& file, std::vector<std::string> const& options = {}) const {
        std::vector<std::string> arguments{"info", file};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto const result = runVelmora(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return result.out;
    }

    std::string store_ = path("a.vlm");
    Directory label_;
};

bool has(std::string const& text, std::string const& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(ProgramMetadataTest, TagsOfASceneComeBack) {
    rawtiff::Directory directory;
    directory.tags[33550] = rawtiff::doubles({30, 30, 0});
    directory.tags[33922] = rawtiff::doubles({0, 0, 0, 440720, 3751320, 0});
    directory.tags[34735] = {3, {1, 1, 0, 1, 1024, 0, 1, 1}};
    directory.tags[34737] = rawtiff::text("UTM Zone 11N|");
    directory.tags[42112] = rawtiff::text("<GDALMetadata/>");
    directory.tags[42113] = rawtiff::text("0");
    directory.tags[282] = {5, {720000, 10000}};
    directory.tags[283] = {5, {7, 3}};
    directory.tags[296] = {3, {2}};
    for (bool const bigEndian : {false, true})
        for (bool const big : {false, true}) {
            rawtiff::write(path("a.tif"), rawtiff::picture(40, 30, 3, noise(3600, 7), directory, {bigEndian, big}));
            EXPECT_EQ(import("a.tif"), "");
            auto const tags = exported().tags;
            for (auto const& [number, tag] : directory.tags) {
                ASSERT_EQ(tags.count(number), 1U) << number;
                EXPECT_EQ(tags.at(number), tag) << number;
            }
            EXPECT_TRUE(has(info(store_), "kept with it            9 tags\n")) << info(store_);
        }
}

TEST_F(ProgramMetadataTest, ASlideKeepsItsLabelAndItsProperties) {
    writeSlide();
    EXPECT_EQ(import("a.svs"), "");
    std::string const text = info(store_);
    EXPECT_TRUE(has(text, "kept with it            label, thumbnail, ")) << text;
    EXPECT_TRUE(has(text, "aperio.AppMag           40\n")) << text;
    auto const json = nlohmann::json::parse(info(store_, {"--json"}));
    EXPECT_EQ(json["metadata"].size(), TileStore(store_).metadata().size());
    EXPECT_EQ(json["otherImages"], (std::vector<std::string>{"label", "thumbnail"}));
    bool const hasMagnification =
        std::any_of(json["properties"].begin(), json["properties"].end(),
                    [](auto const& one) { return one["name"] == "aperio.AppMag" && one["value"] == "40"; });
    EXPECT_TRUE(hasMagnification) << json;

    auto const result = runVelmora({"export", store_, path("out.tif"), "--metadata", path("beside")});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(has(result.out, path("beside") + ": properties.json, label.png, thumbnail.png\n")) << result.out;
    auto const png = smallpicture::fromPng(rawtiff::fileBytes(path("beside/label.png")));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->samples, label_.bytes);
    auto const properties = nlohmann::json::parse(readFile(path("beside/properties.json")));
    EXPECT_EQ(properties["aperio.AppMag"], "40");
    std::string const description = "Aperio Image Library v10.0.51\n300x200|AppMag = 40|MPP = 0.25";
    EXPECT_EQ(rawtiff::read(rawtiff::fileBytes(path("out.tif"))).tags.at(270), rawtiff::text(description));
    EXPECT_EQ(rawtiff::read(rawtiff::fileBytes(path("out.tif")), 1).tags.at(270), rawtiff::text("label"));
    EXPECT_FALSE(has(info(path("out.tif")), "levels ")) << "a thumbnail is beside the picture";
    EXPECT_TRUE(has(info(path("out.tif")), "0.25 x 0.25 microns"));
}

TEST_F(ProgramMetadataTest, TheProfileOfAPhotographComesBack) {
    Directory photograph = tiled(40, 30, 1);
    photograph.iccProfile = testprofiles::exchanged("Turned round");
    photograph.orientation = 6;
    testtiff::write(path("a.tif"), {photograph});
    std::string const notes = import("a.tif");
    EXPECT_TRUE(has(notes, "orientation 6")) << notes;
    auto const tags = exported().tags;
    Bytes const profile(tags.at(34675).numbers.begin(), tags.at(34675).numbers.end());
    EXPECT_EQ(profile, photograph.iccProfile);
    EXPECT_EQ(tags.at(274), (rawtiff::Tag{3, {6}}));
    std::string const text = info(store_);
    EXPECT_TRUE(has(text, "colour profile          Turned round\n")) << text;
    EXPECT_TRUE(has(text, "orientation             6\n")) << text;
    auto const json = nlohmann::json::parse(info(store_, {"--json"}));
    EXPECT_EQ(json["colourProfile"], "Turned round");
    EXPECT_EQ(json["orientation"], 6);
}

TEST_F(ProgramMetadataTest, WhatAnImportLeavesOutIsTold) {
    rawtiff::Directory directory;
    directory.tags[42113] = rawtiff::text("0");
    directory.tags[65000] = {13, {8}};
    rawtiff::write(path("a.tif"), rawtiff::picture(40, 30, 3, noise(3600, 7), directory, {}));
    std::string const notes = import("a.tif", {"--range", "0,255"});
    EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 2) << notes;
    EXPECT_TRUE(has(notes, "its tag 42113 describes samples as they lie in the file")) << notes;
    EXPECT_TRUE(has(notes, "its tag 65000 cannot be kept")) << notes;
}

TEST_F(ProgramMetadataTest, FilesOfAFolderAreNotReplacedUnasked) {
    writeSlide();
    import("a.svs");
    std::filesystem::create_directory(path("beside"));
    writeFile(path("beside/label.png"), "mine");
    expectRefused({"export", store_, path("out.tif"), "--metadata", path("beside")}, kUnwritable,
                  {"label.png", "--force"});
    auto const result = runVelmora({"export", store_, path("out.tif"), "--metadata", path("beside"), "--force"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(readFile(path("beside/label.png")), "mine");
    writeFile(path("file"), "mine");
    expectRefused({"export", store_, path("b.tif"), "--metadata", path("file")}, kUnwritable, {path("file")});
    expectRefused({"export", store_, path("b.tif"), "--metadata", ""}, kUsage, {"--metadata"});
}

TEST_F(ProgramMetadataTest, AStoreWithNothingBesideItSaysSo) {
    testimages::writePattern8(path("a.png"), "[strip]", 40, 30, 3);
    import("a.png");
    EXPECT_TRUE(has(info(store_), "kept with it            nothing\n")) << info(store_);
    auto const result = runVelmora({"export", store_, path("out.tif"), "--metadata", path("beside")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(has(result.out, path("beside") + ": nothing")) << result.out;
}

TEST_F(ProgramMetadataTest, NamesOfImagesAreNoPaths) {
    writeSlide();
    import("a.svs");
    // As no writer names them, under checksums that fit.
    storefiles::renameMetadata(store_, {{"label", "../../label"}, {"thumbnail", "..-..-LABEL"}});
    auto const result = runVelmora({"export", store_, path("out.tif"), "--metadata", path("beside")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(has(result.out, "properties.json, ------label.png, ------LABEL-2.png\n")) << result.out;
}

TEST_F(ProgramMetadataTest, DamagedMetadataIsDamage) {
    writeSlide();
    import("a.svs");
    storefiles::change(store_, "UPDATE metadata SET data = x'00' WHERE kind = 'image'");
    expectRefused({"export", store_, path("out.tif")}, kDamaged, {"metadata 'image'"});
    EXPECT_EQ(runVelmora({"check", store_}).exitCode, kDamaged);
    storefiles::change(store_, "DELETE FROM metadata");
    expectRefused({"info", store_}, kDamaged, {"metadata is not as it was written"});
}

TEST_F(ProgramMetadataTest, TheHeaderOfAFitsPictureIsAFileOfText) {
    std::string header;
    for (std::string card :
         {"SIMPLE  =                    T", "BITPIX  =                    8", "NAXIS   =                    2",
          "NAXIS1  =                   40", "NAXIS2  =                   30", "OBJECT  = 'M 31    '", "END"}) {
        card.resize(80, ' ');
        header += card;
    }
    std::string block = header;
    block.resize(2880, ' ');
    std::string samples(2880, '\0');
    for (size_t i = 0; i < 1200; ++i)
        samples[i] = static_cast<char>(i * 7);
    writeFile(path("a.fits"), block + samples);
    EXPECT_EQ(import("a.fits"), "");
    EXPECT_TRUE(has(info(store_), "kept with it            FITS header\n")) << info(store_);
    auto const result = runVelmora({"export", store_, path("out.tif"), "--metadata", path("kept")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(has(readFile(path("kept/header.txt")), header.substr(0, 80 * 6))) << readFile(path("kept/header.txt"));
}

// Another program may have written the store.
TEST_F(ProgramMetadataTest, AnImageThatIsNoPngIsToldAndWrittenAsItIs) {
    auto picture = testpictures::picture(40, 30, 3, 8, testpictures::Content::Ramp);
    picture.metadata = {{picturemetadata::kImage, "label", {'n', 'o'}}};
    testpictures::import(picture, store_);
    auto const result = runVelmora({"export", store_, path("out.tif"), "--metadata", path("kept")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "velmora: 1 image beside the picture of '" + store_ +
                              "' cannot be written, and left out; --metadata FOLDER keeps what is there\n");
    EXPECT_EQ(readFile(path("kept/label.png")), "no");
}
