// A store's scene without a window: what each operation says has to be drawn anew.
#include "apps/velmora/view/PictureScene.h"

#include "tests/host/view/PictureViewFixture.h"

#include <gtest/gtest.h>

using testpictures::Content;

namespace {

using Command = Controls::Command;

class PictureSceneGLTest : public PictureViewFixture {
protected:
    void SetUp() override {
        import(testpictures::picture(1300, 1100, 3, 8, Content::Noise));
        options_.picture = options();
        scene_ = std::make_unique<PictureScene>(instance_, path(), options_, Size{300, 200});
    }
    void TearDown() override { scene_.reset(); }

    void complete() {
        do {
            scene_->present(scene_->advance());
            scene_->wait();
        } while (!scene_->complete());
    }
    void completeExtras() {
        while (!scene_->extrasComplete())
            scene_->advanceExtras();
    }

    ViewerOptions options_;
    std::unique_ptr<PictureScene> scene_;
};

} // namespace

TEST_F(PictureSceneGLTest, CommandsSayWhatIsToBeDrawnAnew) {
    complete();
    for (Command const command :
         {Command::Help, Command::Tiles, Command::Mask, Command::Annotations, Command::Ruler, Command::Properties})
        EXPECT_EQ(scene_->command(command), Redraw::Overlay);
    for (Command const command : {Command::Sharpen, Command::Gamma, Command::Equalise, Command::Smooth})
        EXPECT_EQ(scene_->command(command), Redraw::Picture);
    for (Command const command :
         {Command::None, Command::Quit, Command::Leave, Command::Open, Command::Save, Command::Copy, Command::NextSlice,
          Command::PreviousSlice, Command::NextTime, Command::PreviousTime}) // there is one of each
        EXPECT_EQ(scene_->command(command), Redraw::Nothing);
}

TEST_F(PictureSceneGLTest, WhatIsLoadedAndAMovedCameraArePictures) {
    EXPECT_FALSE(scene_->complete());
    EXPECT_EQ(scene_->advance(), Redraw::Picture) << "the first view";
    complete();
    EXPECT_EQ(scene_->advance(), Redraw::Nothing);
    scene_->camera().pan(10, 5);
    EXPECT_FALSE(scene_->complete());
    EXPECT_EQ(scene_->advance(), Redraw::Picture);
    complete();
    scene_->command(Command::Sharpen);
    EXPECT_FALSE(scene_->complete());
    EXPECT_EQ(scene_->advance(), Redraw::Picture) << "tiles that are sharpened";
}

TEST_F(PictureSceneGLTest, TheOverviewNeverPointsTheViewElsewhere) {
    scene_->camera().magnifyTo(1, scene_->camera().middle());
    for (int steps = 0; steps < 3; ++steps) {
        complete();
        EXPECT_FALSE(scene_->extrasComplete());
        Redraw last = Redraw::Nothing;
        while (!scene_->extrasComplete()) {
            ASSERT_NE(last, Redraw::Overlay) << "it was drawn and is not complete";
            last = scene_->advanceExtras();
            ASSERT_NE(last, Redraw::Picture);
            ASSERT_TRUE(scene_->complete());
            ASSERT_EQ(scene_->advance(), Redraw::Nothing);
        }
        EXPECT_EQ(last, Redraw::Overlay);
        EXPECT_EQ(scene_->advanceExtras(), Redraw::Nothing) << "it is drawn once per set of enhancements";
        scene_->camera().pan(300, 0);
        complete();
        EXPECT_TRUE(scene_->extrasComplete());
        scene_->command(Command::Sharpen);
    }
}

TEST_F(PictureSceneGLTest, TheMaskFollowsTheViewWhereItIsOn) {
    complete();
    completeExtras();
    scene_->command(Command::Mask);
    EXPECT_FALSE(scene_->extrasComplete());
    EXPECT_EQ(scene_->advanceExtras(), Redraw::Overlay);
    EXPECT_TRUE(scene_->extrasComplete());
    scene_->camera().pan(10, 0);
    complete();
    EXPECT_FALSE(scene_->extrasComplete());
    scene_->command(Command::Mask);
    EXPECT_TRUE(scene_->extrasComplete()) << "a mask that is off need not fit";
}

TEST_F(PictureSceneGLTest, AnnotationsAreReadBesideThePictureAndWaitedFor) {
    TemporaryFolder const folder;
    writeFile(folder.path("points.geojson"), R"({"type":"Point","coordinates":[40,50]})");
    complete();
    completeExtras();
    scene_->annotate(folder.path("points.geojson"));
    EXPECT_FALSE(scene_->extrasComplete());
    Redraw last = Redraw::Nothing;
    while (!scene_->extrasComplete()) {
        scene_->advanceExtras();
        last = scene_->advance();
    }
    EXPECT_EQ(last, Redraw::Overlay) << "they are there";
    EXPECT_EQ(scene_->advance(), Redraw::Nothing);
}

TEST_F(PictureSceneGLTest, AnnotationsThatCannotBeReadEndOnlyWhatAskedForThemAtItsStart) {
    TemporaryFolder const folder;
    writeFile(folder.path("none.geojson"), "{}");
    auto const read = [&] {
        while (!scene_->extrasComplete()) {
            complete();
            scene_->advanceExtras();
        }
    };
    scene_->annotate(folder.path("none.geojson"));
    EXPECT_NO_THROW(read());
    options_.annotations = folder.path("none.geojson");
    scene_ = std::make_unique<PictureScene>(instance_, path(), options_, Size{300, 200});
    EXPECT_THROW(read(), HostError);
}
