// Metadata in stores: what was written comes back, or is damage.
#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/TileStore.h"
#include "host/store/TileStoreFormat.h"
#include "tests/host/image/RawTiff.h"
#include "tests/host/store/DocumentedReader.h"
#include "tests/host/store/SourceOf.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdexcept>

using rawtiff::Bytes;
using testpictures::Content;

namespace {

using Items = std::vector<MetadataItem>;

class DescribedSource final : public SourceOf {
public:
    DescribedSource(std::unique_ptr<PixelSource> source, PictureMetadata metadata, double pixelsPerMillimetre)
        : SourceOf(std::move(source)), metadata_(std::move(metadata)), pixelsPerMillimetre_(pixelsPerMillimetre) {}

    PictureMetadata metadata() override { return metadata_; }
    double pixelsPerMillimetreX() const override { return pixelsPerMillimetre_; }
    double pixelsPerMillimetreY() const override { return pixelsPerMillimetre_; }

private:
    PictureMetadata metadata_;
    double pixelsPerMillimetre_;
};

MetadataItem tag(std::string const& name, Bytes const& typeAndValues) {
    return {picturemetadata::kTag, name, typeAndValues};
}

MetadataItem text(std::string const& kind, std::string const& letters) {
    return {kind, {}, {letters.begin(), letters.end()}};
}

class StoreMetadataTest : public testing::Test {
protected:
    void import(PictureMetadata const& metadata, double pixelsPerMillimetre = 0) {
        ImportOptions options;
        options.tileSize = 16;
        options.replace = true;
        notes_.clear();
        options.note = [this](std::string const& line) { notes_.push_back(line); };
        auto const open = [&] {
            return std::make_unique<DescribedSource>(testpictures::source(picture_), metadata, pixelsPerMillimetre);
        };
        importStore(open, path_, options, [](size_t, size_t) {});
    }

    void import(Items const& items) {
        import(PictureMetadata{items, {}});
    }

    Items read() const { return TileStore(path_).allMetadata(); }

    template <class Found>
    static void expectEqual(Found const& found, Items const& expected) {
        ASSERT_EQ(found.size(), expected.size());
        for (size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(found[i].kind, expected[i].kind) << i;
            EXPECT_EQ(found[i].name, expected[i].name) << i;
            EXPECT_EQ(found[i].bytes, expected[i].bytes) << i;
        }
    }

    // The pictures's samples are there, and a check counts one damage.
    void expectDamaged(std::string const& words) const {
        TileStore store(path_);
        try {
            store.allMetadata();
            ADD_FAILURE() << "it was read: " << words;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::DamagedStore);
            EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
        }
        EXPECT_EQ(checkStore(store, [](size_t, size_t) {}).damages, 1U);
        EXPECT_NO_THROW(store.tile({1, Band::LL, 0, 0, 0}));
    }

    // The first directory of an export.
    rawtiff::Directory exported(size_t number = 0) {
        TileStore store(path_);
        OutputFile file(tiff_);
        file.replace = true;
        exportStore(store, file, [](size_t, size_t) {});
        return rawtiff::read(rawtiff::fileBytes(tiff_), number);
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    std::string tiff_ = folder_.path("a.tif");
    testpictures::Picture picture_ = testpictures::picture(20, 20, 3, 8, Content::Noise);
    std::vector<std::string> notes_;
    Items const some_{{picturemetadata::kProfile, "", Bytes(3000, 7)},
                      tag("34735", {3, 0, 1, 0, 2, 0}),
                      {picturemetadata::kImage, "label", {1, 2, 3}},
                      {picturemetadata::kImage, "macro", {}},
                      {"a kind that nobody knows", "\xc3\xa4", {0}}};
};

} // namespace

TEST_F(StoreMetadataTest, ItemsComeBackInTheirOrder) {
    for (Items const& items : {Items{}, some_}) {
        import(items);
        expectEqual(read(), items);
        EXPECT_EQ(checkStore(*std::make_unique<TileStore>(path_), [](size_t, size_t) {}).damages, 0U);
        expectEqual(DocumentedReader(path_).metadata(), items);
        EXPECT_TRUE(notes_.empty());
    }
}

TEST_F(StoreMetadataTest, AnItemMayBeLargerThanAnyTile) {
    Items const items{{picturemetadata::kImage, "macro", Bytes(5'000'000, 3)}, {picturemetadata::kXmp, "", {1}}};
    import(items);
    TileStore store(path_);
    EXPECT_EQ(store.metadataBytes(0).size(), 5'000'000U);
    EXPECT_EQ(store.metadataBytes(1), Bytes{1});
    EXPECT_NO_THROW(store.tile({1, Band::LL, 0, 0, 0}));
    EXPECT_THROW(store.metadataBytes(2), std::invalid_argument);
}

