#include "host/annotations/StrokeCanvas.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

constexpr StrokeCanvas::Colour kRed{255, 0, 0};
constexpr StrokeCanvas::Colour kBlue{0, 0, 255};

class StrokeCanvasTest : public testing::Test {
protected:
    void reset(size_t width, size_t height) {
        size_ = {width, height};
        canvas_.reset(size_);
    }
    int alpha(size_t x, size_t y) const { return canvas_.rgba().at(4 * (y * size_.width + x) + 3); }
    int blue(size_t x, size_t y) const { return canvas_.rgba().at(4 * (y * size_.width + x) + 2); }
    size_t drawnPixels() const {
        size_t count = 0;
        for (size_t i = 3; i < canvas_.rgba().size(); i += 4)
            count += canvas_.rgba()[i] != 0 ? 1U : 0U;
        return count;
    }

    Size size_;
    StrokeCanvas canvas_;
};

double distanceTo(Place const& from, Place const& to, double x, double y) {
    double const dx = to.x - from.x;
    double const dy = to.y - from.y;
    double const square = dx * dx + dy * dy;
    double t = square > 0 ? ((x - from.x) * dx + (y - from.y) * dy) / square : 0;
    t = std::min(1.0, std::max(0.0, t));
    return std::hypot(from.x + t * dx - x, from.y + t * dy - y);
}

} // namespace

TEST_F(StrokeCanvasTest, ALineAlongPixelsCoversThemWhole) {
    reset(20, 10);
    canvas_.stroke({2, 5}, {12, 5}, 2, kRed);
    for (size_t y = 0; y < 10; ++y)
        for (size_t x = 0; x < 20; ++x)
            EXPECT_EQ(alpha(x, y), (y == 4 || y == 5) && x >= 1 && x <= 12 ? 255 : 0) << x << "," << y;
    reset(10, 20);
    canvas_.stroke({5, 12}, {5, 2}, 2, kRed);
    for (size_t y = 0; y < 20; ++y)
        for (size_t x = 0; x < 10; ++x)
            EXPECT_EQ(alpha(x, y), (x == 4 || x == 5) && y >= 1 && y <= 12 ? 255 : 0) << x << "," << y;
}

TEST_F(StrokeCanvasTest, PixelsThatAreCoveredInPartAreTransparentInPart) {
    reset(10, 10);
    canvas_.stroke({0, 5.25}, {10, 5.25}, 1, kRed); // rows 4.75 to 5.75
    EXPECT_EQ(alpha(3, 4), 64);
    EXPECT_EQ(alpha(3, 5), 191);
    EXPECT_EQ(alpha(3, 6), 0);
}

TEST_F(StrokeCanvasTest, PixelsNearALineAreItsAndNoOthers) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> at(-30, 90);
    for (int i = 0; i < 400; ++i) {
        reset(64, 48);
        Place const from = {at(random), at(random)};
        Place const to = {at(random), at(random)};
        canvas_.stroke(from, to, 2, kRed);
        for (size_t y = 0; y < size_.height; ++y)
            for (size_t x = 0; x < size_.width; ++x) {
                double const distance =
                    distanceTo(from, to, static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5);
                if (distance < 0.29) {
                    ASSERT_EQ(alpha(x, y), 255) << i << ": " << x << "," << y;
                }
                // The corner of an end, which is cut along pixels, and half of a pixel's diagonal.
                if (distance > 1.42 + 0.71 + 0.71) {
                    ASSERT_EQ(alpha(x, y), 0) << i << ": " << x << "," << y;
                }
            }
    }
}

TEST_F(StrokeCanvasTest, LinesFromFarAwayArriveWhereTheyWould) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> at(0, 400);
    for (int i = 0; i < 100; ++i) {
        Place const from = {at(random), at(random)};
        Place const to = {at(random), at(random)};
        reset(400, 400);
        canvas_.stroke(from, to, 3, kRed);
        std::vector<std::uint8_t> const whole = canvas_.rgba();
        reset(50, 60);
        canvas_.stroke({from.x - 170, from.y - 160}, {to.x - 170, to.y - 160}, 3, kRed);
        for (size_t y = 0; y < 60; ++y)
            for (size_t x = 0; x < 50; ++x)
                ASSERT_NEAR(alpha(x, y), whole[4 * ((y + 160) * 400 + x + 170) + 3], 1) << i << ": " << x << "," << y;
    }
}

TEST_F(StrokeCanvasTest, TheLineThatCoversMoreHasThePixel) {
    reset(10, 10);
    canvas_.stroke({0, 5.25}, {10, 5.25}, 1, kRed); // a quarter of row 4
    canvas_.stroke({0, 4.5}, {10, 4.5}, 1, kBlue);  // all of row 4
    canvas_.stroke({0, 6.1}, {10, 6.1}, 1, kBlue);  // 0.4 of row 5, less than the 0.75
    EXPECT_EQ(blue(3, 4), 255);
    EXPECT_EQ(blue(3, 5), 0);
    EXPECT_EQ(alpha(3, 5), 191);
    canvas_.dot({3.5, 4.5}, kRed);
    EXPECT_EQ(blue(3, 4), 0) << "of equals the later one";
}

TEST_F(StrokeCanvasTest, DotsAndRectanglesTakeWholePixels) {
    reset(10, 8);
    canvas_.dot({2.9, 3.1}, kRed);
    EXPECT_EQ(drawnPixels(), 1U);
    EXPECT_EQ(alpha(2, 3), 255);
    canvas_.rectangle({4.2, 1.2}, {7.8, 5.9}, kRed);
    EXPECT_EQ(drawnPixels(), 1U + 14U); // 4 x 5 without its inside
    EXPECT_EQ(alpha(4, 1), 255);
    EXPECT_EQ(alpha(7, 5), 255);
    EXPECT_EQ(alpha(5, 3), 0);
    for (Place const& outside : {Place{-0.1, 3}, Place{3, -0.1}, Place{10, 3}, Place{3, 8}})
        canvas_.dot(outside, kRed);
    canvas_.rectangle({-5, -5}, {20, 20}, kRed);
    EXPECT_EQ(drawnPixels(), 15U);
}

TEST_F(StrokeCanvasTest, BlocksAreDrawnWhereTheirPixelsAre) {
    reset(100, 70);
    canvas_.stroke({10, 5}, {90, 60}, 2, kRed);
    for (size_t row = 0; row * StrokeCanvas::kBlockSide < 70; ++row)
        for (size_t column = 0; column * StrokeCanvas::kBlockSide < 100; ++column) {
            bool isDrawn = false;
            for (size_t y = row * 32; y < std::min<size_t>(row * 32 + 32, 70); ++y)
                for (size_t x = column * 32; x < std::min<size_t>(column * 32 + 32, 100); ++x)
                    isDrawn = isDrawn || alpha(x, y) != 0;
            EXPECT_EQ(canvas_.isDrawn(column, row), isDrawn) << column << "," << row;
        }
    canvas_.reset(size_);
    EXPECT_EQ(drawnPixels(), 0U);
    EXPECT_FALSE(canvas_.isDrawn(0, 0));
}
