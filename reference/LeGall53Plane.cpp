#include "reference/LeGall53Plane.h"

#include <stdexcept>

namespace reference {

namespace {

struct SplitPlane {
    Plane low;
    Plane high;
};

Signal rowOf(Plane const& plane, int y) {
    Signal row;
    for (int x = 0; x < plane.width; ++x)
        row.push_back(plane.at(x, y));
    return row;
}

void setRow(Plane& plane, int y, Signal const& row) {
    for (int x = 0; x < plane.width; ++x)
        plane.at(x, y) = row.at(static_cast<size_t>(x));
}

Plane transposed(Plane const& plane) {
    Plane out(plane.height, plane.width);
    for (int y = 0; y < plane.height; ++y) {
        for (int x = 0; x < plane.width; ++x)
            out.at(y, x) = plane.at(x, y);
    }
    return out;
}

SplitPlane splitRows(Plane const& plane) {
    SplitPlane out{Plane((plane.width + 1) / 2, plane.height), Plane(plane.width / 2, plane.height)};
    for (int y = 0; y < plane.height; ++y) {
        Bands const bands = forward53(rowOf(plane, y));
        setRow(out.low, y, bands.low);
        setRow(out.high, y, bands.high);
    }
    return out;
}

Plane joinRows(Plane const& low, Plane const& high) {
    Plane out(low.width + high.width, low.height);
    for (int y = 0; y < out.height; ++y)
        setRow(out, y, inverse53({rowOf(low, y), rowOf(high, y)}));
    return out;
}

SplitPlane splitColumns(Plane const& plane) {
    SplitPlane const split = splitRows(transposed(plane));
    return {transposed(split.low), transposed(split.high)};
}

Plane joinColumns(Plane const& low, Plane const& high) {
    return transposed(joinRows(transposed(low), transposed(high)));
}

} // namespace

PlaneBands forward53Plane(Plane const& plane) {
    SplitPlane const alongX = splitRows(plane);
    SplitPlane const low = splitColumns(alongX.low);
    SplitPlane const high = splitColumns(alongX.high);
    return {low.low, high.low, low.high, high.high};
}

Plane inverse53Plane(PlaneBands const& bands) {
    return joinRows(joinColumns(bands.ll, bands.lh), joinColumns(bands.hl, bands.hh));
}

Pyramid forward53Pyramid(Plane const& plane, size_t levels) {
    if (levels == 0) throw std::invalid_argument("a pyramid has at least one level");
    Pyramid pyramid;
    Plane rest = plane;
    for (size_t level = 0; level < levels; ++level) {
        PlaneBands bands = forward53Plane(rest);
        rest = bands.ll;
        if (level + 1 < levels) bands.ll = Plane();
        pyramid.levels.push_back(bands);
    }
    return pyramid;
}

Plane inverse53Pyramid(Pyramid const& pyramid) {
    Plane rest = pyramid.levels.back().ll;
    for (auto level = pyramid.levels.rbegin(); level != pyramid.levels.rend(); ++level) {
        rest = inverse53Plane({rest, level->hl, level->lh, level->hh});
    }
    return rest;
}

Plane inverseFilter53Horizontal(Plane const& low, Plane const& highWindow) {
    if (low.width != highWindow.width || low.height != highWindow.height || low.width < 2) {
        throw std::invalid_argument("the filter's bands have one size, at least two samples");
    }
    Plane out(2 * low.width - 4, low.height);
    for (int y = 0; y < out.height; ++y)
        setRow(out, y, inverseFilter53({rowOf(low, y), rowOf(highWindow, y)}));
    return out;
}

Plane inverseFilter53Vertical(Plane const& low, Plane const& highWindow) {
    return transposed(inverseFilter53Horizontal(transposed(low), transposed(highWindow)));
}

} // namespace reference
