#include "host/store/TileStoreFormat.h"

#include <gtest/gtest.h>

#include <stdexcept>

using storeformat::Meta;

namespace {

StoreInfo exampleInfo() {
    StoreInfo info;
    info.width = 134217728;
    info.height = 3;
    info.bands = 4;
    info.bits = 16;
    info.residualBits = 5;
    info.levels = 2;
    info.tileSize = 2048;
    info.micronsPerPixelX = 0.25;
    info.micronsPerPixelY = 1e-5;
    info.sourceName = "slide.tif";
    info.interpretation = "RGBA";
    return info;
}

} // namespace

TEST(TileStoreFormatTest, KeysAreLevelRowColumnBandAndPlane) {
    EXPECT_EQ(storeformat::keyOf({0, Band::LL, 0, 0, 0}), 0);
    EXPECT_EQ(storeformat::keyOf({0, Band::LL, 3, 0, 0}), 3);
    EXPECT_EQ(storeformat::keyOf({0, Band::HL, 0, 0, 0}), 4);
    EXPECT_EQ(storeformat::keyOf({0, Band::Residual, 0, 0, 0}), 16);
    EXPECT_EQ(storeformat::keyOf({0, Band::LL, 0, 1, 0}), 32);
    EXPECT_EQ(storeformat::keyOf({0, Band::LL, 0, 0, 1}), 536870912);
    EXPECT_EQ(storeformat::keyOf({1, Band::LL, 0, 0, 0}), 9007199254740992);
    EXPECT_EQ(storeformat::keyOf({12, Band::HH, 2, 16777215, 16777215}), 117093590311632878);
}

TEST(TileStoreFormatTest, KeysGiveTheirTilesBack) {
    for (size_t const level : {0u, 1u, 12u})
        for (Band const band : {Band::LL, Band::HL, Band::LH, Band::HH, Band::Residual})
            for (size_t const plane : {0u, 3u})
                for (size_t const column : {0u, 5u, 16777215u})
                    for (size_t const row : {0u, 7u, 16777215u}) {
                        TileAddress const address{level, band, plane, column, row};
                        EXPECT_EQ(toText(storeformat::addressOf(storeformat::keyOf(address))), toText(address));
                    }
}

TEST(TileStoreFormatTest, ADescriptionSaysAllThatThereIs) {
    Meta const meta = storeformat::toMeta(exampleInfo(), {11, 12, 4294967295}, {3, 77});
    Meta const expected{{"width", "134217728"},
                        {"height", "3"},
                        {"bands", "4"},
                        {"bits", "16"},
                        {"residualBits", "5"},
                        {"levels", "2"},
                        {"tileSize", "2048"},
                        {"micronsPerPixelX", "0.25"},
                        {"micronsPerPixelY", "1e-05"},
                        {"sourceName", "slide.tif"},
                        {"interpretation", "RGBA"},
                        {"selection", ""},
                        {"rangeLow", "0"},
                        {"rangeHigh", "0"},
                        {"version", "4"},
                        {"index0", "11"},
                        {"index1", "12"},
                        {"index2", "4294967295"},
                        {"metadata", "3"},
                        {"metadataCrc", "77"},
                        {"crc", meta.at("crc")}};
    EXPECT_EQ(meta, expected);
    StoreInfo const info = storeformat::fromMeta(meta, 4);
    EXPECT_EQ(info.width, 134217728u);
    EXPECT_EQ(info.micronsPerPixelX, 0.25);
    EXPECT_EQ(info.micronsPerPixelY, 1e-5);
    EXPECT_EQ(info.sourceName, "slide.tif");
    EXPECT_EQ(info.interpretation, "RGBA");
    EXPECT_EQ(storeformat::indexChecksums(meta, info, 4), (storeformat::IndexChecksums{11, 12, 4294967295}));
    EXPECT_TRUE(storeformat::indexChecksums(meta, info, 2).empty());
    EXPECT_EQ(storeformat::metadataSeal(meta, 4), (storeformat::MetadataSeal{3, 77}));
    EXPECT_EQ(storeformat::metadataSeal(meta, 3), storeformat::MetadataSeal());
}

TEST(TileStoreFormatTest, ImpossibleNumbersOfItemsAreRefused) {
    Meta meta = storeformat::toMeta(exampleInfo(), {0, 0, 0});
    for (auto const& [key, value] :
         {std::pair{"metadata", "4097"}, {"metadata", "-1"}, {"metadataCrc", "4294967296"}}) {
        Meta changed = meta;
        changed[key] = value;
        EXPECT_THROW(storeformat::metadataSeal(changed, 4), std::invalid_argument) << value;
        changed.erase(key);
        EXPECT_THROW(storeformat::metadataSeal(changed, 4), std::invalid_argument) << key;
    }
}

TEST(TileStoreFormatTest, WhatAReaderWouldRefuseIsNotWritten) {
    StoreInfo info = exampleInfo();
    info.sourceName = std::string(storeformat::kMaxTextBytes, 'x');
    EXPECT_EQ(storeformat::fromMeta(storeformat::toMeta(info, {0, 0, 0}), 4).sourceName, info.sourceName);
    info.sourceName += 'x';
    EXPECT_THROW(storeformat::toMeta(info, {0, 0, 0}), std::invalid_argument);
}
