// What fails, in the pipeline's stages or in the store, and what goes while others still work.
#include "host/view/BandReader.h"
#include "host/view/TileLoader.h"
#include "tests/host/store/TestPictures.h"
#include "tests/host/view/TilePipelineFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <new>

using namespace tilepipeline;
using namespace std::chrono_literals;

namespace {

class TilePipelineFailuresTest : public TilePipelineFixture {};

// Loads from a store, on threads.
class LoadingStages final : public NotingStages {
public:
    explicit LoadingStages(std::string const& path)
        : loader_(bandReaders(path, 2, std::make_shared<SampleCache>(1000 * 1000))) {}

    void load(std::vector<TileJob> const& wanted) override { loader_.want(wanted); }
    std::unique_ptr<LoadedTile> takeLoaded() override { return loader_.take(); }
    size_t loading() const override { return loader_.pending(); }
    void wait() { loader_.wait(1000ms); }

private:
    TileLoader loader_;
};

} // namespace

TEST_F(TilePipelineFailuresTest, AnythingThatFailsIsMadeGoodByTheNextAdvance) {
    for (std::string const operation : {"isEmpty", "load", "build", "sourcesOf", "enhance"}) {
        for (int place = 0; place < 3; ++place) {
            SCOPED_TRACE(operation + ", after " + std::to_string(place));
            stages_ = NotingStages();
            start(wideStore());
            pipeline().want(tileAt(0, 0));
            completeAll();
            int left = place;
            bool failed = false;
            stages_.pre = [&](std::string const& name) {
                if (failed || name != operation || left-- > 0) return;
                failed = true;
                throw std::bad_alloc();
            };
            EXPECT_THROW(
                {
                    pipeline().want(threeTiles());
                    EXPECT_FALSE(pipeline().complete());
                    completeAll();
                },
                std::bad_alloc);
            EXPECT_FALSE(pipeline().complete()) << "of the view that has failed nothing is known to be there";
            completeAll();
            EXPECT_EQ(stages_.enhanced.count({0, 1, 0}) + stages_.enhanced.count({0, 2, 0}) +
                          stages_.enhanced.count({0, 3, 0}),
                      3U);
        }
    }
}

TEST_F(TilePipelineFailuresTest, ATileWhoseBuildingFailsStillWaits) {
    start(wideStore());
    pipeline().want(tileAt(0, 0));
    stages_.finishAll();
    stages_.pre = [](std::string const& name) {
        if (name == "build") throw std::bad_alloc();
    };
    EXPECT_THROW(pipeline().advance(0ms), std::bad_alloc);
    EXPECT_EQ(pipeline().waiting(), 3U);
    stages_.pre = nullptr;
    EXPECT_EQ(run(), (Names{"load 2:0,0", "enhance 2:0,0", "load 1:0,0", "load 0:0,0", "enhance 0:0,0"}));
    EXPECT_TRUE(stages_.jobs.empty()) << "nothing is loaded twice";
}

TEST_F(TilePipelineFailuresTest, ATileThatWasBuiltDoesNotWaitEvenWhereSomethingFailedBehindIt) {
    start(wideStore());
    pipeline().want(tileAt(0, 0));
    stages_.finishAll();
    stages_.behindBuild = [] { throw std::bad_alloc(); };
    EXPECT_THROW(pipeline().advance(0ms), std::bad_alloc);
    stages_.behindBuild = nullptr;
    run();
    EXPECT_TRUE(pipeline().complete());
    EXPECT_EQ(pipeline().waiting(), 0U);
}

TEST_F(TilePipelineFailuresTest, WhereDamageIsNotToleratedItIsThrown) {
    start(wideStore());
    pipeline().want(tileAt(0, 0));
    stages_.finish("1:0,0", std::make_exception_ptr(damaged("a tile")));
    EXPECT_THROW(pipeline().advance(0ms), HostError);
    stages_.pre = [](std::string const& name) {
        if (name == "isEmpty") throw damaged("the index");
    };
    EXPECT_THROW(pipeline().want(tileAt(1, 0)), HostError);
}

