#include "apps/velmora/view/Redraw.h"

#include <gtest/gtest.h>

namespace {

// Frames that are drawn until nothing is left to draw.
int framesOf(DueRedraw& redraw, bool pictureComplete) {
    int frames = 0;
    while (redraw.next(pictureComplete) != Redraw::Nothing) {
        redraw.lower();
        ++frames;
    }
    return frames;
}

} // namespace

TEST(RedrawTest, DrawingWhatIsLoadedLeavesMostOfTheTimeToLoading) {
    EXPECT_NEAR(pauseAfterFrame(0), 16.7, 0.1) << "no more frames than a screen shows";
    EXPECT_NEAR(pauseAfterFrame(3), 16.7, 0.1);
    EXPECT_EQ(pauseAfterFrame(4), 20);
    EXPECT_EQ(pauseAfterFrame(50), 250);
    EXPECT_EQ(pauseAfterFrame(100), 250) << "how it goes on is seen";
    EXPECT_EQ(pauseAfterFrame(1000), 2000);
}

TEST(RedrawTest, NothingIsDueUntilItIsRaised) {
    DueRedraw redraw;
    EXPECT_TRUE(redraw.settled());
    redraw.raise(Redraw::Nothing);
    EXPECT_TRUE(redraw.settled());
    EXPECT_EQ(redraw.next(true), Redraw::Nothing);
}

TEST(RedrawTest, ThePictureIncludesTheOverlay) {
    DueRedraw redraw;
    redraw.raise(Redraw::Picture);
    redraw.raise(Redraw::Overlay);
    EXPECT_EQ(redraw.due(), Redraw::Picture);
    redraw.lower();
    EXPECT_EQ(redraw.due(), Redraw::Nothing);
    redraw.raise(Redraw::Overlay);
    EXPECT_EQ(redraw.due(), Redraw::Overlay);
    redraw.raise(Redraw::Picture);
    EXPECT_EQ(redraw.due(), Redraw::Picture);
}

TEST(RedrawTest, WhatIsDueIsDrawnAtOnceAndTheOverlaySettlesOnceThePictureIsComplete) {
    for (Redraw const what : {Redraw::Overlay, Redraw::Picture}) {
        DueRedraw redraw;
        redraw.raise(what);
        EXPECT_EQ(redraw.next(false), what);
        redraw.lower();
        EXPECT_EQ(redraw.next(false), Redraw::Nothing);
        EXPECT_FALSE(redraw.settled());
        EXPECT_EQ(redraw.next(true), Redraw::Overlay) << "the picture has not changed since";
        EXPECT_EQ(framesOf(redraw, true), DueRedraw::kSettlingFrames - 1);
        EXPECT_TRUE(redraw.settled());
    }
}

TEST(RedrawTest, EachRaiseBeginsTheSettlingAnew) {
    DueRedraw redraw;
    redraw.raise(Redraw::Picture);
    redraw.lower();
    redraw.lower();
    redraw.raise(Redraw::Overlay);
    EXPECT_EQ(framesOf(redraw, true), DueRedraw::kSettlingFrames);
    redraw.raise(Redraw::Nothing);
    EXPECT_TRUE(redraw.settled());
}

TEST(RedrawTest, FramesBeyondTheLastLeaveItSettled) {
    DueRedraw redraw;
    redraw.lower();
    EXPECT_TRUE(redraw.settled());
    redraw.raise(Redraw::Overlay);
    EXPECT_EQ(framesOf(redraw, true), DueRedraw::kSettlingFrames);
}
