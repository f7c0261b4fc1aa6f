#include "host/output/StripCompressor.h"
#include "tests/support/FailingThreads.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

namespace {

using Strip = StripCompressor::Strip;

Strip noise(size_t bytes, unsigned seed) {
    std::mt19937 random(seed);
    Strip made(bytes);
    for (std::uint8_t& byte : made)
        byte = static_cast<std::uint8_t>(random() >> 27U); // it can be compressed
    return made;
}

// Inflates, and adds each sample to the next one of its band: as the format says.
Strip rowsOf(Strip const& compressed, size_t bytes, StripCompressor::Layout const& layout) {
    Strip rows(bytes);
    uLongf size = bytes;
    EXPECT_EQ(uncompress(rows.data(), &size, compressed.data(), compressed.size()), Z_OK);
    EXPECT_EQ(size, bytes);
    size_t const sampleBytes = layout.bits / 8;
    for (size_t row = 0; row < bytes; row += layout.rowBytes)
        for (size_t i = layout.bands * sampleBytes; i < layout.rowBytes; i += sampleBytes) {
            std::uint8_t* const at = &rows[row + i];
            std::uint8_t const* const left = at - layout.bands * sampleBytes;
            unsigned const sum = sampleBytes == 1
                                     ? unsigned{*at} + *left
                                     : (at[0] | unsigned{at[1]} << 8U) + (left[0] | unsigned{left[1]} << 8U);
            at[0] = static_cast<std::uint8_t>(sum);
            if (sampleBytes == 2) at[1] = static_cast<std::uint8_t>(sum >> 8U);
        }
    return rows;
}

// All strips through a compressor, taken as a writer takes them.
std::vector<Strip> compressed(std::vector<Strip> const& strips, StripCompressor::Layout const& layout, size_t jobs) {
    StripCompressor compressor(layout, jobs);
    std::vector<Strip> taken;
    size_t most = 0;
    size_t waiting = 0;
    for (Strip strip : strips) {
        compressor.add(std::move(strip));
        most = std::max(most, ++waiting);
        for (; compressor.isFull(); --waiting)
            taken.push_back(compressor.take());
    }
    EXPECT_LE(most, 4 * std::max<size_t>(jobs, 1));
    while (!compressor.isEmpty())
        taken.push_back(compressor.take());
    return taken;
}

} // namespace

TEST(StripCompressorTest, StripsComeOutInTheirOrderWithAllSamples) {
    for (size_t const bits : {8u, 16u})
        for (size_t bands = 1; bands <= 4; ++bands)
            for (size_t const width : {1u, 2u, 97u}) {
                StripCompressor::Layout const layout{width * bands * bits / 8, bands, bits};
                std::vector<Strip> strips;
                for (unsigned i = 0; i < 40; ++i)
                    strips.push_back(noise(layout.rowBytes * (1 + i % 7), i));
                auto const taken = compressed(strips, layout, 3);
                ASSERT_EQ(taken.size(), strips.size());
                for (size_t i = 0; i < strips.size(); ++i)
                    EXPECT_TRUE(rowsOf(taken[i], strips[i].size(), layout) == strips[i]) << bands << ", " << bits;
            }
}

TEST(StripCompressorTest, TheBytesDoNotDependOnTheNumberOfThreads) {
    StripCompressor::Layout const layout{300, 3, 8};
    std::vector<Strip> strips;
    for (unsigned i = 0; i < 60; ++i)
        strips.push_back(noise(3000, i));
    auto const alone = compressed(strips, layout, 0);
    for (size_t const jobs : {1u, 2u, 7u})
        EXPECT_TRUE(compressed(strips, layout, jobs) == alone) << jobs;
}

TEST(StripCompressorTest, WithoutThreadsTheCallerCompresses) {
    StripCompressor::Layout const layout{300, 3, 8};
    std::vector<Strip> const strips(20, noise(3000, 1));
    auto const alone = compressed(strips, layout, 0);
    for (size_t const threads : {0u, 1u}) {
        ThreadLimit const limit(threads);
        EXPECT_TRUE(compressed(strips, layout, 4) == alone);
        EXPECT_GT(ThreadLimit::refused(), 0u);
    }
}

TEST(StripCompressorTest, WhatWaitsIsDroppedAtTheEnd) {
    StripCompressor::Layout const layout{3000, 3, 8};
    for (int i = 0; i < 20; ++i) {
        StripCompressor compressor(layout, 3);
        for (unsigned strip = 0; strip < 12; ++strip)
            compressor.add(noise(300000, strip));
    }
}

// Of rows of 40 MB two are enough.
TEST(StripCompressorTest, FewerLongRowsWait) {
    StripCompressor compressor({size_t{40} << 20, 1, 8}, 0);
    compressor.add(Strip(size_t{40} << 20));
    EXPECT_FALSE(compressor.isFull());
    compressor.add(Strip(size_t{40} << 20));
    EXPECT_TRUE(compressor.isFull());
    EXPECT_LT(compressor.take().size(), 1u << 20);
    EXPECT_FALSE(compressor.isFull());
    EXPECT_FALSE(compressor.isEmpty());
    compressor.take();
    EXPECT_TRUE(compressor.isEmpty());
}
