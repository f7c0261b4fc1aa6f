#include "tests/gles3renderbackend/filters/LeGall53Steps.h"

#include "host/filter/FilterDescriptions.h"

namespace filtertest {

Stretch stretchFor(int start, int end) {
    int const count = (end - 2 * start + 1) / 2 + 2;
    return {start, count + count % 2};
}

LeGall53Steps::LeGall53Steps(FilterRig& rig)
    : rig_(rig),
      vertical_(rig.instantiated(description::filterFirIV53LeGall16())),
      horizontal_(rig.instantiated(description::filterFirIH53LeGall16())) {}

size_t LeGall53Steps::vertical(FilterSource const& low, FilterSource const& high, Stretch const& x, Stretch const& y) {
    size_t const destination = rig_.target(Layout::kOneChannel16, x.count / 2, y.outputs());
    rig_.run(vertical_, {{low, high}, {static_cast<size_t>(x.count), static_cast<size_t>(y.count)}}, destination);
    return destination;
}

size_t LeGall53Steps::horizontal(size_t low, size_t high, Stretch const& x, int rows) {
    size_t const destination = rig_.target(Layout::kOneChannel16, x.outputs() / 2, rows);
    rig_.run(horizontal_,
             {{{low, 0, 0, false}, {high, 0, 0, false}}, {static_cast<size_t>(x.count), static_cast<size_t>(rows)}},
             destination);
    return destination;
}

size_t LeGall53Steps::level(FilterSource const& ll, HighBands const& bands, Stretch const& x, Stretch const& y) {
    size_t const hl = rig_.uploaded(bands.hl);
    size_t const lh = rig_.uploaded(bands.lh);
    size_t const hh = rig_.uploaded(bands.hh);
    size_t const low = vertical(ll, {lh, 0, 0, false}, x, y);
    size_t const high = vertical({hl, 0, 0, false}, {hh, 0, 0, false}, x, y);
    size_t const result = horizontal(low, high, x, y.outputs());
    for (size_t const between : {hl, lh, hh, low, high})
        rig_.erase(between);
    return result;
}

} // namespace filtertest
