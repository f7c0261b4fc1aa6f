#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Bytes that differ from their neighbours in every direction: 7 * i + randomStart, as far as a byte goes.
inline std::vector<std::uint8_t> numberedBytes(size_t count, size_t randomStart = 1) {
    std::vector<std::uint8_t> bytes(count);
    for (size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(7 * i + i / 251 + randomStart);
    return bytes;
}

/// A picture of `bytesPerTexel` bytes per texel, the tests' own model of a texture or target.
struct Picture {
    size_t width;
    size_t height;
    size_t bytesPerTexel;
    std::vector<std::uint8_t> bytes;

    Picture(size_t w, size_t h, std::vector<std::uint8_t> content, size_t perTexel = 4)
        : width(w), height(h), bytesPerTexel(perTexel), bytes(std::move(content)) {}

    static Picture filled(size_t w, size_t h, std::vector<std::uint8_t> const& texel) {
        Picture picture(w, h, std::vector<std::uint8_t>(w * h * texel.size()), texel.size());
        for (size_t i = 0; i < picture.bytes.size(); ++i)
            picture.bytes[i] = texel[i % texel.size()];
        return picture;
    }

    std::vector<std::uint8_t> texel(size_t x, size_t y) const {
        auto const first = bytes.begin() + static_cast<std::ptrdiff_t>((y * width + x) * bytesPerTexel);
        return {first, first + static_cast<std::ptrdiff_t>(bytesPerTexel)};
    }

    void setTexel(size_t x, size_t y, std::vector<std::uint8_t> const& value) {
        for (size_t i = 0; i < bytesPerTexel; ++i)
            bytes[(y * width + x) * bytesPerTexel + i] = value[i];
    }

    /// Copies a rectangle of another picture, texel by texel.
    void copy(Picture const& from, size_t fromX, size_t fromY, size_t columns, size_t rows, size_t toX, size_t toY) {
        for (size_t row = 0; row < rows; ++row)
            for (size_t column = 0; column < columns; ++column)
                setTexel(toX + column, toY + row, from.texel(fromX + column, fromY + row));
    }
};
