#include "host/annotations/GeoJson.h"

#include "host/PlainText.h"
#include "host/image/JsonValue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace {

using Malformed = JsonValue::Malformed;
using Kind = Annotations::Kind;
using Colour = std::array<std::uint8_t, 3>;

constexpr size_t kMostPlaces = 50 * 1000 * 1000; // 800 MB
constexpr double kFarthest = 1e9;                // no picture has pixels beyond
constexpr Colour kColour{255, 0, 0};             // of what has none
constexpr size_t kMostTextBytes = 300;

// [R, G, B], each 0 to 255.
std::optional<Colour> colourOfList(JsonValue const& value) {
    Colour colour{};
    if (value.list().size() < colour.size()) return std::nullopt;
    for (size_t i = 0; i < colour.size(); ++i) {
        auto const part = value.list()[i].integer();
        if (!part || *part < 0 || *part > 255) return std::nullopt;
        colour[i] = static_cast<std::uint8_t>(*part);
    }
    return colour;
}

Colour colourOfBits(std::uint32_t bits) {
    return {static_cast<std::uint8_t>(bits >> 16U), static_cast<std::uint8_t>(bits >> 8U),
            static_cast<std::uint8_t>(bits)};
}

// "#RRGGBB", as of a stroke on a web map.
std::optional<Colour> colourOfHex(std::string const& text) {
    if (text.size() != 7 || text[0] != '#') return std::nullopt;
    char* end = nullptr;
    auto const bits = std::strtoul(text.c_str() + 1, &end, 16);
    if (*end != '\0') return std::nullopt;
    return colourOfBits(static_cast<std::uint32_t>(bits));
}

// "color" as a list, or "colorRGB" as one number of 32 bits with its sign.
std::optional<Colour> statedColour(JsonValue const& object) {
    if (auto const colour = colourOfList(object.at("color"))) return colour;
    auto const bits = object.at("colorRGB").integer();
    return bits ? std::optional(colourOfBits(static_cast<std::uint32_t>(*bits))) : std::nullopt;
}

// An own colour before that of the class.
Colour colourOf(JsonValue const& properties) {
    if (auto const own = statedColour(properties)) return *own;
    if (auto const stroke = colourOfHex(properties.at("stroke").text())) return *stroke;
    return statedColour(properties.at("classification")).value_or(kColour);
}

// "Tumor", or of derived classes "Tumor: Positive".
std::string classOf(JsonValue const& properties) {
    JsonValue const& classification = properties.at("classification");
    std::string text = classification.at("name").text();
    if (!text.empty()) return text;
    for (JsonValue const& name : classification.at("names").list())
        if (!name.text().empty()) text += (text.empty() ? "" : ": ") + name.text();
    return text;
}

std::string textOf(JsonValue const& properties) {
    std::string name = properties.at("name").text();
    if (name.empty()) name = properties.at("title").text();
    std::string const type = classOf(properties);
    std::string const text = name.empty() ? type : type.empty() ? name : name + " (" + type + ")";
    return plainText(text, kMostTextBytes);
}

// What QuPath writes beside the places of a shape that is on one plane.
std::optional<StackPosition> planeOf(JsonValue const& geometry) {
    JsonValue const& plane = geometry.at("plane");
    if (!plane.isObject()) return std::nullopt;
    auto const indexAt = [&](char const* name) {
        std::int64_t const index = plane.at(name).integer().value_or(0);
        return static_cast<size_t>(std::max<std::int64_t>(index, 0));
    };
    return StackPosition{indexAt("z"), indexAt("t")};
}

Place placeOf(JsonValue const& position) {
    bool const isPair = position.list().size() >= 2 && position.list()[0].number() && position.list()[1].number();
    if (!isPair) throw Malformed("a position is no pair of numbers");
    Place const place = {*position.list()[0].number(), *position.list()[1].number()};
    if (!(std::abs(place.x) <= kFarthest && std::abs(place.y) <= kFarthest))
        throw Malformed("a position lies beyond 1e9 pixels");
    return place;
}

JsonValue const& listAt(JsonValue const& object, char const* name) {
    JsonValue const& value = object.at(name);
    if (!value.isList()) throw Malformed("there is no \"" + std::string(name) + "\"");
    return value;
}

// Takes features, one after the other.
class Reader {
public:
    geojson::Content content;

    void takeFeature(JsonValue const& feature) {
        ++features_;
        try {
            take(feature);
        } catch (Malformed const& error) {
            throw Malformed("feature " + std::to_string(features_) + ": " + error.what());
        }
    }

