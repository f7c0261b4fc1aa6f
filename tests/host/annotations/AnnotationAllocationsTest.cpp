// Each `new` fails in turn while annotations are read and drawn: no file is called damaged for want of memory.
#include "host/annotations/AnnotationPainter.h"
#include "host/annotations/GeoJson.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr auto kShapes = R"({"type":"FeatureCollection","features":[
 {"type":"Feature","geometry":{"type":"Polygon","coordinates":[[[1,2],[30,2],[28.5,25]],[[5,4],[9,4],[9,8]]]},
  "properties":{"name":"a name that is longer than a small string","classification":{"names":["1","2"]}}},
 {"type":"Feature","geometry":{"type":"LineString","coordinates":[[0,0],[40,30]]},
  "properties":{"stroke":"#123456"}}]})";

} // namespace

TEST(AnnotationAllocationsTest, OfAReadAndADrawing) {
    TemporaryFolder const folder;
    std::string const path = folder.path("shapes.geojson");
    writeFile(path, kShapes);
    View view;
    view.width = 60;
    view.height = 50;
    auto const drawn = [&](AnnotationPainter& painter) {
        std::vector<std::uint8_t> rgba = painter.paint(view, {}, 2).rgba();
        std::vector<std::uint8_t> const one = painter.paintOne(1, painter.viewOf(1, view, 4), 4).rgba();
        rgba.insert(rgba.end(), one.begin(), one.end());
        return rgba;
    };
    auto const read = [&] { return std::make_shared<Annotations const>(std::move(geojson::read(path).annotations)); };
    AnnotationPainter kept(read());
    std::vector<std::uint8_t> const expected = drawn(kept);
    auto const work = [&] {
        AnnotationPainter painter(read());
        drawn(painter);
    };
    auto const check = [&] {
        AnnotationPainter painter(read());
        EXPECT_TRUE(drawn(painter) == expected);
    };
    EXPECT_GT(allocationsweep::sweep({"read and draw", work, check}).thrown, 20U);
    EXPECT_GT(
        allocationsweep::sweep({"draw", [&] { drawn(kept); }, [&] { EXPECT_TRUE(drawn(kept) == expected); }}).thrown,
        0U);
}
