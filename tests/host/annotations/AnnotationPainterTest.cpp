#include "host/annotations/AnnotationPainter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using Kind = Annotations::Kind;

void add(Annotations& all, Kind kind, std::vector<Place> const& places,
         std::optional<StackPosition> const& plane = {}) {
    all.addShape(kind, {static_cast<std::uint8_t>(all.shapes().size()), 200, 0}, "", plane);
    all.addPart();
    for (Place const& place : places)
        all.addPlace(place);
}

void addCircle(Annotations& all, Place const& middle, double radius, int corners) {
    std::vector<Place> places;
    for (int i = 0; i < corners; ++i) {
        double const angle = 2 * 3.14159265 * i / corners;
        places.push_back({middle.x + radius * std::cos(angle), middle.y + radius * std::sin(angle)});
    }
    add(all, Kind::Area, places);
}

View viewOf(double zoom, std::int64_t x, std::int64_t y, size_t width, size_t height) {
    View view;
    view.zoom = Zoom::nearest(zoom, 8);
    view.x = x;
    view.y = y;
    view.width = width;
    view.height = height;
    return view;
}

std::vector<std::uint8_t> painted(Annotations const& all, View const& view, StackPosition const& position = {}) {
    return AnnotationPainter(std::make_shared<Annotations const>(all)).paint(view, position, 2).rgba();
}

size_t drawnPixels(std::vector<std::uint8_t> const& rgba) {
    size_t count = 0;
    for (size_t i = 3; i < rgba.size(); i += 4)
        count += rgba[i] != 0 ? 1U : 0U;
    return count;
}

Annotations random(size_t shapes, double extent) {
    Annotations all;
    std::mt19937 generator(3);
    std::uniform_real_distribution<double> at(0, extent);
    for (size_t i = 0; i < shapes; ++i) {
        Place const middle = {at(generator), at(generator)};
        if (i % 5 == 0)
            add(all, Kind::Line, {middle, {at(generator), at(generator)}, {at(generator), at(generator)}});
        else if (i % 5 == 1)
            add(all, Kind::Point, {middle, {at(generator), at(generator)}});
        else
            addCircle(all, middle, at(generator) / 20, 3 + static_cast<int>(i % 30));
    }
    return all;
}

} // namespace

TEST(AnnotationPainterTest, ViewsBesideEachOtherFitTogether) {
    Annotations const all = random(150, 1500);
    for (double const zoom : {0.11, 0.4, 1.0, 3.0}) {
        View const whole = viewOf(zoom, std::llround(400 * zoom) - 37, std::llround(300 * zoom) + 11, 300, 200);
        std::vector<std::uint8_t> const expected = painted(all, whole);
        ASSERT_GT(drawnPixels(expected), 500U) << zoom;
        for (size_t top = 0; top < 200; top += 50)
            for (size_t left = 0; left < 300; left += 100) {
                auto const part = painted(all, viewOf(zoom, whole.x + static_cast<std::int64_t>(left),
                                                      whole.y + static_cast<std::int64_t>(top), 100, 50));
                for (size_t y = 0; y < 50; ++y)
                    for (size_t i = 0; i < 400; ++i)
                        ASSERT_EQ(part[400 * y + i], expected[4 * ((top + y) * 300 + left) + i])
                            << zoom << ": " << left + i / 4 << "," << top + y;
            }
    }
}

TEST(AnnotationPainterTest, AnOutlineIsWhereThePlacesAre) {
    Annotations all;
    add(all, Kind::Area, {{10, 10}, {50, 10}, {50, 30}, {10, 30}});
    auto const rgba = painted(all, viewOf(2, 4, 6, 120, 70));
    // Corners at 16,14 and 96,54.
    for (size_t y = 0; y < 70; ++y)
        for (size_t x = 0; x < 120; ++x) {
            double const px = static_cast<double>(x) + 0.5;
            double const py = static_cast<double>(y) + 0.5;
            double const outside = std::max({16 - px, px - 96, 14 - py, py - 54});
            int const alpha = rgba[4 * (y * 120 + x) + 3];
            if (std::abs(outside) > 1.6) {
                EXPECT_EQ(alpha, 0) << x << "," << y;
            }
            if (std::abs(outside) < 0.6) {
                EXPECT_EQ(alpha, 255) << x << "," << y;
            }
        }
}

