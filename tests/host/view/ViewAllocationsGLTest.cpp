// Each `new` of the host and of the backend fails in turn, with a GL driver that has all its memory: what lives on
// shows the same pixels afterwards. FailingAllocationsTest.cpp does the same on a GL that draws nothing.
#include "host/view/PictureRenderer.h"
#include "tests/host/image/TestTiff.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/AllocationSweep.h"

#include <algorithm>

using allocationsweep::Scenario;
using allocationsweep::Threads;
using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;

namespace {

class ViewAllocationsGLTest : public PictureViewFixture {
protected:
    // Channels of a picture of 600 x 80 pixels, in two places and with other settings in the second.
    void expectChannelsAfterwards(PictureSource source, std::string const& name) {
        source.display = DisplayRequest();
        PictureView view(instance_, source, forgetful());
        auto const channels = view.channels();
        ASSERT_EQ(channels.size(), 3U);
        auto others = channels;
        others[0].isOn = false;
        others[1].tone.high = 500;
        others[2].colours = colourmap::rampTo({10, 200, 30});
        auto const draw = [&] {
            view.display(channels);
            Bytes bytes = completed(view, {Zoom(), 5, 5, 40, 30, false});
            view.display(others);
            Bytes const more = completed(view, {Zoom(), 550, 10, 60, 50, false});
            bytes.insert(bytes.end(), more.begin(), more.end());
            settle(view); // what fails behind it is thrown here
            return bytes;
        };
        Bytes const expected = draw();
        for (Threads const threads : {Threads::This, Threads::Others}) {
            auto const swept = scenario(
                name, threads, [&] { draw(); }, [&] { EXPECT_TRUE(draw() == expected); });
            EXPECT_GT(allocationsweep::sweep(swept).thrown, 5U);
        }
    }

    void SetUp() override {
        if (runsOffLlvmpipe()) GTEST_SKIP() << "it runs on llvmpipe";
    }

    static std::vector<enhancement::Step> steps() {
        return {enhancement::Sharpen{2.0}, enhancement::Truncate{1, false}, enhancement::Equalise{3.0}};
    }

    // GL drivers keep threads. Each drawing makes its programs anew: without VELMORA_LONG few allocations have to do.
    static Scenario scenario(std::string const& name, Threads threads, std::function<void()> const& work,
                             std::function<void()> const& check) {
        Scenario made{name + (threads == Threads::This ? "" : ", on its threads"), work, check, threads};
        made.samples = 2;
        made.countsThreads = false;
        return made;
    }
};

} // namespace

TEST_F(ViewAllocationsGLTest, AViewShowsTheSamePixelsAfterwards) {
    Picture const picture = testpictures::picture(1700, 100, 3, 8, Content::Noise);
    StoreInfo const info = import(picture, 256);
    PictureView view(instance_, path(), forgetful());
    View const first{Zoom::nearest(0.8, info.levels), 5, 5, 40, 30, false};
    View const second{Zoom(), 1500, 10, 60, 50, false};
    auto const draw = [&] {
        instance_->clearTiles(); // bands too have to be read
        view.enhance({});
        Bytes bytes = completed(view, first);
        view.enhance(steps());
        Bytes const more = completed(view, second);
        bytes.insert(bytes.end(), more.begin(), more.end());
        settle(view); // what fails behind it is thrown here
        return bytes;
    };
    Bytes const expected = draw();
    Bytes const frame = frameOf(levelsOf(picture, info.levels), first);
    ASSERT_TRUE(std::equal(frame.begin(), frame.end(), expected.begin()));
    for (Threads const threads : {Threads::This, Threads::Others}) {
        auto const swept = scenario(
            "view", threads, [&] { draw(); }, [&] { EXPECT_TRUE(draw() == expected); });
        EXPECT_GT(allocationsweep::sweep(swept).thrown, 5U);
    }
}

TEST_F(ViewAllocationsGLTest, ChannelsShowTheSamePixelsAfterwards) {
    std::vector<float> samples(600 * 80 * 3);
    for (float& sample : samples)
        sample = static_cast<float>(random_() % 1000);
    auto directory = testtiff::directory(600, 80, 3, samples);
    directory.photometric = 1;
    directory.extraSamples = {0, 0};
    testtiff::write(folder_.path("channels.tif"), {directory});
    expectChannelsAfterwards(
        PictureSource(std::shared_ptr<Pyramid const>(openPyramid(folder_.path("channels.tif")).pyramid)), "channels");
}

TEST_F(ViewAllocationsGLTest, ChannelsOfAStoreShowTheSamePixelsAfterwards) {
    import(testpictures::picture(600, 80, 3, 16, Content::Noise));
    expectChannelsAfterwards(PictureSource(path()), "channels of a store");
}

TEST_F(ViewAllocationsGLTest, AStoreIsDrawnAfterwards) {
    Picture const picture = testpictures::picture(330, 100, 3, 8, Content::Noise);
    import(picture);
    for (Threads const threads : {Threads::This, Threads::Others}) {
        auto const draw = [&] {
            Bytes bytes;
            PictureRenderer renderer(instance_, path(), {});
            renderer.render(
                Zoom(), false, {0, 0, picture.width, picture.height},
                [&](std::uint8_t const* rows, size_t count) {
                    bytes.insert(bytes.end(), rows, rows + count * picture.width * picture.bands);
                },
                [](size_t, size_t) {});
            return bytes;
        };
        auto const swept = scenario(
            "render", threads, [&] { draw(); }, [&] { EXPECT_TRUE(draw() == picture.bytes); });
        EXPECT_GT(allocationsweep::sweep(swept).thrown, 3U);
    }
}
