#include "reference/YCoCgR.h"

#include "reference/Integers.h"

namespace reference {

namespace {

std::int32_t half(std::int32_t value) {
    return static_cast<std::int32_t>(floorDiv(value, 2));
}

} // namespace

YCoCg yCoCgFromRgb(Rgb const& rgb) {
    std::int32_t const co = rgb.r - rgb.b;
    std::int32_t const tmp = rgb.b + half(co);
    std::int32_t const cg = rgb.g - tmp;
    return {tmp + half(cg), co, cg};
}

Rgb rgbFromYCoCg(YCoCg const& colour) {
    std::int32_t const tmp = colour.y - half(colour.cg);
    std::int32_t const b = tmp - half(colour.co);
    return {b + colour.co, colour.cg + tmp, b};
}

Texels rgba8ToYCoCg16(Texels const& rgba) {
    Plane const empty(rgba.width, rgba.height);
    Planes3 out{empty, empty, empty};
    for (int y = 0; y < rgba.height; ++y) {
        for (int x = 0; x < rgba.width; ++x) {
            Texel const texel = rgba.at(x, y);
            YCoCg const colour = yCoCgFromRgb({texel[0], texel[1], texel[2]});
            out[0].at(x, y) = colour.y;
            out[1].at(x, y) = colour.co;
            out[2].at(x, y) = colour.cg;
        }
    }
    return packThreeChannel16(out);
}

Texels yCoCg16ToRgb16(Texels const& yCoCg) {
    Planes3 planes = unpackThreeChannel16(yCoCg);
    for (size_t i = 0; i < planes[0].samples.size(); ++i) {
        Rgb const rgb = rgbFromYCoCg({planes[0].samples[i], planes[1].samples[i], planes[2].samples[i]});
        planes[0].samples[i] = rgb.r;
        planes[1].samples[i] = rgb.g;
        planes[2].samples[i] = rgb.b;
    }
    return packThreeChannel16(planes);
}

Texels yCoCg16ToRgba8(Texels const& yCoCg) {
    Planes3 const planes = unpackThreeChannel16(yCoCg);
    Texels out(planes[0].width, planes[0].height);
    for (int y = 0; y < out.height; ++y) {
        for (int x = 0; x < out.width; ++x) {
            Rgb const rgb = rgbFromYCoCg({planes[0].at(x, y), planes[1].at(x, y), planes[2].at(x, y)});
            out.set(x, y, {clampToByte(rgb.r), clampToByte(rgb.g), clampToByte(rgb.b), 255});
        }
    }
    return out;
}

} // namespace reference
