#include "host/annotations/GeoJson.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

using Kind = Annotations::Kind;
using Colour = std::array<std::uint8_t, 3>;

class GeoJsonTest : public testing::Test {
protected:
    std::string file(std::string const& content) {
        std::string const path = folder_.path("shapes.geojson");
        writeFile(path, content);
        return path;
    }

    geojson::Content read(std::string const& content) { return geojson::read(file(content)); }

    std::string refusal(std::string const& content) {
        try {
            read(content);
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
            std::string const text = error.what();
            std::string const start = "'" + folder_.path("shapes.geojson") + "' holds no annotations in GeoJSON: ";
            EXPECT_EQ(text.substr(0, start.size()), start);
            return text.substr(std::min(start.size(), text.size()));
        }
        return "read";
    }

    TemporaryFolder folder_;
};

std::string featureOf(std::string const& geometry, std::string const& properties = "{}") {
    return R"({"type":"Feature","geometry":)" + geometry + R"(,"properties":)" + properties + "}";
}

std::string collectionOf(std::string const& features) {
    return R"({"type":"FeatureCollection","features":[)" + features + "]}";
}

std::vector<std::pair<double, double>> placesOf(Annotations const& all, size_t shape, size_t part) {
    Annotations::Part const one = all.part(all.shapes().at(shape), part);
    std::vector<std::pair<double, double>> places;
    for (size_t i = 0; i < one.places; ++i)
        places.emplace_back(one.first[i].x, one.first[i].y);
    return places;
}

using Places = std::vector<std::pair<double, double>>;

constexpr auto kTriangle = R"({"type":"Polygon","coordinates":[[[0,0],[10,0],[10,8],[0,0]]]})";

} // namespace

TEST_F(GeoJsonTest, APolygonHasItsRingsOnceAround) {
    geojson::Content const content = read(collectionOf(
        featureOf(R"({"type":"Polygon","coordinates":[[[1,2],[11.5,2],[11,12],[1,2]],[[4,4],[5,4],[5,5],[4,4]]]})")));
    Annotations const& all = content.annotations;
    ASSERT_EQ(all.shapes().size(), 1U);
    EXPECT_EQ(all.shapes()[0].kind, Kind::Area);
    ASSERT_EQ(all.shapes()[0].parts, 2U);
    EXPECT_EQ(placesOf(all, 0, 0), (Places{{1, 2}, {11.5, 2}, {11, 12}}));
    EXPECT_EQ(placesOf(all, 0, 1), (Places{{4, 4}, {5, 4}, {5, 5}}));
    EXPECT_EQ(all.shapes()[0].box.left, 1);
    EXPECT_EQ(all.shapes()[0].box.top, 2);
    EXPECT_EQ(all.shapes()[0].box.right, 11.5);
    EXPECT_EQ(all.shapes()[0].box.bottom, 12);
    EXPECT_EQ(content.withoutGeometry, 0U);
}

TEST_F(GeoJsonTest, ARingThatIsNotClosedKeepsItsLastPlace) {
    geojson::Content const content =
        read(collectionOf(featureOf(R"({"type":"Polygon","coordinates":[[[0,0],[9,0],[9,9]]]})")));
    EXPECT_EQ(placesOf(content.annotations, 0, 0), (Places{{0, 0}, {9, 0}, {9, 9}}));
}

TEST_F(GeoJsonTest, AllGeometriesAreTaken) {
    geojson::Content const content = read(
        collectionOf(featureOf(R"({"type":"MultiPolygon","coordinates":[[[[0,0],[1,0],[1,1]]],)"
                               R"([[[5,5],[6,5],[6,6]],[[5,5],[5,6],[6,6]]]]})") +
                     "," + featureOf(R"({"type":"LineString","coordinates":[[0,0],[3,4]]})") + "," +
                     featureOf(R"({"type":"MultiLineString","coordinates":[[[0,0],[3,4]],[[1,1],[2,2],[3,1]]]})") +
                     "," + featureOf(R"({"type":"Point","coordinates":[7,8]})") + "," +
                     featureOf(R"({"type":"MultiPoint","coordinates":[[7,8],[9,10,-3]]})") + "," +
                     featureOf(R"({"type":"GeometryCollection","geometries":[{"type":"Point","coordinates":[1,2]},)"
                               R"({"type":"LineString","coordinates":[[0,0],[1,1]]}]})")));
    Annotations const& all = content.annotations;
    ASSERT_EQ(all.shapes().size(), 7U);
    std::vector<Kind> kinds;
    std::vector<size_t> parts;
    for (Annotations::Shape const& shape : all.shapes()) {
        kinds.push_back(shape.kind);
        parts.push_back(shape.parts);
    }
    EXPECT_EQ(kinds, (std::vector<Kind>{Kind::Area, Kind::Line, Kind::Line, Kind::Point, Kind::Point, Kind::Point,
                                        Kind::Line}));
    EXPECT_EQ(parts, (std::vector<size_t>{3, 1, 2, 1, 1, 1, 1}));
    EXPECT_EQ(placesOf(all, 0, 2), (Places{{5, 5}, {5, 6}, {6, 6}}));
    EXPECT_EQ(placesOf(all, 2, 1), (Places{{1, 1}, {2, 2}, {3, 1}}));
    EXPECT_EQ(placesOf(all, 4, 0), (Places{{7, 8}, {9, 10}}));
}

