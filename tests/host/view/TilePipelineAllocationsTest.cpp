// Each `new` of a pipeline fails in turn: it goes on with what it was asked for.
#include "tests/host/view/TilePipelineFixture.h"
#include "tests/support/AllocationSweep.h"

using namespace tilepipeline;

namespace {

class TilePipelineAllocationsTest : public TilePipelineFixture {
protected:
    // Without the assertions of completeAll(), which ask for memory themselves.
    void complete() {
        for (int i = 0; i < 1000 && !pipeline().complete(); ++i) {
            stages_.finishAll();
            pipeline().advance(std::chrono::milliseconds(0));
        }
    }

    void sweep(std::string const& name, PictureInfo const& info, std::vector<View> const& views) {
        auto const work = [&] {
            pipeline_.reset();
            stages_ = NotingStages();
            start(info);
            for (View const& view : views) {
                pipeline().want(view);
                complete();
            }
        };
        work();
        std::set<LevelTile> expected; // is there, and stays
        std::set_intersection(stages_.enhanced.begin(), stages_.enhanced.end(), stages_.keptEnhanced.begin(),
                              stages_.keptEnhanced.end(), std::inserter(expected, expected.end()));
        ASSERT_FALSE(expected.empty());
        auto const check = [&] {
            if (!pipeline_) start(info); // the pipeline itself did not come about
            pipeline().want(views.back());
            complete();
            EXPECT_TRUE(pipeline().complete());
            for (LevelTile const& tile : expected)
                EXPECT_EQ(stages_.enhanced.count(tile), 1U) << nameOf(tile);
        };
        EXPECT_GT(allocationsweep::sweep({name, work, check}).thrown, 60U);
    }
};

} // namespace

TEST_F(TilePipelineAllocationsTest, OfAWideStore) {
    sweep("three tiles", wideStore(), {tileAt(0, 0), threeTiles()});
}

TEST_F(TilePipelineAllocationsTest, OfALargeStore) {
    sweep("views far apart", largeStore(), {tileAt(0, 0), tileAt(7, 7), tileAt(3, 4)});
}