TEST_F(StoreMetadataTest, WhatIsLeftOutIsTold) {
    PictureMetadata metadata{some_, {"something is left out"}};
    metadata.items.push_back({picturemetadata::kImage, std::string(300, 'x'), {1}});
    metadata.items.push_back({picturemetadata::kXmp, "", Bytes(storeformat::kMaxItemBytes + 1)});
    import(metadata);
    ASSERT_EQ(notes_.size(), 3U);
    EXPECT_EQ(notes_[0], "something is left out");
    EXPECT_NE(notes_[1].find("no room for the image"), std::string::npos) << notes_[1];
    EXPECT_NE(notes_[2].find("no room for the xmp"), std::string::npos) << notes_[2];
    expectEqual(read(), some_);
}

TEST_F(StoreMetadataTest, MoreItemsThanFitAreTold) {
    import(Items(storeformat::kMaxItems + 2, {picturemetadata::kTag, "1", { 1, 0, 5 }}));
    EXPECT_EQ(read().size(), storeformat::kMaxItems);
    EXPECT_EQ(notes_.size(), 2U);
}

TEST_F(StoreMetadataTest, AnyChangeIsDamage) {
    struct Change {
        char const* statement;
        char const* words;
    };
    for (Change const& change :
         {Change{"UPDATE metadata SET data = x'010204' WHERE id = 3", "'image' does not match its checksum"},
          Change{"UPDATE metadata SET crc = crc + 1 WHERE id = 3", "not as it was written"},
          Change{"UPDATE metadata SET crc = -1 WHERE id = 3", "not as it was written"},
          Change{"UPDATE metadata SET kind = 'tag' WHERE id = 3", "not as it was written"},
          Change{"UPDATE metadata SET name = 'macro' WHERE id = 3", "not as it was written"},
          Change{"UPDATE metadata SET id = 9 WHERE id = 5", "not as it was written"},
          Change{"DELETE FROM metadata WHERE id = 5", "not as it was written"},
          Change{"DELETE FROM metadata", "not as it was written"},
          Change{"INSERT INTO metadata VALUES(6, 'tag', '1', 0, x'')", "not as it was written"}}) {
        SCOPED_TRACE(change.statement);
        import(some_);
        storefiles::change(path_, change.statement);
        expectDamaged(change.words);
    }
}

TEST_F(StoreMetadataTest, ANameWithoutEndIsDamage) {
    import(some_);
    storefiles::change(path_, "UPDATE metadata SET name = printf('%.3000c', 'x') WHERE id = 3");
    expectDamaged("not as it was written");
    storefiles::change(path_, "UPDATE metadata SET name = printf('%.90000000c', 'x') WHERE id = 3");
    EXPECT_THROW(TileStore(path_).metadata(), HostError);
}

TEST_F(StoreMetadataTest, ATileMayNotBeAsLargeAsAnItem) {
    import(some_);
    storefiles::change(path_, "UPDATE tiles SET data = zeroblob(5000000) WHERE value IS NULL");
    TileStore store(path_);
    store.allMetadata();
    EXPECT_THROW(store.tile({1, Band::LL, 0, 0, 0}), HostError);
}

TEST_F(StoreMetadataTest, AStoreOfAnOlderVersionHasNone) {
    import(some_);
    for (std::int64_t const version : {3, 2, 1}) {
        import(some_);
        storefiles::rewriteAs(version, path_);
        EXPECT_TRUE(read().empty()) << version;
        EXPECT_EQ(checkStore(*std::make_unique<TileStore>(path_), [](size_t, size_t) {}).damages, 0U) << version;
    }
}

TEST_F(StoreMetadataTest, AnOlderVersionWithItsTableIsDamage) {
    import(some_);
    storefiles::change(path_, "UPDATE meta SET value = '3' WHERE key = 'version'; PRAGMA user_version = 3");
    storefiles::sealDescription(path_);
    EXPECT_THROW(TileStore{path_}, HostError);
}

