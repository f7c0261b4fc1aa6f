// What is loaded, rebuilt, enhanced and dropped, and in which order, without a window, GL or pixels.
#include "tests/host/view/TilePipelineFixture.h"

using namespace tilepipeline;
using namespace std::chrono_literals;

namespace {

class TilePipelineTest : public TilePipelineFixture {};

} // namespace

TEST_F(TilePipelineTest, CoarseLevelsAreLoadedFirstThenTilesNearTheMiddle) {
    start(wideStore());
    pipeline().want(threeTiles());
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "1:0,0", "0:2,0", "0:1,0", "0:3,0"}));
}

TEST_F(TilePipelineTest, TheCoarsestLevelIsEnhancedFirstThenTheViewsTilesNearTheMiddle) {
    start(wideStore());
    pipeline().want(threeTiles());
    stages_.finishAll();
    EXPECT_EQ(run(), (Names{"load 2:0,0", "enhance 2:0,0", "load 1:1,0", "load 1:0,0", "load 0:2,0", "load 0:1,0",
                            "load 0:3,0", "enhance 0:2,0", "enhance 0:1,0", "enhance 0:3,0"}))
        << "level 1 is not needed any more";
}

TEST_F(TilePipelineTest, AStepIsOneTileAndTimeIsManySteps) {
    start(wideStore());
    pipeline().want(threeTiles());
    stages_.finishAll();
    EXPECT_TRUE(pipeline().advance(0ms));
    EXPECT_EQ(stages_.notes.size(), 1U);
    EXPECT_TRUE(pipeline().advance(100s)) << "returns as soon as there is nothing to do";
    EXPECT_EQ(stages_.notes.size(), 10U);
    EXPECT_FALSE(pipeline().advance(100s));
}

TEST_F(TilePipelineTest, FallbacksAreEnhancedForTilesThatAreMissing) {
    start(wideStore());
    pipeline().want(threeTiles());
    for (char const* const name : {"2:0,0", "1:1,0", "1:0,0", "0:1,0"})
        stages_.finish(name);
    EXPECT_EQ(run(), (Names{"load 2:0,0", "enhance 2:0,0", "load 1:1,0", "load 1:0,0", "load 0:1,0", "enhance 0:1,0",
                            "enhance 1:1,0"}))
        << "1:0,0 has no tile of the view's level left to stand for";
}

TEST_F(TilePipelineTest, WithoutCoarserLevelsOnlyTheViewsLevelIsEnhanced) {
    options_.enhanceCoarserLevels = false;
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    for (char const* const name : {"2:0,0", "1:1,0"})
        stages_.finish(name);
    EXPECT_EQ(run(), (Names{"load 2:0,0", "load 1:1,0"}));
    stages_.finishAll();
    EXPECT_EQ(run(), (Names{"load 0:2,0", "enhance 0:2,0"}));
}

TEST_F(TilePipelineTest, EmptyTilesAndThoseOfTheCacheAreNotLoaded) {
    stages_.empty = {{1, 1, 0}};
    stages_.cached = {{0, 2, 0}};
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.jobNames(), Names{"2:0,0"});
    stages_.finishAll();
    EXPECT_EQ(run(), (Names{"load 2:0,0", "enhance 2:0,0", "empty 1:1,0", "cache 0:2,0", "enhance 0:2,0"}));
}

TEST_F(TilePipelineTest, BandsThatWentFromTheCacheAreLoadedAfterAll) {
    stages_.cached = {{0, 2, 0}};
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    stages_.finishAll();
    pipeline().advance(0ms);
    stages_.cached.clear();
    pipeline().advance(0ms);
    EXPECT_EQ(stages_.jobNames(), Names{"0:2,0"});
}

TEST_F(TilePipelineTest, BandsThatWentWhileNothingElseWasToDoAreLoadedToo) {
    options_.enhanceCoarserLevels = false;
    stages_.cached = {{0, 2, 0}};
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    stages_.finishAll();
    EXPECT_TRUE(pipeline().advance(0ms));
    EXPECT_TRUE(pipeline().advance(0ms));
    EXPECT_EQ(stages_.notes.back(), "load 1:1,0");
    EXPECT_TRUE(stages_.jobs.empty());
    stages_.cached.clear();
    EXPECT_FALSE(pipeline().advance(0ms));
    EXPECT_EQ(stages_.jobNames(), Names{"0:2,0"});
}