TEST_F(TilePipelineFailuresTest, WhatDependsOnADamagedTileIsAHoleAndNotAskedForAgain) {
    start(wideStore(), true);
    pipeline().want(threeTiles());
    stages_.finish("0:1,0");
    pipeline().advance(0ms);
    stages_.finish("1:0,0", std::make_exception_ptr(damaged("a tile")));
    EXPECT_TRUE(pipeline().advance(0ms)) << "a hole can be seen";
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "0:2,0", "0:3,0"}));
    EXPECT_EQ(pipeline().waiting(), 4U) << "0:1,0 has gone";
    EXPECT_EQ(namesOf(pipeline().holes()), Names{"0:1,0"});
    EXPECT_EQ(namesOf(pipeline().sound()), (Names{"0:2,0", "0:3,0"}));
    EXPECT_FALSE(pipeline().complete());
    stages_.finishAll();
    run();
    EXPECT_TRUE(pipeline().complete()) << "but for the hole";
    EXPECT_EQ(stages_.rebuilt.count({0, 1, 0}), 0U);
}

TEST_F(TilePipelineFailuresTest, WithoutParentsADamagedTileIsAHoleAlone) {
    stages_.parents = false;
    start(wideStore(), true);
    pipeline().want(threeTiles());
    stages_.finish("2:0,0", std::make_exception_ptr(HostError(HostError::Kind::UnreadableImage, "tile 2:0,0")));
    stages_.finish("0:2,0", std::make_exception_ptr(HostError(HostError::Kind::UnreadableImage, "tile 0:2,0")));
    stages_.finishAll();
    run();
    EXPECT_TRUE(pipeline().complete());
    EXPECT_EQ(namesOf(pipeline().holes()), (Names{"0:2,0"}));
    EXPECT_EQ(damages_->count(), 2U);
    EXPECT_EQ(damages_->first(), "tile 2:0,0");
}

TEST_F(TilePipelineFailuresTest, WithoutTheIndexOfAreasEverythingIsLoaded) {
    stages_.empty = {{1, 1, 0}};
    stages_.pre = [](std::string const& name) {
        if (name == "isEmpty") throw damaged("the index");
    };
    start(wideStore(), true);
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "0:2,0"}));
    EXPECT_EQ(damages_->first(), "the index");
    EXPECT_EQ(damages_->count(), 0U);
    completeAll();
}

TEST_F(TilePipelineFailuresTest, WhereAskingFailsTheNextAdvanceAsks) {
    start(wideStore());
    pipeline().want(tileAt(0, 0));
    stages_.pre = [](std::string const& name) {
        if (name == "load") throw std::bad_alloc();
    };
    EXPECT_THROW(pipeline().want(tileAt(3, 0)), std::bad_alloc);
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:0,0", "0:0,0"})) << "what was asked for before";
    stages_.pre = nullptr;
    pipeline().advance(0ms);
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "0:3,0"}));
}

TEST_F(TilePipelineFailuresTest, APipelineMayGoWhileThreadsLoad) {
    TemporaryFolder const folder;
    ImportOptions options;
    options.tileSize = 64;
    options.levels = 2;
    StoreInfo const info = testpictures::import(testpictures::picture(3000, 2600, 1, 8, testpictures::Content::Noise),
                                                folder.path("a.vlm"), options);
    View const all{Zoom(), 0, 0, 3000, 2600, false};
    for (int rounds = 0; rounds < 3; ++rounds) {
        LoadingStages stages(folder.path("a.vlm"));
        Damages damages(info.levels, false);
        {
            TilePipeline pipeline(info, {1000, true, false}, stages, damages);
            pipeline.want(all);
            stages.wait();
            for (int steps = 0; steps < rounds; ++steps)
                pipeline.advance(0ms);
            // The threads rest while 16 tiles are finished and not taken; 49 are needed.
            ASSERT_GT(stages.loading(), 20U);
        }
        EXPECT_GT(stages.loading(), 20U) << "the threads go on, for whoever comes next";
        TilePipeline next(info, {1000, true, false}, stages, damages);
        next.want(all);
        while (!next.complete()) {
            if (!next.advance(100ms)) stages.wait();
        }
        EXPECT_EQ(stages.rebuilt.size(), 36U + 9U + 4U) << "6 x 6, 3 x 3 and 2 x 2 tiles";
    }
}
