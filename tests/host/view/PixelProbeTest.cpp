#include "host/view/PixelProbe.h"

#include "host/HostError.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/FailingThreads.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;

namespace {

constexpr size_t kWidth = 70;
constexpr size_t kHeight = 50;
constexpr size_t kBands = 3;

class PixelProbeTest : public testing::Test {
protected:
    using Answer = std::optional<std::vector<double>>;

    // Two pages of three bands each.
    template <class Sample>
    std::unique_ptr<Pyramid> open(std::vector<Sample> const& samples) const {
        std::vector<testtiff::Directory> pages(2);
        for (size_t page = 0; page < 2; ++page) {
            auto shifted = samples;
            for (Sample& sample : shifted)
                sample = static_cast<Sample>(sample + static_cast<Sample>(page));
            pages[page] = testtiff::directory<Sample>(kWidth, kHeight, kBands, shifted);
            pages[page].tile = 16;
        }
        testtiff::write(path(), pages);
        return openPyramid(path()).pyramid;
    }

    template <class Sample>
    static std::vector<Sample> ramp(Sample first) {
        std::vector<Sample> samples(kWidth * kHeight * kBands);
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<Sample>(first + static_cast<Sample>(i));
        return samples;
    }

    static Answer ask(PixelProbe& probe, PixelProbe::Question const& question) {
        probe.ask(question);
        while (probe.isPending())
            probe.wait(1000ms);
        return probe.answer();
    }

    static Answer numbers(std::vector<double> const& samples) { return samples; }

    std::string path() const { return folder_.path("a.tif"); }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(PixelProbeTest, TheSamplesAreThoseOfTheFile) {
    auto const samples = ramp<std::uint16_t>(50000);
    PixelProbe probe(*open(samples));
    EXPECT_FALSE(probe.asked());
    EXPECT_FALSE(probe.isPending());
    EXPECT_FALSE(probe.answer());
    for (auto const& pixel : std::vector<std::pair<size_t, size_t>>{{0, 0}, {17, 33}, {kWidth - 1, kHeight - 1}})
        for (size_t const page : {0u, 1u}) {
            size_t const x = pixel.first;
            size_t const y = pixel.second;
            auto const at = [&](size_t band) {
                return static_cast<double>(
                    static_cast<std::uint16_t>(samples[(y * kWidth + x) * kBands + band] + page));
            };
            EXPECT_EQ(ask(probe, {x, y, {0, 1, 2}, {page, 0}}), numbers({at(0), at(1), at(2)})) << x << ", " << y;
            EXPECT_EQ(ask(probe, {x, y, {2}, {page, 0}}), numbers({at(2)}));
            EXPECT_EQ(probe.asked()->x, x);
        }
}

TEST_F(PixelProbeTest, FloatsAreThemselves) {
    auto samples = ramp<float>(-1000.25F);
    samples[4] = std::numeric_limits<float>::infinity();
    PixelProbe probe(*open(samples));
    EXPECT_EQ(ask(probe, {0, 0, {0, 1}, {}}), numbers({-1000.25, -999.25}));
    EXPECT_EQ(ask(probe, {1, 0, {1}, {}}), numbers({std::numeric_limits<double>::infinity()}));
}

TEST_F(PixelProbeTest, QuestionsAreEqualIfAllOfThemIs) {
    PixelProbe::Question const one{1, 2, {3}, {4, 5}};
    EXPECT_TRUE(one == one);
    EXPECT_TRUE(one != (PixelProbe::Question{2, 2, {3}, {4, 5}}));
    EXPECT_TRUE(one != (PixelProbe::Question{1, 1, {3}, {4, 5}}));
    EXPECT_TRUE(one != (PixelProbe::Question{1, 2, {4}, {4, 5}}));
    EXPECT_TRUE(one != (PixelProbe::Question{1, 2, {3}, {3, 5}}));
    EXPECT_TRUE(one != (PixelProbe::Question{1, 2, {3}, {4, 4}}));
}

// The question that was asked last counts, and a probe may go while it reads.
TEST_F(PixelProbeTest, QuestionsMayComeFasterThanAnswers) {
    auto const samples = ramp<std::uint8_t>(0);
    auto const pyramid = open(samples);
    for (int round = 0; round < 20; ++round) {
        PixelProbe probe(*pyramid);
        for (size_t x = 0; x < kWidth; ++x)
            probe.ask({x, 7, {0}, {}});
        if (round % 2 == 0) continue;
        while (probe.isPending())
            probe.wait(1000ms);
        EXPECT_EQ(probe.answer(), numbers({static_cast<double>(samples[(7 * kWidth + kWidth - 1) * kBands])}));
    }
}

TEST_F(PixelProbeTest, AWaitLastsUntilTheAnswer) {
    auto const pyramid = open(ramp<std::uint8_t>(0));
    for (size_t x = 0; x < kWidth; ++x) {
        PixelProbe probe(*pyramid);
        probe.ask({x, 0, {0}, {}});
        probe.wait(1h);
        ASSERT_TRUE(probe.answer()) << x;
    }
}

TEST_F(PixelProbeTest, WhatCannotBeReadHasNoAnswer) {
    auto const pyramid = open(ramp<std::uint8_t>(0));
    PixelProbe probe(*pyramid);
    ASSERT_TRUE(ask(probe, {0, 0, {0}, {}}));
    EXPECT_FALSE(ask(probe, {kWidth, 0, {0}, {}})) << "beside the picture";
    EXPECT_TRUE(ask(probe, {kWidth - 1, 0, {0}, {}})) << "the next question is another one";
}

TEST_F(PixelProbeTest, WithoutAThreadThereIsNoAnswer) {
    auto const pyramid = open(ramp<std::uint8_t>(0));
    ThreadLimit const none(0);
    PixelProbe probe(*pyramid);
    EXPECT_FALSE(ask(probe, {0, 0, {0}, {}}));
}
