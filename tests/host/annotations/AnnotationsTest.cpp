#include "host/annotations/Annotations.h"

#include <gtest/gtest.h>

namespace {

using Kind = Annotations::Kind;

void add(Annotations& all, Kind kind, std::vector<std::vector<Place>> const& parts, std::string const& text = "") {
    all.addShape(kind, {1, 2, 3}, text, std::nullopt);
    for (auto const& part : parts) {
        all.addPart();
        for (Place const& place : part)
            all.addPlace(place);
        if (kind == Kind::Area) all.closeRing();
    }
}

} // namespace

TEST(AnnotationsTest, AnAreaHasWhatLiesWithinAndNotItsHoles) {
    Annotations all;
    add(all, Kind::Area,
        {{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {{4, 4}, {6, 4}, {6, 6}, {4, 6}}, {{20, 0}, {30, 0}, {25, 8}}});
    auto const has = [&](double x, double y) { return all.has(all.shapes()[0], {x, y}, 0); };
    EXPECT_TRUE(has(1, 1));
    EXPECT_TRUE(has(9.5, 5));
    EXPECT_FALSE(has(5, 5)) << "the hole";
    EXPECT_FALSE(has(-1, 5));
    EXPECT_FALSE(has(15, 5));
    EXPECT_TRUE(has(25, 4)) << "the second polygon";
    EXPECT_FALSE(has(21, 7));
}

TEST(AnnotationsTest, LinesAndPointsHaveWhatIsNear) {
    Annotations all;
    add(all, Kind::Line, {{{0, 0}, {10, 0}, {10, 10}}, {{50, 50}, {50, 50}}});
    add(all, Kind::Point, {{{3, 4}, {30, 40}}});
    auto const line = [&](double x, double y) { return all.has(all.shapes()[0], {x, y}, 2); };
    EXPECT_TRUE(line(5, 1.9));
    EXPECT_FALSE(line(5, 2.1));
    EXPECT_TRUE(line(11.9, 7));
    EXPECT_FALSE(line(-2.1, 0)) << "beyond its end";
    EXPECT_TRUE(line(-1.9, 0));
    EXPECT_FALSE(line(3, 5)) << "it is not closed";
    EXPECT_TRUE(line(51, 51)) << "both ends in one place";
    auto const point = [&](double x, double y) { return all.has(all.shapes()[1], {x, y}, 2); };
    EXPECT_TRUE(point(3, 5.9));
    EXPECT_TRUE(point(31, 41));
    EXPECT_FALSE(point(3, 6.1));
}

TEST(AnnotationsTest, PartsAndTextsBelongToTheirShapes) {
    Annotations all;
    add(all, Kind::Line, {{{0, 0}, {1, 1}}, {{2, 2}, {3, 3}, {4, 4}}}, "a");
    add(all, Kind::Line, {{{5, 5}, {6, 6}}}, "a");
    add(all, Kind::Area, {{{7, 7}, {9, 7}, {8, 9}, {7, 7}}}, "b");
    EXPECT_EQ(all.part(all.shapes()[0], 1).places, 3U);
    EXPECT_EQ(all.part(all.shapes()[0], 1).first[2].x, 4);
    EXPECT_EQ(all.part(all.shapes()[1], 0).first[0].x, 5);
    EXPECT_EQ(all.part(all.shapes()[2], 0).places, 3U);
    EXPECT_EQ(all.text(all.shapes()[0]), "a");
    EXPECT_EQ(all.text(all.shapes()[1]), "a");
    EXPECT_EQ(all.text(all.shapes()[2]), "b");
    EXPECT_EQ(all.places(), 10U);
    EXPECT_EQ(all.shapes()[0].box.right, 4);
    EXPECT_EQ(all.shapes()[1].box.left, 5);
}
