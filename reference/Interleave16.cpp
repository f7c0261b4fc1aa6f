#include "reference/Interleave16.h"

namespace reference {

Texels interleave16(Texels const& c0, Texels const& c1, Texels const& c2) {
    Texels out(4 * c0.width, c0.height);
    for (int y = 0; y < c0.height; ++y) {
        for (int k = 0; k < c0.width; ++k) {
            Texel const a = c0.at(k, y);
            Texel const b = c1.at(k, y);
            Texel const c = c2.at(k, y);
            out.set(4 * k, y, {a[0], a[1], b[0], 255});
            out.set(4 * k + 1, y, {b[1], c[0], c[1], 255});
            out.set(4 * k + 2, y, {a[2], a[3], b[2], 255});
            out.set(4 * k + 3, y, {b[3], c[2], c[3], 255});
        }
    }
    return out;
}

} // namespace reference
