#pragma once

#include "host/image/SampleSource.h"
#include "host/view/Camera.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Shapes over a picture, in its pixels from the upper left corner: what people have outlined, and cells that a program
/// has found. Some of them may be hundreds of thousands.
class Annotations {
public:
    enum class Kind { Area, Line, Point };

    struct Box {
        double left = 0;
        double top = 0;
        double right = 0;
        double bottom = 0;

        bool isEmpty() const { return right < left; }
        void include(Place const& place);
    };

    /// Of one kind: rings of an area, open lines, or points.
    struct Shape {
        Kind kind = Kind::Area;
        std::array<std::uint8_t, 3> colour{};
        std::uint32_t text = 0; ///< an index of texts()
        size_t firstPart = 0;
        size_t parts = 0;
        Box box;
        std::optional<StackPosition> plane; ///< the only one that it is on; empty: it is on all
    };

    /// Of one part; the last place of a ring is not the first one again.
    struct Part {
        Place const* first = nullptr;
        size_t places = 0;
    };

    /// Begins a shape, to which the parts that are added next belong.
    void addShape(Kind kind, std::array<std::uint8_t, 3> const& colour, std::string const& text,
                  std::optional<StackPosition> const& plane);
    /// Begins a part of the last shape.
    void addPart();
    /// To the last part.
    void addPlace(Place const& place);
    /// The first place of the last part once more closes a ring: it is taken away.
    void closeRing();

    std::vector<Shape> const& shapes() const { return shapes_; }
    Part part(Shape const& shape, size_t index) const;
    std::string const& text(Shape const& shape) const { return texts_[shape.text]; }
    size_t places() const { return places_.size(); }

    /// Whether the shape has the place: inside an area, or at most so far from a line or a point.
    bool has(Shape const& shape, Place const& place, double distance) const;

private:
    std::vector<Shape> shapes_;
    std::vector<size_t> partStarts_; // indices of places_
    std::vector<Place> places_;
    std::vector<std::string> texts_;
};
