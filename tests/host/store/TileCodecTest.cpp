#include "host/store/TileCodec.h"

#include "tests/host/store/TestTiles.h"

#include <gtest/gtest.h>
#include <zlib.h>
#include <zstd.h>

namespace {

using Bytes = std::vector<std::uint8_t>;
using testtiles::infoOf;
using testtiles::noise;
using testtiles::Samples;
using testtiles::tileOf;

constexpr size_t kTileBytes = 2 * 16 * 16;

// The key of the tile at column 3 of HL at level 1, little-endian.
Bytes const kKey{3 * 32 % 256 + 4, 0, 0, 0, 0, 0, 1 << 5, 0};

Bytes joined(Bytes first, Bytes const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::uint32_t crcOf(Bytes const& bytes) {
    return static_cast<std::uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

Bytes unpacked(Bytes const& data, size_t count = kTileBytes) {
    Bytes bytes(count);
    EXPECT_EQ(ZSTD_decompress(bytes.data(), bytes.size(), data.data(), data.size()), bytes.size());
    return bytes;
}

Bytes packed(Bytes const& bytes) {
    Bytes data(ZSTD_compressBound(bytes.size()));
    data.resize(ZSTD_compress(data.data(), data.size(), bytes.data(), bytes.size(), 3));
    return data;
}

} // namespace

TEST(TileCodecTest, SamplesComeBackAndNoiseIsNotMuchLarger) {
    TileCodec codec(infoOf(1000));
    for (unsigned number = 0; number < 20; ++number) {
        StoredTile const stored = codec.encode(tileOf(number, noise(number)));
        EXPECT_FALSE(stored.value);
        EXPECT_LE(stored.data.size(), 2 * 16 * 16 + 16u);
        EXPECT_EQ(codec.decode(stored), noise(number));
    }
}

TEST(TileCodecTest, ATileOfOneValueIsKeptAsThatValue) {
    TileCodec codec(infoOf(1000));
    for (int const value : {0, 1, -1, 32767, -32768}) {
        auto const sample = static_cast<std::int16_t>(value);
        StoredTile const stored = codec.encode(tileOf(0, Samples(16 * 16, sample)));
        EXPECT_EQ(stored.value, sample);
        EXPECT_TRUE(stored.data.empty());
        EXPECT_EQ(codec.decode(stored), Samples(16 * 16, sample));
    }
    Samples almost(16 * 16, 5);
    almost.back() = 6;
    EXPECT_FALSE(codec.encode(tileOf(0, almost)).value);
}

// A picture of 36 samples per side has bands of 20: of tile 1, four columns lie in the band.
TEST(TileCodecTest, BeyondTheBandThereIsZeroWhateverTheValue) {
    TileCodec codec(infoOf(36));
    Samples samples(16 * 16, 0);
    for (size_t y = 0; y < 16; ++y)
        for (size_t x = 0; x < 4; ++x)
            samples[y * 16 + x] = 7;
    StoredTile const stored = codec.encode({{1, Band::HL, 0, 1, 0}, {4, 16}, samples});
    EXPECT_EQ(stored.value, std::int16_t{7});
    EXPECT_EQ(codec.decode(stored), samples);
}

TEST(TileCodecTest, WhatIsDamagedIsNotDecoded) {
    TileCodec codec(infoOf(1000));
    StoredTile const whole = codec.encode(tileOf(0, noise(1)));
    StoredTile damaged = whole;
    damaged.crc ^= 1u;
    EXPECT_FALSE(codec.decode(damaged));
    damaged = whole;
    damaged.data.resize(damaged.data.size() - 1);
    EXPECT_FALSE(codec.decode(damaged));
    damaged = whole;
    damaged.data.clear();
    EXPECT_FALSE(codec.decode(damaged));
    damaged.value = std::int16_t{3};
    EXPECT_FALSE(codec.decode(damaged));
}

// Every value of a sample, in the order of the zigzag codes.
TEST(TileCodecTest, SamplesOfAnyValueComeBack) {
    StoreInfo info = infoOf(1000);
    info.tileSize = 256;
    TileCodec codec(info);
    RawTile tile{{1, Band::HL, 0, 0, 0}, {256, 256}, std::vector<std::int16_t>(65536)};
    for (int i = 0; i < 65536; ++i)
        tile.samples[static_cast<size_t>(i)] = static_cast<std::int16_t>(i % 2 == 0 ? i / 2 : -i / 2 - 1);
    StoredTile const stored = codec.encode(tile);
    EXPECT_EQ(codec.decode(stored), tile.samples);
    // The codes are consecutive, and so are their low bytes; the zstd frame decodes to them.
    std::vector<std::uint8_t> bytes(2 * 65536);
    ASSERT_EQ(ZSTD_decompress(bytes.data(), bytes.size(), stored.data.data(), stored.data.size()), bytes.size());
    for (size_t i = 0; i < 65536; ++i)
        ASSERT_EQ(bytes[i] + 256u * bytes[65536 + i], i);
}

TEST(TileCodecTest, ChecksumsAreOfKeyAndBytesOrOfKeyAndValue) {
    TileCodec codec(infoOf(1000));
    StoredTile const stored = codec.encode(tileOf(3, noise(2)));
    EXPECT_EQ(stored.crc, crcOf(joined(kKey, unpacked(stored.data))));
    EXPECT_EQ(codec.encode(tileOf(3, Samples(256, 0x1234))).crc, crcOf(joined(kKey, {0x34, 0x12})));
    EXPECT_EQ(codec.encode(tileOf(3, Samples(256, -2))).crc, crcOf(joined(kKey, {0xfe, 0xff})));
}

TEST(TileCodecTest, ChecksumsOfOlderVersionsAreOfTheBytesAlone) {
    for (std::int64_t const version : {1, 2}) {
        TileCodec codec(infoOf(1000), version);
        StoredTile const stored = codec.encode(tileOf(3, noise(2)));
        EXPECT_EQ(stored.crc, crcOf(unpacked(stored.data)));
        EXPECT_EQ(codec.decode(stored), noise(2));
        // 5 is 10 as a code; -2 is 3.
        for (auto const& [value, low, high] : {std::tuple<int, int, int>{5, version == 1 ? 5 : 10, 0},
                                               {-2, version == 1 ? 0xfe : 3, version == 1 ? 0xff : 0}}) {
            auto const sample = static_cast<std::int16_t>(value);
            Bytes const bytes =
                joined(Bytes(256, static_cast<std::uint8_t>(low)), Bytes(256, static_cast<std::uint8_t>(high)));
            StoredTile const uniform = codec.encode(tileOf(3, Samples(256, sample)));
            EXPECT_EQ(uniform.crc, crcOf(bytes)) << version << ", " << value;
            EXPECT_EQ(codec.decode(uniform), Samples(256, sample));
        }
    }
}

// Of a picture of 36 samples per side, which has bands of 20: tile 1 has four columns of the band, then 0.
TEST(TileCodecTest, ChecksumsOfOlderVersionsAreOfTheBandsPart) {
    TileCodec codec(infoOf(36), 2);
    Bytes bytes(kTileBytes);
    for (size_t i = 0; i < 256; ++i)
        bytes[i] = i % 16 < 4 ? 14 : 0;
    TileAddress const last{1, Band::HL, 0, 1, 0};
    TileAddress const whole{1, Band::HL, 0, 0, 0};
    Bytes const full = joined(Bytes(256, 14), Bytes(256, 0));
    // Twice and in turns: checksums are cached.
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(codec.isAsWritten(last, 7, crcOf(bytes)));
        EXPECT_TRUE(codec.isAsWritten(whole, 7, crcOf(full)));
        EXPECT_FALSE(codec.isAsWritten(last, 7, crcOf(full)));
        EXPECT_FALSE(codec.isAsWritten(whole, 7, crcOf(bytes)));
        EXPECT_FALSE(codec.isAsWritten(whole, 8, crcOf(full)));
    }
}

TEST(TileCodecTest, ManyValuesOfOlderVersionsAreTested) {
    TileCodec codec(infoOf(1000), 2);
    for (int round = 0; round < 2; ++round)
        for (int value = 0; value < 200; ++value) {
            Bytes const bytes = joined(Bytes(256, static_cast<std::uint8_t>(2 * value % 256)),
                                       Bytes(256, static_cast<std::uint8_t>(2 * value / 256)));
            ASSERT_TRUE(codec.isAsWritten({1, Band::HL, 0, 0, 0}, static_cast<std::int16_t>(value), crcOf(bytes)));
        }
}

TEST(TileCodecTest, AnotherPlaceIsNotTheTilesOwn) {
    TileCodec codec(infoOf(1000));
    for (Samples const& samples : {noise(1), Samples(256, 7)}) {
        StoredTile const stored = codec.encode(tileOf(3, samples));
        EXPECT_EQ(codec.decode(stored), samples);
        for (TileAddress const& other : {TileAddress{1, Band::HL, 0, 4, 0}, TileAddress{1, Band::HL, 0, 3, 1},
                                         TileAddress{1, Band::LH, 0, 3, 0}, TileAddress{2, Band::HL, 0, 3, 0}}) {
            StoredTile moved = stored;
            moved.address = other;
            EXPECT_EQ(codec.decode(moved), std::nullopt) << toText(other);
        }
    }
}

// Each frame decodes to the tile's bytes if its header is ignored.
TEST(TileCodecTest, OnlyOneFrameThatSaysTheTilesLengthIsUnpacked) {
    TileCodec codec(infoOf(1000));
    StoredTile const whole = codec.encode(tileOf(3, noise(1)));
    Bytes const bytes = unpacked(whole.data);
    StoredTile tile = whole;
    tile.data = packed(bytes);
    EXPECT_EQ(codec.decode(tile), noise(1));
    auto const middle = bytes.begin() + 100;
    tile.data = joined(packed(Bytes(bytes.begin(), middle)), packed(Bytes(middle, bytes.end())));
    ASSERT_EQ(unpacked(tile.data), bytes);
    EXPECT_EQ(codec.decode(tile), std::nullopt) << "two frames";
    // A skippable frame of four bytes.
    tile.data = joined(whole.data, {0x50, 0x2a, 0x4d, 0x18, 4, 0, 0, 0, 1, 2, 3, 4});
    ASSERT_EQ(unpacked(tile.data), bytes);
    EXPECT_EQ(codec.decode(tile), std::nullopt) << "a frame and one to be passed over";
    ZSTD_CCtx* const context = ZSTD_createCCtx();
    ZSTD_CCtx_setParameter(context, ZSTD_c_contentSizeFlag, 0);
    tile.data.resize(ZSTD_compressBound(bytes.size()));
    tile.data.resize(ZSTD_compress2(context, tile.data.data(), tile.data.size(), bytes.data(), bytes.size()));
    ZSTD_freeCCtx(context);
    ASSERT_EQ(unpacked(tile.data), bytes);
    EXPECT_EQ(codec.decode(tile), std::nullopt) << "a frame that does not say its length";
}

TEST(TileCodecTest, AFrameOfAnotherLengthIsNotUnpacked) {
    TileCodec codec(infoOf(1000));
    for (size_t const count : {kTileBytes - 1, kTileBytes + 1, size_t{0}, size_t{200'000'000}}) {
        Bytes const bytes(count);
        StoredTile tile{{1, Band::HL, 0, 3, 0}, std::nullopt, crcOf(joined(kKey, bytes)), packed(bytes)};
        EXPECT_EQ(codec.decode(tile), std::nullopt) << count;
    }
}

TEST(TileCodecTest, NoTileHasMoreDataThanItSays) {
    TileCodec codec(infoOf(1000));
    EXPECT_EQ(codec.maxDataBytes(), ZSTD_compressBound(kTileBytes));
    EXPECT_LE(codec.encode(tileOf(0, noise(3))).data.size(), codec.maxDataBytes());
}