TEST_F(TilePipelineTest, NoMoreTilesAreTakenThanMayWait) {
    start(largeStore());
    pipeline().want({Zoom(), 0, 0, 4096, 4096, false});
    auto const names = stages_.jobNames();
    for (size_t i = 1; i < names.size(); ++i)
        stages_.finish(names[i]);
    size_t const finished = stages_.finished.size();
    ASSERT_GT(finished, TilePipeline::kMaxWaiting + 1);
    pipeline().advance(0ms);
    EXPECT_EQ(finished - stages_.finished.size(), TilePipeline::kMaxWaiting);
}

// The coarsest tile is the last one to be loaded, behind more tiles than may wait.
TEST_F(TilePipelineTest, WhereAllWaitForParentsTheFinestGoesAndIsAskedForAgain) {
    start(largeStore());
    pipeline().want({Zoom(), 0, 0, 4096, 4096, false});
    auto const names = stages_.jobNames();
    size_t ofLevel1 = 0;
    for (std::string const& name : names)
        if (name[0] == '1' && ofLevel1++ < TilePipeline::kMaxWaiting / 2) stages_.finish(name);
    for (std::string const& name : names)
        if (name[0] == '0' && stages_.finished.size() < TilePipeline::kMaxWaiting) stages_.finish(name);
    std::string const finest = nameOf(stages_.finished.back()->job.tile);
    EXPECT_EQ(finest[0], '0');
    stages_.finish("3:0,0");
    size_t const pending = stages_.jobs.size();

    EXPECT_FALSE(pipeline().advance(0ms)) << "there is nothing to show";
    EXPECT_EQ(pipeline().waiting(), pending + 1 + TilePipeline::kMaxWaiting - 1);
    Names const done = run();
    ASSERT_FALSE(done.empty()) << "nothing can be done any more";
    EXPECT_EQ(done.front(), "load 3:0,0");
    auto const asked = stages_.jobNames();
    size_t again = 0;
    for (std::string const& name : asked)
        again += std::find(names.begin(), names.end(), name)[0][0] == '0' ? 1U : 0U;
    EXPECT_EQ(again, 64U - (TilePipeline::kMaxWaiting / 2 - 1)) << "one of level 0 has gone, none of level 1";
    completeAll();
    EXPECT_EQ(stages_.enhanced.size(), 1U + 64U) << "the coarsest, and all of the view's level";
}

