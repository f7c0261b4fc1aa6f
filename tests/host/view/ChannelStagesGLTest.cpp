// Pictures of any samples by the levels of their files, beside a model that reckons pixel by pixel.
#include "host/view/ChannelStages.h"

#include "host/HostError.h"
#include "tests/host/image/TestTiff.h"
#include "tests/host/view/DisplayModel.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/LongRun.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>

using displaymodel::byteOf;
using displaymodel::Range;
using pictureview::describe;
using pictureview::frameOf;
using pictureview::kBackground;
using pictureview::Level;
using namespace std::chrono_literals;

namespace {

constexpr size_t kWidth = 640; // halves three times
constexpr size_t kHeight = 712;
constexpr size_t kLevels = 2; // down to 160 x 178
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// The samples of each level, interleaved, each level of other noise.
template <class Sample>
struct File {
    size_t bands = 1;
    std::vector<std::vector<Sample>> levels;
};

template <class Sample>
File<Sample> fileOf(size_t bands, std::function<Sample(std::mt19937&)> const& sample) {
    File<Sample> file;
    file.bands = bands;
    std::mt19937 random(static_cast<std::uint32_t>(bands * 7 + sizeof(Sample)));
    for (size_t level = 0; level <= kLevels; ++level) {
        std::vector<Sample> samples((kWidth >> level) * (kHeight >> level) * bands);
        for (Sample& one : samples)
            one = sample(random);
        file.levels.push_back(samples);
    }
    return file;
}

// Most of the type's values, and few at its ends, so that percentiles lie within.
template <class Sample>
Sample spread(std::mt19937& random) {
    auto const share = static_cast<double>(random() % 1000000) / 1e6;
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(2000 * share * share - 300);
    } else {
        auto const low = static_cast<double>(std::numeric_limits<Sample>::lowest());
        auto const high = static_cast<double>(std::numeric_limits<Sample>::max());
        return static_cast<Sample>(low + (high - low) * share * share);
    }
}

// Of the coarsest level.
template <class Sample>
Range automatic(File<Sample> const& file, std::vector<size_t> const& bands, double nodata = kNotANumber) {
    std::vector<double> numbers;
    std::vector<Sample> const& samples = file.levels.back();
    for (size_t i = 0; i < samples.size(); i += file.bands) {
        for (size_t const band : bands) {
            auto const number = static_cast<double>(samples[i + band]);
            if (std::isfinite(number) && number != nodata) numbers.push_back(number);
        }
    }
    return displaymodel::automatic(numbers);
}

using Rgba = std::array<std::uint8_t, 4>;

// RGBA levels: what `show` makes of each pixel's samples.
template <class Sample>
std::vector<Level> shownLevels(File<Sample> const& file, std::function<Rgba(Sample const*)> const& show) {
    std::vector<Level> levels;
    for (size_t level = 0; level <= kLevels; ++level) {
        Level shown{kWidth >> level, kHeight >> level, 4, {}};
        std::vector<Sample> const& samples = file.levels[level];
        for (size_t i = 0; i < samples.size(); i += file.bands) {
            Rgba const rgba = show(&samples[i]);
            shown.bytes.insert(shown.bytes.end(), rgba.begin(), rgba.end());
        }
        levels.push_back(shown);
    }
    return levels;
}

template <class Sample>
std::vector<Level> greyLevels(File<Sample> const& file, Range const& range, double nodata = kNotANumber) {
    return shownLevels<Sample>(file, [=](Sample const* samples) -> Rgba {
        auto const sample = static_cast<double>(*samples);
        if (std::isnan(sample) || sample == nodata) return {0, 0, 0, 0};
        auto const grey = static_cast<std::uint8_t>(byteOf(sample, range));
        return {grey, grey, grey, 255};
    });
}

class ChannelStagesGLTest : public PictureViewFixture {
protected:
    using Edit = std::function<void(testtiff::Directory&)>;

    template <class Sample>
    std::shared_ptr<Pyramid const> open(File<Sample> const& file, Edit const& edit = nullptr) const {
        std::vector<testtiff::Directory> directories;
        for (size_t level = 0; level <= kLevels; ++level) {
            auto directory = testtiff::directory<Sample>(static_cast<std::uint32_t>(kWidth >> level),
                                                         static_cast<std::uint32_t>(kHeight >> level),
                                                         static_cast<std::uint16_t>(file.bands), file.levels[level]);
            directory.tile = 64;
            directory.subfileType = level == 0 ? 0 : 1;
            if (edit) edit(directory);
            directories.push_back(directory);
        }
        testtiff::write(folder_.path("samples.tif"), directories);
        return openPyramid(folder_.path("samples.tif")).pyramid;
    }

