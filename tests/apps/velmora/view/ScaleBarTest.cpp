#include "apps/velmora/view/ScaleBar.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    char const* name;
    double maxPixels;
    double zoom;
    double microns;
    double pixels;
    char const* text;
};

} // namespace

TEST(ScaleBarTest, IsTheLongestRoundLengthThatFits) {
    for (Row const& row : {
             Row{"100 pixels of 1 micrometre", 160, 1, 1, 100, "100 \xC2\xB5m"},
             Row{"a length that fits exactly", 200, 1, 1, 200, "200 \xC2\xB5m"},
             Row{"five", 199, 0.25, 0.25, 100, "100 \xC2\xB5m"},
             Row{"half a micrometre a pixel", 160, 1, 0.5, 100, "50 \xC2\xB5m"},
             Row{"much of a slide", 160, 1.0 / 64, 0.25, 125, "2 mm"},
             Row{"less than a micrometre", 160, 64, 0.25, 128, "500 nm"},
             Row{"a satellite's metres", 160, 0.5, 10e6, 100, "2000 m"},
             Row{"no resolution", 160, 1, 0, 100, "100 px"},
             Row{"no resolution, magnified", 160, 64, 0, 128, "2 px"},
             Row{"no resolution, far away", 160, 1.0 / 256, 0, 78.125, "20000 px"},
         }) {
        ScaleBar const bar = scaleBar(row.maxPixels, row.zoom, row.microns);
        EXPECT_DOUBLE_EQ(bar.pixels, row.pixels) << row.name;
        EXPECT_EQ(bar.text, row.text) << row.name;
    }
}

TEST(ScaleBarTest, ThereIsNoneOfLessThanAPixelOfThePicture) {
    EXPECT_EQ(scaleBar(50, 64, 0).pixels, 0);
    EXPECT_EQ(scaleBar(0, 1, 1).pixels, 0);
}
