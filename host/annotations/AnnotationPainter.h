#pragma once

#include "host/annotations/Annotations.h"
#include "host/annotations/StrokeCanvas.h"
#include "host/view/View.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// Draws annotations over the view of a picture, and finds the one at a place. One thread at a time.
///
/// Shapes of less than a pixel are a dot, of a few pixels a rectangle: how long a frame takes depends on the pixels
/// that are drawn, and not on the places that the shapes have.
class AnnotationPainter {
public:
    explicit AnnotationPainter(std::shared_ptr<Annotations const> annotations);

    Annotations const& annotations() const { return *annotations_; }

    /// All shapes of a plane of the picture, in lines so many pixels wide, on a canvas of the view's size that stays
    /// until the next call. Neighbouring views fit together.
    StrokeCanvas const& paint(View const& view, StackPosition const& position, double lineWidth);
    /// One of them alone, an index of shapes().
    StrokeCanvas const& paintOne(size_t shape, View const& view, double lineWidth);
    /// The part of a view that paintOne() draws into; it may be empty.
    View viewOf(size_t shape, View const& view, double lineWidth) const;

    /// Of the shapes that have the place of the picture, to such a distance, the smallest.
    std::optional<size_t> find(Place const& place, double distance, StackPosition const& position) const;

private:
    void draw(Annotations::Shape const& shape, View const& view, double width);
    void drawPart(Annotations::Shape const& shape, Annotations::Part const& part, View const& view, double width);

    std::shared_ptr<Annotations const> annotations_; // not null
    std::vector<Annotations::Box> boxes_;            // of the shapes, side by side: every frame looks at all of them
    StrokeCanvas canvas_;
};