    static PictureSource shown(std::shared_ptr<Pyramid const> const& pyramid, DisplayRequest const& request = {}) {
        PictureSource source(pyramid);
        source.display = request;
        return source;
    }

    void expectRandomViews(PictureView& view, std::vector<Level> const& levels, size_t count = views()) {
        for (size_t i = 0; i < count; ++i) {
            View const wanted = randomView(view.info());
            ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
        }
    }

    static size_t views() {
        if (isExhaustiveRun()) return 100;
        return runsOffLlvmpipe() || VELMORA_THREAD_SANITIZER ? 5 : 15;
    }
    // After a change of the settings.
    static size_t fewViews() { return std::min<size_t>(views() / 4, 4); }

    template <class Sample>
    void expectGreyIsShown() {
        auto const file = fileOf<Sample>(1, spread<Sample>);
        PictureView view(instance_, shown(open(file)), options());
        ASSERT_EQ(view.info().levels, kLevels);
        expectRandomViews(view, greyLevels(file, automatic(file, {0})));
    }
};

TEST_F(ChannelStagesGLTest, WholeNumbersOfEveryTypeAreShownInTheirAutomaticRange) {
    expectGreyIsShown<std::uint16_t>();
    expectGreyIsShown<std::int16_t>();
    expectGreyIsShown<std::uint32_t>();
    expectGreyIsShown<std::int32_t>();
}

TEST_F(ChannelStagesGLTest, FloatsAreShownInTheirAutomaticRange) {
    expectGreyIsShown<float>();
    expectGreyIsShown<double>();
}

TEST_F(ChannelStagesGLTest, BytesAreShownWhole) {
    auto const file = fileOf<std::int8_t>(1, spread<std::int8_t>);
    PictureView view(instance_, shown(open(file)), options());
    expectRandomViews(view, greyLevels(file, {-128, 127}));
}

TEST_F(ChannelStagesGLTest, TheRangeThatIsAskedForIsShown) {
    auto const file = fileOf<std::uint16_t>(1, spread<std::uint16_t>);
    DisplayRequest request;
    request.range = SampleRange{1000, 9000.5};
    PictureView view(instance_, shown(open(file), request), options());
    expectRandomViews(view, greyLevels(file, {1000, 9000.5}));
}

TEST_F(ChannelStagesGLTest, WhatIsNotANumberIsTransparent) {
    auto const file = fileOf<float>(1, [](std::mt19937& random) {
        if (random() % 3 == 0) return std::nanf("");
        if (random() % 50 == 0) return std::numeric_limits<float>::infinity();
        return spread<float>(random);
    });
    PictureView view(instance_, shown(open(file)), options());
    EXPECT_EQ(view.info().bands, 2u) << "grey and alpha";
    expectRandomViews(view, greyLevels(file, automatic(file, {0})));
}

TEST_F(ChannelStagesGLTest, NodataIsTransparent) {
    auto const file = fileOf<std::int16_t>(
        1, [](std::mt19937& random) { return random() % 3 == 0 ? std::int16_t{-9999} : spread<std::int16_t>(random); });
    auto const pyramid = open(file, [](testtiff::Directory& directory) { directory.nodata = "-9999"; });
    PictureView view(instance_, shown(pyramid), options());
    expectRandomViews(view, greyLevels(file, automatic(file, {0}, -9999), -9999));
}

// The window has its background where the picture is transparent.
TEST_F(ChannelStagesGLTest, FramesShowTheBackgroundThroughWhatIsTransparent) {
    auto const file = fileOf<float>(
        1, [](std::mt19937& random) { return random() % 2 == 0 ? std::nanf("") : spread<float>(random); });
    PictureView view(instance_, shown(open(file)), options());
    View const wanted{Zoom(), 100, 50, 60, 40, false};
    Bytes expected = completed(view, wanted);
    size_t transparent = 0;
    for (size_t i = 0; i < expected.size(); i += 4) {
        if (expected[i + 3] == 255) continue;
        ++transparent;
        std::copy(kBackground.begin(), kBackground.end(), &expected[i]);
        expected[i + 3] = 255;
    }
    EXPECT_GT(transparent, 600u);
    EXPECT_EQ(instance_->getPixels(view.frame(), {0, 60, 0, 40}), expected);
}