    void takeGeometry(JsonValue const& geometry, JsonValue const& properties) {
        if (!geometry.isObject()) throw Malformed("a geometry is no object");
        std::string const type = geometry.at("type").text();
        if (type == "GeometryCollection") {
            for (JsonValue const& one : listAt(geometry, "geometries").list())
                takeGeometry(one, properties);
            return;
        }
        JsonValue const& coordinates = listAt(geometry, "coordinates");
        auto const begin = [&](Kind kind) {
            content.annotations.addShape(kind, colourOf(properties), textOf(properties), planeOf(geometry));
        };
        if (coordinates.list().empty()) {
            ++content.withoutGeometry; // the standard's way to say that there is none
        } else if (type == "Polygon") {
            begin(Kind::Area);
            takeRings(coordinates);
        } else if (type == "MultiPolygon") {
            begin(Kind::Area);
            for (JsonValue const& polygon : coordinates.list())
                takeRings(polygon);
        } else if (type == "LineString") {
            begin(Kind::Line);
            takeLine(coordinates, 2);
        } else if (type == "MultiLineString") {
            begin(Kind::Line);
            for (JsonValue const& line : coordinates.list())
                takeLine(line, 2);
        } else if (type == "Point") {
            begin(Kind::Point);
            content.annotations.addPart();
            addPlace(coordinates);
        } else if (type == "MultiPoint") {
            begin(Kind::Point);
            takeLine(coordinates, 1);
        } else {
            throw Malformed("there is no geometry \"" + printableText(type, 40) + "\"");
        }
    }

    size_t features() const { return features_; }

private:
    void take(JsonValue const& feature) {
        JsonValue const& geometry = feature.at("geometry");
        JsonValue const& properties = feature.at("properties");
        if (geometry.isNull())
            ++content.withoutGeometry;
        else
            takeGeometry(geometry, properties);
        // That of a cell.
        JsonValue const& nucleus = feature.at("nucleusGeometry");
        if (!nucleus.isNull()) takeGeometry(nucleus, properties);
    }

    void takeRings(JsonValue const& rings) {
        if (rings.list().empty()) throw Malformed("a polygon has no rings");
        for (JsonValue const& ring : rings.list()) {
            takeLine(ring, 3);
            content.annotations.closeRing();
        }
    }

    void takeLine(JsonValue const& positions, size_t least) {
        if (positions.list().size() < least)
            throw Malformed(least == 3 ? "a ring has fewer than 3 positions" : "a line has fewer than 2 positions");
        content.annotations.addPart();
        for (JsonValue const& position : positions.list())
            addPlace(position);
    }

    void addPlace(JsonValue const& position) {
        if (content.annotations.places() >= kMostPlaces) throw Malformed("it has more than 50 million positions");
        content.annotations.addPlace(placeOf(position));
    }

    size_t features_ = 0;
};

// What is left of a file without its features.
void takeRest(JsonValue const& rest, Reader& reader) {
    if (rest.isNull() && reader.features() > 0) return; // a feature alone
    std::string const type = rest.at("type").text();
    bool const isCollection = type == "FeatureCollection";
    if (!isCollection && !rest.isList()) {
        if (type.empty()) throw Malformed("it has no features");
        return reader.takeGeometry(rest, JsonValue());
    }
    // QuPath has written lists without a collection around them.
    JsonValue const& others = isCollection ? listAt(rest, "features") : rest;
    if (!others.list().empty()) throw Malformed("not all of its features are of the type \"Feature\"");
}

HostError noGeoJson(std::string const& path, std::string const& reason) {
    return {HostError::Kind::UnreadableImage, "'" + path + "' holds no annotations in GeoJSON: " + reason};
}

} // namespace

bool geojson::looksLikeOne(std::string const& path) {
    InputFile file(path);
    std::array<char, 64> start{};
    std::int64_t const count = file.readAt(0, start.data(), start.size());
    file.rethrow();
    std::string_view const text(start.data(), static_cast<size_t>(count));
    size_t const first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && (text[first] == '{' || text[first] == '[');
}

geojson::Content geojson::read(std::string const& path, InputFile::Check const& check) {
    InputFile file(path, check);
    Reader reader;
    auto const takesFeature = [&](JsonValue const& object) {
        if (object.at("type").text() != "Feature") return false;
        reader.takeFeature(object);
        return true;
    };
    try {
        takeRest(JsonValue::read(file, takesFeature), reader);
    } catch (Malformed const& error) {
        throw noGeoJson(path, error.what());
    }
    return std::move(reader.content);
}