TEST_F(TilePipelineTest, WhatAnotherViewDoesNotNeedIsDroppedAndAskedForAgainLater) {
    start(wideStore());
    pipeline().want(tileAt(0, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:0,0", "0:0,0"}));
    stages_.finish("0:0,0");
    pipeline().advance(0ms);
    EXPECT_EQ(pipeline().waiting(), 2U + 1U) << "two are being loaded, one waits for its parent";

    pipeline().want(tileAt(1, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:0,0", "0:1,0"}));
    EXPECT_EQ(pipeline().waiting(), 3U) << "0:0,0 has gone";
    stages_.finish("0:1,0");
    pipeline().advance(0ms);
    pipeline().want(threeTiles());
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "1:0,0", "0:2,0", "0:3,0"})) << "0:1,0 waits";

    pipeline().want(tileAt(0, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:0,0", "0:0,0"}));
}

TEST_F(TilePipelineTest, TilesThatComeTooLateAreDropped) {
    start(wideStore());
    pipeline().want(tileAt(0, 0));
    stages_.finish("0:0,0");
    pipeline().want(tileAt(3, 0));
    pipeline().advance(0ms);
    EXPECT_EQ(pipeline().waiting(), stages_.jobs.size());
    completeAll();
    EXPECT_EQ(stages_.rebuilt.count({0, 0, 0}), 0U);
}

TEST_F(TilePipelineTest, EnhancedTilesHaveHalfOfTheBudgetAndRebuiltOnesTheRest) {
    for (auto const& [enhanced, rebuilt] : {std::pair<size_t, size_t>{300, 700}, {800, 500}}) {
        stages_ = NotingStages();
        stages_.bytesEnhanced = enhanced;
        start(wideStore());
        pipeline().want(tileAt(2, 0));
        stages_.finishAll();
        pipeline().advance(0ms);
        EXPECT_EQ(stages_.trimmedEnhancedTo, 500U);
        EXPECT_EQ(stages_.trimmedRebuiltTo, rebuilt);
        EXPECT_EQ(stages_.keptRebuilt, (std::set<LevelTile>{{2, 0, 0}, {1, 1, 0}, {0, 2, 0}}));
        EXPECT_EQ(stages_.keptEnhanced, stages_.keptRebuilt) << "the view's tile and its fallbacks";
    }
}

TEST_F(TilePipelineTest, WhatWentIsFreedOnceItIsMuch) {
    stages_.bytesTrimmed = TilePipeline::kMaxTrimmedBytes / 2;
    start(wideStore());
    // A view that moves lets tiles go before anything is loaded for it.
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.timesFreed, 0u);
    stages_.finishAll();
    for (size_t const times : {1U, 1U, 2U, 2U}) {
        EXPECT_TRUE(pipeline().advance(0ms));
        EXPECT_EQ(stages_.timesFreed, times);
    }
}

TEST_F(TilePipelineTest, AViewIsCompleteWhenAllOfItsLevelIsEnhanced) {
    start(wideStore());
    EXPECT_TRUE(pipeline().complete()) << "without a view nothing is missing";
    pipeline().want(threeTiles());
    EXPECT_FALSE(pipeline().complete());
    stages_.finishAll();
    while (stages_.enhanced.count({0, 3, 0}) == 0) {
        EXPECT_FALSE(pipeline().complete()) << stages_.notes.size();
        ASSERT_TRUE(pipeline().advance(0ms));
    }
    EXPECT_TRUE(pipeline().complete());
    stages_.enhanced.clear();
    EXPECT_FALSE(pipeline().complete());
    pipeline().renew();
    EXPECT_EQ(stages_.notes.back(), "enhance 2:0,0") << "there is something to show at once";
    completeAll();
    pipeline().want({Zoom(), -300, 0, 200, 200, false});
    EXPECT_TRUE(pipeline().complete()) << "beside the picture nothing is missing";
}

TEST_F(TilePipelineTest, TilesAreEnhancedOnceTheirResidualBitsAreThere) {
    stages_.residualsNeeded = true;
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "0:2,0", "0:2,0 residuals"}));
    for (char const* const name : {"2:0,0", "1:1,0", "0:2,0"})
        stages_.finish(name);
    EXPECT_EQ(run().back(), "enhance 1:1,0") << "a fallback";
    EXPECT_FALSE(pipeline().complete());
    stages_.finishAll();
    pipeline().advance(0ms);
    EXPECT_TRUE(pipeline().complete());
    EXPECT_EQ(stages_.notes.back(), "enhance 0:2,0");

    pipeline().want(tileAt(1, 0));
    EXPECT_TRUE(stages_.residuals.empty()) << "those of another view";
    stages_.finish("0:1,0 residuals");
    pipeline().want(tileAt(3, 0));
    pipeline().advance(0ms);
    EXPECT_TRUE(stages_.residuals.empty()) << "they came too late";
}

TEST_F(TilePipelineTest, CodesNeedResidualBitsAndNothingEnhanced) {
    options_.forCodes = true;
    options_.enhanceCoarserLevels = false;
    stages_.residualBits = true;
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "1:1,0", "0:2,0", "0:2,0 residuals"}));
    for (char const* const name : {"2:0,0", "1:1,0", "0:2,0"})
        stages_.finish(name);
    EXPECT_EQ(run(), (Names{"load 2:0,0", "load 1:1,0", "load 0:2,0"}));
    EXPECT_FALSE(pipeline().complete());
    stages_.finishAll();
    pipeline().advance(0ms);
    EXPECT_TRUE(pipeline().complete());
    EXPECT_TRUE(stages_.enhanced.empty());
}

TEST_F(TilePipelineTest, WithoutParentsEachTileIsMadeForItself) {
    stages_.parents = false;
    options_.enhanceCoarserLevels = false;
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"0:2,0"}));
    stages_.finishAll();
    EXPECT_EQ(run(), (Names{"load 0:2,0", "enhance 0:2,0"}));
    EXPECT_TRUE(pipeline().complete());
}

TEST_F(TilePipelineTest, LevelsThatStandInAloneAreLoadedBesides) {
    stages_.parents = false;
    stages_.standIns = {2};
    start(wideStore());
    pipeline().want(tileAt(2, 0));
    EXPECT_EQ(stages_.jobNames(), (Names{"2:0,0", "0:2,0"}));
    stages_.finish("2:0,0");
    EXPECT_EQ(run(), (Names{"load 2:0,0", "enhance 2:0,0"}));
    stages_.finishAll();
    EXPECT_EQ(run(), (Names{"load 0:2,0", "enhance 0:2,0"}));
}