template <class Sample>
std::vector<Level> rgbLevels(File<Sample> const& file, Range const& range, double mostAlpha = 0) {
    return shownLevels<Sample>(file, [=](Sample const* samples) {
        Rgba rgba = {0, 0, 0, 255};
        for (size_t i = 0; i < 3; ++i)
            rgba[i] = static_cast<std::uint8_t>(byteOf(static_cast<double>(samples[i]), range));
        if (mostAlpha > 0) rgba[3] = static_cast<std::uint8_t>(byteOf(static_cast<double>(samples[3]), {0, mostAlpha}));
        return rgba;
    });
}

TEST_F(ChannelStagesGLTest, RedGreenAndBlueHaveOneRange) {
    auto const file = fileOf<std::uint16_t>(3, [](std::mt19937& random) {
        return static_cast<std::uint16_t>(random() % (random() % 3 == 0 ? 60000 : 5000));
    });
    PictureView view(instance_, shown(open(file)), options());
    EXPECT_EQ(view.info().bands, 3u);
    expectRandomViews(view, rgbLevels(file, automatic(file, {0, 1, 2})));
}

TEST_F(ChannelStagesGLTest, AlphaIsShownWhole) {
    auto const file = fileOf<std::uint16_t>(4, spread<std::uint16_t>);
    auto const pyramid = open(file, [](testtiff::Directory& directory) { directory.extraSamples = {2}; });
    PictureView view(instance_, shown(pyramid), options());
    EXPECT_EQ(view.info().bands, 4u);
    expectRandomViews(view, rgbLevels(file, automatic(file, {0, 1, 2}), 65535));
}

// Of each four pixels one is not transparent, and its colour is that of the mean.
TEST_F(ChannelStagesGLTest, MeansOfColoursAreWeighedByAlpha) {
    constexpr size_t kSide = 300;
    std::vector<std::uint16_t> samples;
    Level half{kSide / 2, kSide / 2, 4, Bytes(kSide * kSide)};
    for (size_t y = 0; y < kSide; ++y)
        for (size_t x = 0; x < kSide; ++x) {
            bool const isOpaque = (x % 2) + 2 * (y % 2) == (x / 2 + y / 2) % 4;
            for (size_t band = 0; band < 3; ++band) {
                auto const sample = static_cast<std::uint16_t>(257 * ((x * 7 + y * 13 + band * 50) % 256));
                samples.push_back(sample);
                size_t const pixel = y / 2 * half.width + x / 2;
                if (isOpaque) half.bytes[4 * pixel + band] = static_cast<std::uint8_t>(sample / 257);
                // A quarter of 65535 is 16383.75.
                half.bytes[4 * pixel + 3] = 64;
            }
            samples.push_back(isOpaque ? 0xffff : 0);
        }
    auto directory = testtiff::directory<std::uint16_t>(kSide, kSide, 4, samples);
    directory.extraSamples = {2};
    testtiff::write(folder_.path("alpha.tif"), {directory});
    DisplayRequest request;
    request.range = SampleRange{0, 65535};
    PictureView view(instance_, shown(openPyramid(folder_.path("alpha.tif")).pyramid, request), options());
    Bytes const frame = completed(view, {Zoom::nearest(0.5, view.info().levels), 0, 0, kSide / 2, kSide / 2, false});
    EXPECT_TRUE(frame == half.bytes);
}

TEST_F(ChannelStagesGLTest, ColoursOfTwoEqualPrimariesAreColours) {
    auto const file = fileOf<std::uint16_t>(1, spread<std::uint16_t>);
    auto const pyramid = open(file);
    for (Colour const& colour : {Colour{0, 255, 255}, Colour{255, 0, 0}, Colour{90, 90, 200}}) {
        ChannelRequest channel;
        channel.colour = colour;
        DisplayRequest request;
        request.channels = {channel};
        EXPECT_EQ(PictureView(instance_, shown(pyramid, request), options()).info().bands, 3u);
    }
    EXPECT_EQ(PictureView(instance_, shown(pyramid), options()).info().bands, 1u);
}

