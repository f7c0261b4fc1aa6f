#include "reference/SixteenToEight.h"

#include "reference/Integers.h"

namespace reference {

Texels oneChannel16ToRgb8(Texels const& samples) {
    Plane const plane = unpackOneChannel16(samples);
    Texels out(plane.width, plane.height);
    for (int y = 0; y < out.height; ++y) {
        for (int x = 0; x < out.width; ++x) {
            std::uint8_t const grey = clampToByte(plane.at(x, y));
            out.set(x, y, {grey, grey, grey, 255});
        }
    }
    return out;
}

Texels threeChannel16ToRgba8(Texels const& pixels) {
    Planes3 const planes = unpackThreeChannel16(pixels);
    Texels out(planes[0].width, planes[0].height);
    for (int y = 0; y < out.height; ++y) {
        for (int x = 0; x < out.width; ++x) {
            out.set(x, y,
                    {clampToByte(planes[0].at(x, y)), clampToByte(planes[1].at(x, y)), clampToByte(planes[2].at(x, y)),
                     255});
        }
    }
    return out;
}

} // namespace reference
