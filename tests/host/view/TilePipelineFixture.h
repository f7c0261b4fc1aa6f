#pragma once

#include "host/HostError.h"
#include "host/view/TilePipeline.h"
#include "tests/host/view/NotingStages.h"

#include <gtest/gtest.h>

namespace tilepipeline {

using Names = std::vector<std::string>;

// 4 x 1 tiles of level 0, 2 x 1 of level 1 and one of level 2, the coarsest.
inline PictureInfo wideStore() {
    PictureInfo info;
    info.width = 2048;
    info.height = 512;
    info.bands = 3;
    info.levels = 2;
    return info;
}

// 8 x 8 tiles of level 0, 4 x 4 of level 1, 2 x 2 of level 2 and one of level 3.
inline PictureInfo largeStore() {
    PictureInfo info;
    info.width = info.height = 4096;
    info.bands = 3;
    info.levels = 3;
    return info;
}

// Columns 1, 2 and 3 of wideStore()'s level 0; the middle, pixel 1100, lies in column 2.
inline View threeTiles() {
    return {Zoom(), 600, 0, 1000, 512, false};
}

inline View tileAt(std::int64_t column, std::int64_t row) {
    return {Zoom(), column * 512 + 100, row * 512 + 100, 200, 200, false};
}

inline HostError damaged(std::string const& text) {
    return {HostError::Kind::DamagedStore, text};
}

class TilePipelineFixture : public testing::Test {
protected:
    void start(PictureInfo const& info, bool tolerant = false) {
        damages_.emplace(stages_.parents ? info.levels : 0, tolerant);
        pipeline_.emplace(info, options_, stages_, *damages_);
    }

    TilePipeline& pipeline() { return *pipeline_; }

    /// One step at a time, until nothing new can be seen. Returns what was done.
    Names run() {
        stages_.notes.clear();
        while (pipeline().advance(std::chrono::milliseconds(0)))
            ;
        return stages_.notes;
    }

    /// Loads all that is asked for until the view is complete.
    void completeAll() {
        for (int i = 0; i < 1000 && !pipeline().complete(); ++i) {
            stages_.finishAll();
            pipeline().advance(std::chrono::milliseconds(0));
        }
        ASSERT_TRUE(pipeline().complete());
    }

    TilePipeline::Options options_{1000, true, false};
    NotingStages stages_;
    std::optional<Damages> damages_;
    std::optional<TilePipeline> pipeline_;
};

} // namespace tilepipeline