// Bands of which the file says nothing else, as fluorescence microscopes write them.
template <class Sample>
class Channels {
public:
    explicit Channels(File<Sample> const& file) : file_(file) {}

    // Of channels that are on: their colours in proportion, added.
    std::vector<Level> shown(std::vector<ChannelDisplay> const& channels) const {
        return shownLevels<Sample>(file_, [&](Sample const* samples) {
            std::array<int, 3> sum{};
            bool any = false;
            for (ChannelDisplay const& channel : channels) {
                if (!channel.isOn) continue;
                any = true;
                int const byte =
                    byteOf(static_cast<double>(samples[channel.band]), {channel.tone.low, channel.tone.high});
                Colour const& colour = channel.colours.back();
                for (size_t i = 0; i < 3; ++i)
                    sum[i] += (2 * colour[i] * byte + 255) / 510;
            }
            Rgba rgba{};
            for (size_t i = 0; i < 3; ++i)
                rgba[i] = static_cast<std::uint8_t>(std::min(sum[i], 255));
            rgba[3] = any ? 255 : 0;
            return rgba;
        });
    }

private:
    File<Sample> const& file_;
};

class ChannelSettingsGLTest : public ChannelStagesGLTest {
protected:
    template <class Sample>
    std::shared_ptr<Pyramid const> openChannels(File<Sample> const& file) const {
        return open(file, [&](testtiff::Directory& directory) {
            directory.photometric = 1;
            directory.extraSamples.assign(file.bands - 1, 0);
        });
    }

    // Settings of all kinds, one after the other, on one view.
    template <class Sample>
    void expectSettingsAreShown() {
        auto const file = fileOf<Sample>(5, spread<Sample>);
        PictureView view(instance_, shown(openChannels(file)), options());
        Channels<Sample> const model(file);
        auto channels = view.channels();
        ASSERT_EQ(channels.size(), 5u);
        for (size_t band = 0; band < channels.size(); ++band) {
            bool const whole = sizeof(Sample) == 1;
            Range const range = whole ? Range{0, 255} : automatic(file, {band});
            EXPECT_DOUBLE_EQ(channels[band].tone.low, range.low);
            EXPECT_DOUBLE_EQ(channels[band].tone.high, range.high);
        }
        expectRandomViews(view, model.shown(channels), fewViews());

        double const span = channels[0].tone.high - channels[0].tone.low;
        channels[0].tone.low += span / 7;
        channels[3].colours = colourmap::rampTo({200, 100, 50});
        view.display(channels);
        expectRandomViews(view, model.shown(channels), fewViews());

        channels[1].isOn = false;
        channels[4].isOn = false;
        view.display(channels);
        expectRandomViews(view, model.shown(channels), fewViews());

        channels[1].isOn = true;
        view.display(channels);
        expectRandomViews(view, model.shown(channels), fewViews());

        view.display(view.automaticChannels());
        channels[0].tone.low -= span / 7;
        expectRandomViews(view, model.shown(view.channels()), fewViews());
        EXPECT_DOUBLE_EQ(view.channels()[0].tone.low, automatic(file, {0}).low);
    }
};

TEST_F(ChannelSettingsGLTest, SettingsOfWholeNumbersAreShown) {
    expectSettingsAreShown<std::uint16_t>();
    expectSettingsAreShown<std::uint8_t>();
}

TEST_F(ChannelSettingsGLTest, SettingsOfFloatsAreShown) {
    expectSettingsAreShown<float>();
}

TEST_F(ChannelSettingsGLTest, WithoutAnyChannelAllIsTransparent) {
    auto const file = fileOf<std::uint16_t>(2, spread<std::uint16_t>);
    PictureView view(instance_, shown(openChannels(file)), options());
    auto channels = view.channels();
    for (ChannelDisplay& channel : channels)
        channel.isOn = false;
    view.display(channels);
    View const wanted{Zoom(), 0, 0, 40, 30, false};
    Bytes const frame = completed(view, wanted);
    for (size_t i = 0; i < frame.size(); i += 4)
        ASSERT_EQ(frame[i] + frame[i + 1] + frame[i + 2], 0);
}

