#pragma once

#include "tests/host/image/ImageFixture.h"
#include "tests/host/image/TestTiff.h"

#include <cstdint>
#include <string>
#include <vector>

/// A TIFF file with any directories, and the result of reading it.
class TiffFixture : public ImageFixture {
protected:
    void write(std::vector<testtiff::Directory> const& directories, std::string const& mode = "w") const {
        testtiff::write(tiff_, directories, mode);
    }

    // Irregular samples: all neighbours differ.
    static std::vector<std::uint8_t> bytes(size_t count, unsigned start = 3) {
        std::vector<std::uint8_t> made(count);
        for (size_t i = 0; i < count; ++i)
            made[i] = static_cast<std::uint8_t>(start + i * 37 + i * i / 5);
        return made;
    }

    static testtiff::Directory grey(std::uint32_t side, unsigned start = 3) {
        return testtiff::directory(side, side, 1, bytes(size_t{side} * side, start));
    }

    static testtiff::Directory rgba(std::vector<std::uint16_t> const& extraSamples) {
        testtiff::Directory made = testtiff::directory(5, 4, 4, bytes(80));
        made.extraSamples = extraSamples;
        return made;
    }

    std::string tiff_ = path("a.tif");
};
