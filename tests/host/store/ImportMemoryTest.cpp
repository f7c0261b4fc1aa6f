#include "host/store/ImportMemory.h"

#include "host/HostError.h"
#include "host/MemoryBudget.h"
#include "host/store/ColourPlanes.h"
#include "host/store/PlaneTransform.h"

#include <gtest/gtest.h>

namespace {

StoreInfo infoOf(size_t width, size_t height, size_t bands, size_t bits, size_t tileSize) {
    StoreInfo info;
    info.width = width;
    info.height = height;
    info.bands = bands;
    info.bits = bits;
    info.residualBits = bits == 16 ? 3 : 0;
    info.tileSize = tileSize;
    info.levels = storegeometry::autoLevels(width, height, tileSize);
    info.sourceName = "wide.tif";
    return info;
}

// What the parts of an import have room for, counted by themselves.
std::uint64_t heldBytes(StoreInfo const& info) {
    std::uint64_t samples = 0;
    for (size_t plane = 0; plane < info.bands; ++plane) {
        samples += PlaneTransform(info, plane, [](RawTile&&) {}).bufferedSamples();
        if (info.residualBits > 0)
            samples += TileRowCutter(info, 0, Band::Residual, plane, [](RawTile&&) {}).bufferedSamples();
    }
    return 2 * samples + info.width * info.bands * (info.bits / 8 + 4);
}

} // namespace

TEST(ImportMemoryTest, IsWhatThePartsHold) {
    for (size_t const tileSize : {16u, 64u, 256u, 2048u})
        for (size_t const bands : {1u, 3u, 4u})
            for (size_t const bits : {8u, 16u})
                for (size_t const height : {1u, 40u, 3000u}) {
                    StoreInfo const info = infoOf(5000, height, bands, bits, tileSize);
                    EXPECT_EQ(importBytes(info), heldBytes(info))
                        << tileSize << " " << bands << " " << bits << " " << height;
                }
}

TEST(ImportMemoryTest, WhatPeopleHaveFits) {
    EXPECT_NO_THROW(requireImportMemory(infoOf(300000, 300000, 4, 16, 256)));
    EXPECT_NO_THROW(requireImportMemory(infoOf(800000, 500000, 3, 8, 256)));
}

TEST(ImportMemoryTest, MoreIsRefusedAndSmallerTilesAreTheWayOut) {
    StoreInfo info = infoOf(8000000, 1000, 3, 8, 256);
    try {
        requireImportMemory(info);
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
        EXPECT_EQ(
            std::string(error.what()),
            "'wide.tif' is 8000000 pixels wide: an import with tiles of 256 samples takes about " +
                memorybudget::toText(importBytes(info)) +
                " of memory, more than the 4.0 GB that a picture may take; choose a smaller --tile, or cut it into "
                "narrower pictures");
    }
    info.tileSize = 16;
    EXPECT_NO_THROW(requireImportMemory(info));
}

TEST(ImportMemoryTest, TheBudgetItselfIsEnough) {
    StoreInfo info = infoOf(1, 1000000, 1, 8, 256);
    std::uint64_t const each = importBytes(infoOf(2000000, 1000000, 1, 8, 256)) / 2000000;
    // The widest picture that fits, found by halving.
    size_t fits = 1;
    size_t refused = 2 * memorybudget::kPictureBytes / each;
    while (refused - fits > 1) {
        info = infoOf((fits + refused) / 2, 1000000, 1, 8, 256);
        (importBytes(info) <= 4'000'000'000 ? fits : refused) = info.width;
    }
    EXPECT_NO_THROW(requireImportMemory(infoOf(fits, 1000000, 1, 8, 256)));
    EXPECT_THROW(requireImportMemory(infoOf(refused, 1000000, 1, 8, 256)), HostError);
}

TEST(MemoryBudgetTest, IsToldInGigabytes) {
    EXPECT_EQ(memorybudget::toText(4'000'000'000), "4.0 GB");
    EXPECT_EQ(memorybudget::toText(12'340'000'000), "12.3 GB");
    EXPECT_EQ(memorybudget::toText(50'000'000), "0.1 GB");
}