// What threads have in work for the settings before must not be shown.
TEST_F(ChannelSettingsGLTest, SettingsMayChangeWhileTilesAreOnTheirWay) {
    auto const file = fileOf<float>(3, spread<float>);
    PictureView view(instance_, shown(openChannels(file)), options());
    Channels<float> const model(file);
    auto channels = view.channels();
    for (int round = 0; round < 12; ++round) {
        view.show(randomView(view.info()));
        for (int turn = 0; turn < round % 3; ++turn)
            view.advance(0ms);
        channels[static_cast<size_t>(round) % 3].tone.high *= 0.9;
        channels[static_cast<size_t>(round) % 2].isOn = round % 4 != 0;
        view.display(channels);
        for (int turn = 0; turn < round % 2; ++turn)
            view.advance(0ms);
        if (round % 3 == 2) expectRandomViews(view, model.shown(channels), fewViews());
    }
}

// What is on the GPU is mixed anew: the file is not needed.
TEST_F(ChannelSettingsGLTest, NewSettingsReadNothingAnew) {
    auto const file = fileOf<std::uint16_t>(3, spread<std::uint16_t>);
    openChannels(file);
    std::string const path = folder_.path("samples.tif");
    PyramidOptions reading;
    reading.cacheBytes = 0;
    PictureView view(instance_, shown(std::shared_ptr<Pyramid const>(openPyramid(path, reading).pyramid)), options());
    Channels<std::uint16_t> const model(file);
    View const wanted{Zoom(), 10, 20, 200, 150, false};
    auto channels = view.channels();
    EXPECT_TRUE(completed(view, wanted) == frameOf(model.shown(channels), wanted));
    std::filesystem::resize_file(path, 8);
    channels[1].tone.high *= 0.7;
    channels[2].colours = colourmap::rampTo({9, 200, 100});
    view.display(channels);
    EXPECT_TRUE(completed(view, wanted) == frameOf(model.shown(channels), wanted));
    EXPECT_EQ(view.damages().count(), 0u);
}

// With no room for codes, tiles are read once more for each setting.
TEST_F(ChannelSettingsGLTest, ASmallBudgetShowsTheSame) {
    auto const file = fileOf<std::uint16_t>(5, spread<std::uint16_t>);
    PictureView::Options small = options();
    small.gpuBytes = 1;
    PictureView view(instance_, shown(openChannels(file)), small);
    Channels<std::uint16_t> const model(file);
    auto channels = view.channels();
    for (int round = 0; round < 3; ++round) {
        channels[2].tone.high *= 0.8;
        view.display(channels);
        expectRandomViews(view, model.shown(channels), fewViews());
    }
}

// Two channels of three slices, each of which is a page of its own.
class StackGLTest : public ChannelSettingsGLTest {
protected:
    using Sample = std::uint16_t;
    static constexpr size_t kChannels = 2;
    static constexpr size_t kSlices = 3;

    StackGLTest() {
        for (size_t slice = 0; slice < kSlices; ++slice)
            slices_.push_back(fileOf<Sample>(kChannels, [&](std::mt19937& random) {
                return static_cast<Sample>(spread<Sample>(random) ^ (slice * 0x2a51));
            }));
    }

    std::shared_ptr<Pyramid const> openStack() const {
        std::vector<testtiff::Directory> pages;
        for (File<Sample> const& slice : slices_)
            for (size_t channel = 0; channel < kChannels; ++channel)
                for (size_t level = 0; level <= kLevels; ++level)
                    pages.push_back(page(slice, channel, level));
        pages.front().description = R"(<OME><Image><Pixels SizeC="2" SizeZ="3" DimensionOrder="XYCZT">)"
                                    R"(<Channel Name="DAPI" Color="-8388353"/><Channel/></Pixels></Image></OME>)";
        testtiff::write(folder_.path("stack.tif"), pages);
        return openPyramid(folder_.path("stack.tif")).pyramid;
    }

    std::vector<File<Sample>> slices_;

private:
    static testtiff::Directory page(File<Sample> const& slice, size_t channel, size_t level) {
        std::vector<Sample> samples;
        for (size_t i = channel; i < slice.levels[level].size(); i += kChannels)
            samples.push_back(slice.levels[level][i]);
        auto made = testtiff::directory<Sample>(static_cast<std::uint32_t>(kWidth >> level),
                                                static_cast<std::uint32_t>(kHeight >> level), 1, samples);
        made.tile = 128;
        made.subfileType = level == 0 ? 0 : 1;
        made.subDirectories = level == 0 ? kLevels : 0;
        return made;
    }
};