TEST_F(GeoJsonTest, NamesClassesAndColoursAreThoseOfQuPath) {
    std::string const classified = R"("classification":{"name":"Tumor","color":[200,0,10]})";
    geojson::Content const content = read(collectionOf(
        featureOf(kTriangle, R"({"objectType":"annotation","name":"Left",)" + classified + "}") + "," +
        featureOf(kTriangle, "{" + classified + "}") + "," +
        featureOf(kTriangle, R"({"name":"Own","color":[1,2,3],)" + classified + "}") + "," +
        featureOf(kTriangle, R"({"classification":{"name":"Old","colorRGB":-3670016}})") + "," +
        featureOf(kTriangle, R"({"classification":{"names":["Cell","Positive"]}})") + "," +
        featureOf(kTriangle, R"({"title":"On a web map","stroke":"#10fF20"})") + "," + featureOf(kTriangle, "null")));
    Annotations const& all = content.annotations;
    std::vector<std::string> texts;
    std::vector<Colour> colours;
    for (Annotations::Shape const& shape : all.shapes()) {
        texts.push_back(all.text(shape));
        colours.push_back(shape.colour);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"Left (Tumor)", "Tumor", "Own (Tumor)", "Old", "Cell: Positive",
                                               "On a web map", ""}));
    // -3670016 is 0xffc80000.
    EXPECT_EQ(colours,
              (std::vector<Colour>{
                  {200, 0, 10}, {200, 0, 10}, {1, 2, 3}, {0xc8, 0, 0}, {255, 0, 0}, {0x10, 0xff, 0x20}, {255, 0, 0}}));
}

TEST_F(GeoJsonTest, ColoursThatAreNoneAreTheUsualOne) {
    std::string features;
    for (char const* const colour :
         {R"("color":[1,2])", R"("color":[1,2,256])", R"("color":[1,-2,3])", R"("color":"red")", R"("color":[1,2.5,3])",
          R"("stroke":"red")", R"("stroke":"#12345")", R"("stroke":"#12345g")", R"("colorRGB":"1")"})
        features += (features.empty() ? "" : ",") + featureOf(kTriangle, "{" + std::string(colour) + "}");
    geojson::Content const content = read(collectionOf(features));
    ASSERT_EQ(content.annotations.shapes().size(), 9U);
    for (Annotations::Shape const& shape : content.annotations.shapes())
        EXPECT_EQ(shape.colour, (Colour{255, 0, 0}));
}

TEST_F(GeoJsonTest, NamesAreFitForAWindow) {
    geojson::Content const content = read(collectionOf(featureOf(kTriangle, R"({"name":"a\nb\u202ec"})")));
    EXPECT_EQ(content.annotations.text(content.annotations.shapes()[0]), "a\xef\xbf\xbd"
                                                                         "b\xef\xbf\xbd"
                                                                         "c");
}

TEST_F(GeoJsonTest, ACellHasItsNucleusToo) {
    std::string const nucleus = R"({"type":"Polygon","coordinates":[[[2,1],[3,1],[3,2],[2,1]]]})";
    geojson::Content const content =
        read(collectionOf(R"({"type":"Feature","geometry":)" + std::string(kTriangle) + R"(,"nucleusGeometry":)" +
                          nucleus + R"(,"properties":{"objectType":"cell","name":"n"}})"));
    ASSERT_EQ(content.annotations.shapes().size(), 2U);
    EXPECT_EQ(placesOf(content.annotations, 1, 0), (Places{{2, 1}, {3, 1}, {3, 2}}));
    EXPECT_EQ(content.annotations.text(content.annotations.shapes()[1]), "n");
}

TEST_F(GeoJsonTest, ShapesOfOnePlaneStayOnIt) {
    geojson::Content const content =
        read(collectionOf(featureOf(R"({"type":"Point","coordinates":[1,1],"plane":{"c":-1,"z":3,"t":2}})") + "," +
                          featureOf(R"({"type":"Point","coordinates":[1,1],"plane":{"z":4}})") + "," +
                          featureOf(R"({"type":"Point","coordinates":[1,1]})")));
    auto const& shapes = content.annotations.shapes();
    EXPECT_EQ(shapes[0].plane, (StackPosition{3, 2}));
    EXPECT_EQ(shapes[1].plane, (StackPosition{4, 0}));
    EXPECT_FALSE(shapes[2].plane);
}

TEST_F(GeoJsonTest, FeaturesNeedNoCollection) {
    std::string const feature = featureOf(kTriangle);
    EXPECT_EQ(read("[" + feature + "," + feature + "]").annotations.shapes().size(), 2U);
    EXPECT_EQ(read(" " + feature).annotations.shapes().size(), 1U);
    EXPECT_EQ(read(kTriangle).annotations.shapes().size(), 1U);
    EXPECT_EQ(read(collectionOf("")).annotations.shapes().size(), 0U);
    EXPECT_EQ(read("[]").annotations.shapes().size(), 0U);
}

TEST_F(GeoJsonTest, FeaturesThatAreNowhereAreCounted) {
    geojson::Content const content =
        read(collectionOf(featureOf("null") + "," + featureOf(R"({"type":"Polygon","coordinates":[]})") + "," +
                          R"({"type":"Feature","properties":null})" + "," + featureOf(kTriangle)));
    EXPECT_EQ(content.withoutGeometry, 3U);
    EXPECT_EQ(content.annotations.shapes().size(), 1U);
}

TEST_F(GeoJsonTest, WhatIsNoGeoJsonIsRefusedWithTheReason) {
    EXPECT_EQ(refusal("{}"), "it has no features");
    EXPECT_EQ(refusal("12"), "it has no features");
    EXPECT_EQ(refusal("[1,2]"), "not all of its features are of the type \"Feature\"");
    EXPECT_EQ(refusal(R"({"type":"FeatureCollection"})"), "there is no \"features\"");
    EXPECT_EQ(refusal(collectionOf(featureOf(kTriangle) + R"(,{"geometry":null})")),
              "not all of its features are of the type \"Feature\"");
    EXPECT_EQ(refusal(R"({"type":"Topology"})"), "there is no \"coordinates\"");
    EXPECT_EQ(refusal(R"({"type":"Circle","coordinates":[1]})"), "there is no geometry \"Circle\"");
    EXPECT_NE(refusal("").find("unexpected end of input"), std::string::npos);
    EXPECT_NE(refusal(collectionOf(featureOf(kTriangle)) + "}").find("parse error at line 1"), std::string::npos);
    EXPECT_NE(refusal("{\"type\":\n\"Fea").find("parse error at line 2"), std::string::npos);
}

TEST_F(GeoJsonTest, AWrongFeatureIsNamedByItsNumber) {
    auto const second = [&](std::string const& geometry) {
        return refusal(collectionOf(featureOf(kTriangle) + "," + featureOf(geometry)));
    };
    EXPECT_EQ(second("7"), "feature 2: a geometry is no object");
    EXPECT_EQ(second(R"({"type":"Polygon","coordinates":[[[0,0],[1,0]]]})"),
              "feature 2: a ring has fewer than 3 positions");
    EXPECT_EQ(second(R"({"type":"MultiPolygon","coordinates":[[]]})"), "feature 2: a polygon has no rings");
    EXPECT_EQ(second(R"({"type":"LineString","coordinates":[[0,0]]})"), "feature 2: a line has fewer than 2 positions");
    EXPECT_EQ(second(R"({"type":"Point","coordinates":[0]})"), "feature 2: a position is no pair of numbers");
    EXPECT_EQ(second(R"({"type":"Point","coordinates":["a","b"]})"), "feature 2: a position is no pair of numbers");
    EXPECT_EQ(second(R"({"type":"Point","coordinates":[0,2e9]})"), "feature 2: a position lies beyond 1e9 pixels");
    EXPECT_EQ(second(R"({"type":"Point","coordinates":7})"), "feature 2: there is no \"coordinates\"");
    EXPECT_EQ(second(R"({"type":"GeometryCollection"})"), "feature 2: there is no \"geometries\"");
}

TEST_F(GeoJsonTest, FilesOfManyBlocksAreReadWhole) {
    constexpr size_t kFeatures = 20000;
    std::string features;
    for (size_t i = 0; i < kFeatures; ++i)
        features += (i == 0 ? "" : ",\n") + featureOf(R"({"type":"LineString","coordinates":[[)" + std::to_string(i) +
                                                      ",0],[" + std::to_string(i) + ".5,9]]}");
    ASSERT_GT(features.size(), size_t{2} << 20U);
    Annotations const all = read(collectionOf(features)).annotations;
    ASSERT_EQ(all.shapes().size(), kFeatures);
    for (size_t i = 0; i < kFeatures; ++i) {
        auto const x = static_cast<double>(i);
        ASSERT_EQ(placesOf(all, i, 0), (Places{{x, 0}, {x + 0.5, 9}}));
    }
}

TEST_F(GeoJsonTest, TheCheckStopsTheRead) {
    EXPECT_THROW(geojson::read(file(kTriangle), [] { throw std::runtime_error("enough"); }), std::runtime_error);
}

TEST_F(GeoJsonTest, AMissingFileIsToldAsOne) {
    try {
        geojson::read(folder_.path("none.geojson"));
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::MissingFile);
    }
}

TEST_F(GeoJsonTest, JsonIsKnownByItsBeginning) {
    EXPECT_TRUE(geojson::looksLikeOne(file(" \r\n\t{")));
    EXPECT_TRUE(geojson::looksLikeOne(file("[")));
    EXPECT_FALSE(geojson::looksLikeOne(file("")));
    EXPECT_FALSE(geojson::looksLikeOne(file("\x89PNG{")));
    EXPECT_THROW(geojson::looksLikeOne(folder_.path("none.geojson")), HostError);
}
