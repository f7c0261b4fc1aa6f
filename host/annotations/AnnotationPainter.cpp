#include "host/annotations/AnnotationPainter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using Box = Annotations::Box;
using Kind = Annotations::Kind;

constexpr double kDotPixels = 1;
constexpr double kRectanglePixels = 4; // below, an outline cannot be told from one
constexpr double kLeastStep = 0.75;    // pixels between places of an outline
constexpr double kArmWidths = 2;       // of a line: how far each arm of a point's cross reaches

// A place of the picture at the view's zoom: what depends on it alone is the same in every view.
Place zoomed(Place const& place, View const& view) {
    return {place.x * view.zoom.value(), place.y * view.zoom.value()};
}

Place inFrame(Place const& zoomed, View const& view) {
    return {zoomed.x - static_cast<double>(view.x), zoomed.y - static_cast<double>(view.y)};
}

bool meet(Box const& a, Box const& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

// The part of the picture that a frame shows, with so many pixels around it.
Box shownBox(View const& view, double margin) {
    double const scale = view.zoom.value();
    auto const x = static_cast<double>(view.x);
    auto const y = static_cast<double>(view.y);
    return {(x - margin) / scale, (y - margin) / scale, (x + static_cast<double>(view.width) + margin) / scale,
            (y + static_cast<double>(view.height) + margin) / scale};
}

// How far a shape's lines reach beyond its box.
double marginOf(double lineWidth) {
    return (kArmWidths + 2) * lineWidth + 1;
}

bool isOn(Annotations::Shape const& shape, StackPosition const& position) {
    return !shape.plane || *shape.plane == position;
}

} // namespace

AnnotationPainter::AnnotationPainter(std::shared_ptr<Annotations const> annotations)
    : annotations_(std::move(annotations)) {
    boxes_.reserve(annotations_->shapes().size());
    for (Annotations::Shape const& shape : annotations_->shapes())
        boxes_.push_back(shape.box);
}

StrokeCanvas const& AnnotationPainter::paint(View const& view, StackPosition const& position, double lineWidth) {
    canvas_.reset({view.width, view.height});
    Box const shown = shownBox(view, marginOf(lineWidth));
    auto const& shapes = annotations_->shapes();
    for (size_t i = 0; i < boxes_.size(); ++i)
        if (meet(boxes_[i], shown) && isOn(shapes[i], position)) draw(shapes[i], view, lineWidth);
    return canvas_;
}

StrokeCanvas const& AnnotationPainter::paintOne(size_t shape, View const& view, double lineWidth) {
    canvas_.reset({view.width, view.height});
    draw(annotations_->shapes().at(shape), view, lineWidth);
    return canvas_;
}

View AnnotationPainter::viewOf(size_t shape, View const& view, double lineWidth) const {
    double const scale = view.zoom.value();
    double const margin = marginOf(lineWidth);
    // Ends of the box as whole pixels of the frame, within it.
    auto const within = [&](double end, std::int64_t from, size_t length) {
        double const inside = std::clamp(end - static_cast<double>(from), 0.0, static_cast<double>(length));
        return static_cast<std::int64_t>(inside);
    };
    Box const& box = boxes_.at(shape);
    std::int64_t const left = within(box.left * scale - margin, view.x, view.width);
    std::int64_t const right = within(box.right * scale + margin, view.x, view.width);
    std::int64_t const top = within(box.top * scale - margin, view.y, view.height);
    std::int64_t const bottom = within(box.bottom * scale + margin, view.y, view.height);
    View part = view;
    part.x += left;
    part.y += top;
    part.width = static_cast<size_t>(right - left);
    part.height = static_cast<size_t>(bottom - top);
    return part;
}

void AnnotationPainter::draw(Annotations::Shape const& shape, View const& view, double width) {
    Place const from = inFrame(zoomed({shape.box.left, shape.box.top}, view), view);
    Place const to = inFrame(zoomed({shape.box.right, shape.box.bottom}, view), view);
    double const extent =
        std::max(shape.box.right - shape.box.left, shape.box.bottom - shape.box.top) * view.zoom.value();
    if (shape.kind != Kind::Point && extent < kDotPixels)
        return canvas_.dot({(from.x + to.x) / 2, (from.y + to.y) / 2}, shape.colour);
    if (shape.kind == Kind::Area && extent < kRectanglePixels) return canvas_.rectangle(from, to, shape.colour);
    for (size_t i = 0; i < shape.parts; ++i)
        drawPart(shape, annotations_->part(shape, i), view, width);
}

void AnnotationPainter::drawPart(Annotations::Shape const& shape, Annotations::Part const& part, View const& view,
                                 double width) {
    if (shape.kind == Kind::Point) {
        double const arm = kArmWidths * width;
        for (size_t i = 0; i < part.places; ++i) {
            Place const at = inFrame(zoomed(part.first[i], view), view);
            canvas_.stroke({at.x - arm, at.y}, {at.x + arm, at.y}, width, shape.colour);
            canvas_.stroke({at.x, at.y - arm}, {at.x, at.y + arm}, width, shape.colour);
        }
        return;
    }
    Place const first = zoomed(part.first[0], view);
    Place drawn = first;
    auto const drawTo = [&](Place const& next) {
        canvas_.stroke(inFrame(drawn, view), inFrame(next, view), width, shape.colour);
        drawn = next;
    };
    for (size_t i = 1; i < part.places; ++i) {
        Place const next = zoomed(part.first[i], view);
        bool const isLast = i + 1 == part.places;
        if (isLast || std::abs(next.x - drawn.x) >= kLeastStep || std::abs(next.y - drawn.y) >= kLeastStep)
            drawTo(next);
    }
    if (shape.kind == Kind::Area) drawTo(first);
}

std::optional<size_t> AnnotationPainter::find(Place const& place, double distance,
                                              StackPosition const& position) const {
    Box const around = {place.x - distance, place.y - distance, place.x + distance, place.y + distance};
    auto const sizeOf = [&](size_t i) {
        return (boxes_[i].right - boxes_[i].left) * (boxes_[i].bottom - boxes_[i].top);
    };
    auto const& shapes = annotations_->shapes();
    std::optional<size_t> found;
    for (size_t i = 0; i < boxes_.size(); ++i)
        if (meet(boxes_[i], around) && isOn(shapes[i], position) && (!found || sizeOf(i) < sizeOf(*found)) &&
            annotations_->has(shapes[i], place, distance))
            found = i;
    return found;
}