TEST_F(StoreMetadataTest, AnExportHasTheTagsAsTheyWere) {
    rawtiff::Directory expected;
    expected.tags[33550] = rawtiff::doubles({30, 30, 0});
    expected.tags[270] = rawtiff::text("a description");
    expected.tags[282] = {5, {720000, 10000}};
    expected.tags[283] = {5, {7, 3}};
    expected.tags[296] = {3, {2}};
    expected.tags[65000] = {7, {9, 8, 7}};
    expected.inner[34665].tags[33434] = {5, {1, 125}};
    expected.inner[34665].inner[40965].tags[1] = rawtiff::text("R98");
    Items items;
    auto const add = [&](std::string const& name, rawtiff::Tag const& one, size_t width) {
        Bytes content{static_cast<std::uint8_t>(one.type), 0};
        for (std::uint64_t const number : one.numbers)
            for (size_t i = 0; i < width; ++i)
                content.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
        items.push_back(tag(name, content));
    };
    add("33550", expected.tags[33550], 8);
    add("270", expected.tags[270], 1);
    add("282", expected.tags[282], 4);
    add("283", expected.tags[283], 4);
    add("296", expected.tags[296], 2);
    add("65000", expected.tags[65000], 1);
    add("34665/33434", expected.inner[34665].tags[33434], 4);
    add("34665/40965/1", expected.inner[34665].inner[40965].tags[1], 1);
    import(items);
    rawtiff::Directory const found = exported();
    for (auto const& [number, one] : expected.tags) {
        ASSERT_EQ(found.tags.count(number), 1U) << number;
        EXPECT_EQ(found.tags.at(number), one) << number;
    }
    EXPECT_EQ(found.inner.at(34665).tags.at(33434), expected.inner[34665].tags[33434]);
    EXPECT_EQ(found.inner.at(34665).inner.at(40965).tags, expected.inner[34665].inner[40965].tags);
    EXPECT_EQ(found.tags.at(256).numbers, std::vector<std::uint64_t>{20});
}

TEST_F(StoreMetadataTest, AnExportWithTagsHasTheSameSamples) {
    import(some_);
    exported();
    TileStore store(path_);
    ImageReader reader(tiff_, ImageReader::Samples::kAsStored);
    std::vector<std::uint8_t> pixels;
    reader.read({0, 0, 20, 20}, pixels);
    EXPECT_EQ(pixels, picture_.bytes);
}

TEST_F(StoreMetadataTest, TagsOf64BitsMakeABigTiff) {
    import(Items{tag("65000", {16, 0, 1, 2, 3, 4, 5, 6, 7, 8})});
    EXPECT_EQ(exported().tags.at(65000), (rawtiff::Tag{16, {0x0807060504030201}}));
    EXPECT_EQ(rawtiff::fileBytes(tiff_).at(2), 43);
}

TEST_F(StoreMetadataTest, BlocksBecomeTheirTags) {
    import(Items{{picturemetadata::kProfile,
                  "",
                  { 1,
                    2,
                    3,
                    4,
                    5 }},
                 text(picturemetadata::kXmp, "<x/>"),
                 text(picturemetadata::kIptc, "iptc"),
                 text(picturemetadata::kProperties, "{}")});
    auto const tags = exported().tags;
    EXPECT_EQ(tags.at(34675), (rawtiff::Tag{7, {1, 2, 3, 4, 5}}));
    EXPECT_EQ(tags.at(700), (rawtiff::Tag{1, {'<', 'x', '/', '>'}}));
    EXPECT_EQ(tags.at(33723), (rawtiff::Tag{7, {'i', 'p', 't', 'c'}}));
    EXPECT_EQ(tags.at(270), rawtiff::text("{}"));
}

TEST_F(StoreMetadataTest, ABlockDoesNotReplaceATag) {
    import(Items{text(picturemetadata::kXmp, "<x/>"), tag("700", {1, 0, 'y'}), tag("270", {2, 0, 'd', 0}),
                 text(picturemetadata::kProperties, "{}")});
    auto const tags = exported().tags;
    EXPECT_EQ(tags.at(700), (rawtiff::Tag{1, {'y'}}));
    EXPECT_EQ(tags.at(270), rawtiff::text("d"));
    import(Items{text(picturemetadata::kExif, "Exif"), text(picturemetadata::kProperties, "{}")});
    EXPECT_EQ(exported().tags.count(270), 0U) << "what EXIF says is in tags";
}

