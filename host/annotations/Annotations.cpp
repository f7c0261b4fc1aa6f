#include "host/annotations/Annotations.h"

#include <algorithm>
#include <cmath>

namespace {

// From a place to the line between two others.
double distanceTo(Place const& from, Place const& to, Place const& place) {
    double const dx = to.x - from.x;
    double const dy = to.y - from.y;
    double const square = dx * dx + dy * dy;
    double const along =
        square > 0 ? std::clamp(((place.x - from.x) * dx + (place.y - from.y) * dy) / square, 0.0, 1.0) : 0;
    return std::hypot(from.x + along * dx - place.x, from.y + along * dy - place.y);
}

// Whether a line to the right of the place crosses the ring an odd number of times.
bool isInside(Annotations::Part const& ring, Place const& place) {
    bool inside = false;
    for (size_t i = 0; i < ring.places; ++i) {
        Place const& a = ring.first[i];
        Place const& b = ring.first[i == 0 ? ring.places - 1 : i - 1];
        if ((a.y > place.y) != (b.y > place.y) && place.x < a.x + (place.y - a.y) / (b.y - a.y) * (b.x - a.x))
            inside = !inside;
    }
    return inside;
}

bool isNear(Annotations::Part const& line, Place const& place, double distance) {
    if (line.places == 1) return distanceTo(line.first[0], line.first[0], place) <= distance;
    for (size_t i = 1; i < line.places; ++i)
        if (distanceTo(line.first[i - 1], line.first[i], place) <= distance) return true;
    return false;
}

} // namespace

void Annotations::Box::include(Place const& place) {
    left = std::min(left, place.x);
    top = std::min(top, place.y);
    right = std::max(right, place.x);
    bottom = std::max(bottom, place.y);
}

void Annotations::addShape(Kind kind, std::array<std::uint8_t, 3> const& colour, std::string const& text,
                           std::optional<StackPosition> const& plane) {
    // Neighbours have the same text, most of them.
    if (texts_.empty() || texts_.back() != text) texts_.push_back(text);
    Shape shape;
    shape.kind = kind;
    shape.colour = colour;
    shape.text = static_cast<std::uint32_t>(texts_.size() - 1);
    shape.firstPart = partStarts_.size();
    shape.plane = plane;
    shapes_.push_back(shape);
}

void Annotations::addPart() {
    partStarts_.push_back(places_.size());
    ++shapes_.back().parts;
}

void Annotations::addPlace(Place const& place) {
    Shape& shape = shapes_.back();
    bool const isFirst = shape.parts == 1 && places_.size() == partStarts_.back();
    places_.push_back(place);
    if (isFirst)
        shape.box = {place.x, place.y, place.x, place.y};
    else
        shape.box.include(place);
}

void Annotations::closeRing() {
    size_t const start = partStarts_.back();
    if (places_.size() < start + 2) return;
    Place const& first = places_[start];
    Place const& last = places_.back();
    if (!(first.x < last.x) && !(last.x < first.x) && !(first.y < last.y) && !(last.y < first.y)) places_.pop_back();
}

Annotations::Part Annotations::part(Shape const& shape, size_t index) const {
    size_t const at = shape.firstPart + index;
    size_t const end = at + 1 < partStarts_.size() ? partStarts_[at + 1] : places_.size();
    return {&places_[partStarts_[at]], end - partStarts_[at]};
}

bool Annotations::has(Shape const& shape, Place const& place, double distance) const {
    bool isIn = false;
    for (size_t i = 0; i < shape.parts; ++i) {
        Part const one = part(shape, i);
        if (shape.kind == Kind::Area) {
            isIn ^= isInside(one, place);
        } else if (shape.kind == Kind::Line) {
            isIn = isIn || isNear(one, place, distance);
        } else {
            for (size_t k = 0; k < one.places; ++k)
                isIn = isIn || std::hypot(one.first[k].x - place.x, one.first[k].y - place.y) <= distance;
        }
    }
    return isIn;
}
