#pragma once

#include "reference/Layouts.h"
#include "reference/LeGall53.h"

#include <cstddef>
#include <vector>

// The 5/3 wavelet on planes. The forward transform goes along rows first, then along columns; the inverse goes along
// columns first. The order matters: the lifting steps round.
namespace reference {

/// First letter: along x. `hl` is high along x and low along y.
struct PlaneBands {
    Plane ll;
    Plane hl;
    Plane lh;
    Plane hh;
};

/// levels[0] is the finest; only the last one's `ll` is filled, the others stay empty.
struct Pyramid {
    std::vector<PlaneBands> levels;
};

PlaneBands forward53Plane(Plane const& plane);
Plane inverse53Plane(PlaneBands const& bands);

/// levels >= 1.
Pyramid forward53Pyramid(Plane const& plane, size_t levels);
Plane inverse53Pyramid(Pyramid const& pyramid);

/// One filter step, in the filter's form, on bands of one size: 2 * width - 4 columns, or 2 * height - 4 rows.
Plane inverseFilter53Horizontal(Plane const& low, Plane const& highWindow);
Plane inverseFilter53Vertical(Plane const& low, Plane const& highWindow);

} // namespace reference