// 250 pixels per millimetre are 6350 per inch.
TEST_F(StoreMetadataTest, TheResolutionIsThatOfTheTagsWhereBothAgree) {
    Items const exact{tag("282", {5, 0, 0x9c, 0x31, 0, 0, 2, 0, 0, 0}),
                      tag("283", {5, 0, 0x9c, 0x31, 0, 0, 2, 0, 0, 0}), tag("296", {3, 0, 2, 0})};
    import(PictureMetadata{exact, {}}, 250);
    EXPECT_EQ(exported().tags.at(282), (rawtiff::Tag{5, {12700, 2}}));
    Items const print{tag("282", {5, 0, 72, 0, 0, 0, 1, 0, 0, 0}), tag("283", {5, 0, 72, 0, 0, 0, 1, 0, 0, 0})};
    import(PictureMetadata{print, {}}, 250);
    auto const tags = exported().tags;
    EXPECT_EQ(tags.at(282), (rawtiff::Tag{5, {2500, 1}})) << "per centimetre: the size of a pixel counts";
    EXPECT_EQ(tags.at(296), (rawtiff::Tag{3, {3}}));
    import(print);
    EXPECT_EQ(exported().tags.at(282), (rawtiff::Tag{5, {72, 1}})) << "no size of a pixel is known";
    EXPECT_EQ(exported().tags.count(296), 0U);
}

TEST_F(StoreMetadataTest, ImagesAreFurtherDirectories) {
    SmallPicture const label{{4, 3}, 3, Bytes(36, 90)};
    SmallPicture const macro{{2, 5}, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
    import(Items{{picturemetadata::kImage, "label", smallpicture::toPng(label)},
                 {picturemetadata::kImage, "macro", smallpicture::toPng(macro)},
                 tag("305", {2, 0, 'v', 0}),
                 { picturemetadata::kImage,
                   "damaged",
                   { 1 } }});
    auto const first = exported().tags;
    EXPECT_EQ(first.at(305), rawtiff::text("v"));
    auto const second = exported(1).tags;
    EXPECT_EQ(second.at(256).numbers, std::vector<std::uint64_t>{4});
    EXPECT_EQ(second.at(257).numbers, std::vector<std::uint64_t>{3});
    EXPECT_EQ(second.at(254).numbers, std::vector<std::uint64_t>{9});
    EXPECT_EQ(second.at(270), rawtiff::text("label"));
    auto const third = exported(2).tags;
    EXPECT_EQ(third.at(277).numbers, std::vector<std::uint64_t>{1});
    EXPECT_EQ(third.at(270), rawtiff::text("macro"));
    EXPECT_THROW(exported(3), std::out_of_range);
    TileStore store(path_);
    OutputFile again(folder_.path("b.tif"));
    EXPECT_EQ(exportStore(store, again, [](size_t, size_t) {}), 1U) << "the damaged one";
    ImageReader reader(tiff_, ImageReader::Samples::kAsStored);
    EXPECT_EQ(reader.width(), 20U) << "one page: the others are beside it";
}

// PNGs of one colour are small, and each would take 200 MB.
TEST_F(StoreMetadataTest, ImagesAreBoundedTogether) {
    size_t const side = 6000;
    Bytes const png = smallpicture::toPng({{side, side}, 1, Bytes(side * side)});
    ASSERT_LT(png.size(), 200'000U);
    import(Items(5, {picturemetadata::kImage, "bomb", png}));
    TileStore store(path_);
    EXPECT_EQ(tiffFormatOf(store.info(), store.allMetadata()).others.size(), 1U);
}

TEST_F(StoreMetadataTest, ItemsThatNoWriterMakesArePassedOver) {
    import(Items{tag("270", {}), tag("271", {2}), tag("272", {99, 0, 1}), tag("273x", {2, 0, 1}), tag("305", {3, 0, 1}),
                 tag("", {2, 0, 1}), tag("65000", {1, 0, 5})});
    auto const tags = exported().tags;
    EXPECT_EQ(tags.at(65000), (rawtiff::Tag{1, {5}}));
    for (int const number : {270, 271, 272, 305})
        EXPECT_EQ(tags.count(static_cast<std::uint16_t>(number)), 0U) << number;
}

// A hostile store must not make an export whose pixels lie elsewhere.
TEST_F(StoreMetadataTest, TagsThatSayHowTheFileIsLaidOutAreTheFilesOwn) {
    import(Items{tag("256", {3, 0, 1, 0}), tag("273", {4, 0, 0, 0, 0, 0}), tag("330", {4, 0, 8, 0, 0, 0}),
                 tag("34665", {4, 0, 8, 0, 0, 0})});
    auto const tags = exported().tags;
    EXPECT_EQ(tags.at(256).numbers, std::vector<std::uint64_t>{20});
    EXPECT_NE(tags.at(273).numbers, std::vector<std::uint64_t>{0});
    EXPECT_EQ(tags.count(330), 0U);
    EXPECT_EQ(tags.count(34665), 0U);
}