TEST_F(StackGLTest, EachSliceIsShown) {
    PictureView view(instance_, shown(openStack()), options());
    EXPECT_EQ(view.stack().slices, kSlices);
    EXPECT_EQ(view.stack().times, 1u);
    auto const channels = view.channels();
    ASSERT_EQ(channels.size(), kChannels);
    EXPECT_EQ(channels[0].name, "DAPI");
    EXPECT_EQ(channels[0].colours, colourmap::rampTo({255, 128, 0}));
    for (size_t band = 0; band < kChannels; ++band)
        EXPECT_DOUBLE_EQ(channels[band].tone.low, automatic(slices_[0], {band}).low) << "that of the first slice";
    for (size_t const slice : {0u, 2u, 1u, 2u}) {
        view.moveTo({slice, 0});
        EXPECT_EQ(view.position(), (StackPosition{slice, 0}));
        expectRandomViews(view, Channels<Sample>(slices_[slice]).shown(channels), fewViews());
    }
}

TEST_F(StackGLTest, ASliceMayBeAskedFor) {
    DisplayRequest request;
    request.position.slice = 2;
    request.channels = {displayrequest::parseChannel("1:FF8000")};
    PictureView view(instance_, shown(openStack(), request), options());
    auto const channels = view.channels();
    EXPECT_FALSE(channels[0].isOn);
    EXPECT_DOUBLE_EQ(channels[1].tone.high, automatic(slices_[2], {1}).high);
    expectRandomViews(view, Channels<Sample>(slices_[2]).shown(channels), fewViews());
    for (StackPosition const& beyond : {StackPosition{3, 0}, StackPosition{0, 1}}) {
        request.position = beyond;
        try {
            PictureView const refused(instance_, shown(openStack(), request), options());
            ADD_FAILURE() << "slice " << beyond.slice << ", time " << beyond.time;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::Usage);
            EXPECT_STREQ(error.what(), beyond.slice == 3 ? "--z is 0 to 2" : "--t is 0: the picture has no others");
        }
    }
}

TEST_F(StackGLTest, SlicesAndSettingsMayChangeWhileTilesAreOnTheirWay) {
    PictureView view(instance_, shown(openStack()), options());
    auto channels = view.channels();
    for (size_t round = 0; round < 12; ++round) {
        view.show(randomView(view.info()));
        for (size_t turn = 0; turn < round % 3; ++turn)
            view.advance(0ms);
        size_t const slice = round * 5 % kSlices;
        view.moveTo({slice, 0});
        channels[round % kChannels].isOn = round % 4 != 1;
        channels[round % kChannels].tone.high *= 0.95;
        view.display(channels);
        if (round % 3 == 2) expectRandomViews(view, Channels<Sample>(slices_[slice]).shown(channels), fewViews());
    }
}

TEST_F(ChannelStagesGLTest, ColourMapsAreForOneChannel) {
    DisplayRequest request;
    request.colourMap = "viridis";
    request.isInverted = true;
    auto const file = fileOf<std::uint16_t>(1, spread<std::uint16_t>);
    PictureView view(instance_, shown(open(file), request), options());
    EXPECT_EQ(view.info().bands, 3u);
    Range const range = automatic(file, {0});
    ColourMap const map = colourmap::named("viridis");
    expectRandomViews(view, shownLevels<std::uint16_t>(file, [&](std::uint16_t const* sample) -> Rgba {
                          Colour const& colour = map[static_cast<size_t>(255 - byteOf(*sample, range))];
                          return {colour[0], colour[1], colour[2], 255};
                      }));
    auto const colours = open(fileOf<std::uint16_t>(3, spread<std::uint16_t>));
    try {
        PictureView const refused(instance_, shown(colours, request), options());
        ADD_FAILURE() << "a colour map of three channels";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::Usage);
        EXPECT_STREQ(error.what(),
                     "a colour map is for one channel, and 3 are shown: choose one with --channel or --bands");
    }
}

TEST_F(ChannelStagesGLTest, PicturesThatAreShownAsTheyAreHaveNoChannels) {
    auto const file = fileOf<std::uint8_t>(3, spread<std::uint8_t>);
    PictureView view(instance_, PictureSource(open(file)), options());
    EXPECT_TRUE(view.channels().empty());
    EXPECT_THROW(view.display({}), std::logic_error);
}

} // namespace
