// An input is a file of annotations. What is read is drawn at several zooms, and looked for.
#include "host/annotations/AnnotationPainter.h"
#include "host/annotations/GeoJson.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>

namespace {

using fuzz::require;

void requireSound(Annotations const& all) {
    size_t places = 0;
    for (Annotations::Shape const& shape : all.shapes()) {
        require(shape.parts > 0, "a shape has a part");
        require(all.text(shape).size() <= 300, "a text is short");
        for (size_t i = 0; i < shape.parts; ++i) {
            Annotations::Part const part = all.part(shape, i);
            require(part.places > 0, "a part has a place");
            places += part.places;
            for (size_t k = 0; k < part.places; ++k) {
                Place const& place = part.first[k];
                require(place.x >= shape.box.left && place.x <= shape.box.right && place.y >= shape.box.top &&
                            place.y <= shape.box.bottom,
                        "a box has all places");
            }
        }
    }
    require(places == all.places(), "each place is one shape's");
}

void draw(Annotations const& all) {
    AnnotationPainter painter(std::make_shared<Annotations const>(all));
    for (double const zoom : {0.01, 0.5, 1.0, 8.0}) {
        View view;
        view.zoom = Zoom::nearest(zoom, 8);
        view.x = view.y = -20;
        view.width = 60;
        view.height = 50;
        require(painter.paint(view, {}, 2).rgba().size() == size_t{4} * 60 * 50, "a canvas has the view's size");
        if (all.shapes().empty()) continue;
        View const part = painter.viewOf(all.shapes().size() - 1, view, 4);
        require(part.width <= view.width && part.height <= view.height, "a part is no larger than the view");
        if (!part.isEmpty()) painter.paintOne(all.shapes().size() - 1, part, 4);
    }
    auto const found = painter.find({3, 3}, 2, {});
    require(!found || *found < all.shapes().size(), "a shape that is there is found");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    static TemporaryFolder const kFolder;
    std::string const path = kFolder.path("shapes.geojson");
    writeFile(path, std::string(bytes, bytes + size));
    try {
        geojson::Content const content = geojson::read(path);
        requireSound(content.annotations);
        draw(content.annotations);
    } catch (HostError const& error) {
        require(error.kind() == HostError::Kind::UnreadableImage, "what is no GeoJSON is refused as such");
        std::string const text = error.what();
        require(text.find('\n') == std::string::npos, "a refusal is one line");
    }
    return 0;
}