TEST(AnnotationPainterTest, SmallShapesAreSeenAtAnyZoom) {
    Annotations all;
    addCircle(all, {1000, 1000}, 10, 500);
    EXPECT_EQ(drawnPixels(painted(all, viewOf(0.02, 0, 0, 64, 64))), 1U) << "0.4 pixels";
    EXPECT_EQ(drawnPixels(painted(all, viewOf(0.1, 80, 80, 64, 64))), 8U) << "2 pixels, which lie on 3";
    EXPECT_GT(drawnPixels(painted(all, viewOf(1, 980, 980, 64, 64))), 100U);
}

TEST(AnnotationPainterTest, ShapesOfAnotherPlaneAreNotThere) {
    Annotations all;
    add(all, Kind::Point, {{10, 10}}, StackPosition{2, 0});
    add(all, Kind::Point, {{40, 10}});
    View const view = viewOf(1, 0, 0, 60, 20);
    auto const both = painted(all, view, {2, 0});
    auto const one = painted(all, view, {0, 0});
    EXPECT_EQ(drawnPixels(both), 2 * drawnPixels(one));
    AnnotationPainter const painter(std::make_shared<Annotations const>(all));
    EXPECT_EQ(painter.find({11, 10}, 3, {2, 0}), 0U);
    EXPECT_FALSE(painter.find({11, 10}, 3, {0, 0}));
}

TEST(AnnotationPainterTest, OfShapesInsideEachOtherTheSmallestIsFound) {
    Annotations all;
    addCircle(all, {100, 100}, 50, 40);
    addCircle(all, {100, 100}, 10, 40);
    addCircle(all, {100, 100}, 80, 40);
    AnnotationPainter const painter(std::make_shared<Annotations const>(all));
    EXPECT_EQ(painter.find({100, 100}, 1, {}), 1U);
    EXPECT_EQ(painter.find({130, 100}, 1, {}), 0U);
    EXPECT_EQ(painter.find({170, 100}, 1, {}), 2U);
    EXPECT_FALSE(painter.find({200, 100}, 1, {}));
    EXPECT_FALSE(painter.find({165, 165}, 1, {})) << "in the box alone";
}

TEST(AnnotationPainterTest, OneShapeAloneIsDrawnIntoThePartOfTheViewThatHasIt) {
    Annotations const all = random(40, 500);
    AnnotationPainter painter(std::make_shared<Annotations const>(all));
    View const view = viewOf(0.8, 20, -30, 200, 150);
    for (size_t shape = 0; shape < all.shapes().size(); ++shape) {
        std::vector<std::uint8_t> const whole = painter.paintOne(shape, view, 4).rgba();
        View const part = painter.viewOf(shape, view, 4);
        ASSERT_TRUE(part.zoom == view.zoom);
        std::vector<std::uint8_t> const own =
            part.isEmpty() ? std::vector<std::uint8_t>() : painter.paintOne(shape, part, 4).rgba();
        ASSERT_EQ(drawnPixels(own), drawnPixels(whole)) << shape;
        for (size_t y = 0; y < part.height; ++y)
            for (size_t x = 0; x < part.width; ++x) {
                size_t const inWhole =
                    (static_cast<size_t>(part.y - view.y) + y) * view.width + static_cast<size_t>(part.x - view.x) + x;
                for (size_t i = 0; i < 4; ++i)
                    ASSERT_EQ(own[4 * (y * part.width + x) + i], whole[4 * inWhole + i]) << shape;
            }
    }
}

TEST(AnnotationPainterTest, WithoutShapesAllIsTransparent) {
    EXPECT_EQ(drawnPixels(painted(Annotations(), viewOf(1, 0, 0, 30, 30))), 0U);
    EXPECT_FALSE(AnnotationPainter(std::make_shared<Annotations const>()).find({1, 1}, 5, {}));
}
