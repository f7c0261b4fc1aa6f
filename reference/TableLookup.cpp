#include "reference/TableLookup.h"

#include <algorithm>

namespace reference {

namespace {

std::uint8_t entryOfByte(ByteTable const& table, std::uint8_t byte) {
    // The texel at coordinate byte / 255 of a row, the last one at the right end: the top bits for powers of two.
    return table.at(byte * table.size() / 256);
}

std::uint8_t entryOfValue(ByteTable const& table, std::int32_t value) {
    auto const last = static_cast<std::int32_t>(table.size() - 1);
    return table.at(static_cast<size_t>(std::clamp(value, 0, last)));
}

} // namespace

Texels tableLookup8(Texels const& image, ByteTable const& table) {
    Texels out(image.width, image.height);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            Texel const in = image.at(x, y);
            out.set(x, y, {entryOfByte(table, in[0]), entryOfByte(table, in[1]), entryOfByte(table, in[2]), in[3]});
        }
    }
    return out;
}

Texels tableLookup16(Texels const& image, ByteTable const& table) {
    Planes3 const planes = unpackThreeChannel16(image);
    Texels out(planes[0].width, planes[0].height);
    for (int y = 0; y < out.height; ++y) {
        for (int x = 0; x < out.width; ++x) {
            out.set(x, y,
                    {entryOfValue(table, planes[0].at(x, y)), entryOfValue(table, planes[1].at(x, y)),
                     entryOfValue(table, planes[2].at(x, y)), 255});
        }
    }
    return out;
}

} // namespace reference
