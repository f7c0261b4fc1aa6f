#pragma once

#include "host/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A picture of 8- or 16-bit samples that is read region by region, so that it need not fit in memory.
class PixelSource {
public:
    PixelSource() = default;
    PixelSource(PixelSource const&) = delete;
    PixelSource& operator=(PixelSource const&) = delete;
    virtual ~PixelSource();

    /// Pixels in a row.
    virtual size_t width() const = 0;
    /// Rows.
    virtual size_t height() const = 0;
    /// Samples of a pixel: 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA.
    virtual size_t bands() const = 0;
    /// Bytes of a sample: 1, or 2 in the machine's byte order.
    virtual size_t sampleBytes() const { return 1; }
    /// Pixels per millimetre along x and along y; 0 where it is not known.
    virtual double pixelsPerMillimetreX() const { return 0; }
    virtual double pixelsPerMillimetreY() const { return 0; }
    /// What the picture is, for a person: "3 bands of 8-bit unsigned samples, PNG".
    virtual std::string description() const = 0;

    /// What has been taken of a file.
    struct Selection {
        std::string text;     ///< which part, and what was done to its samples; empty: the whole, sample for sample
        double rangeLow = 0;  ///< of the file's samples: what has become 0
        double rangeHigh = 0; ///< and what has become 65535; both 0: samples are the file's
    };
    /// May read the whole picture first.
    virtual Selection selection() { return {}; }

    /// Samples that a range did not keep as they were, of all that have been read.
    struct Lost {
        std::uint64_t clipped = 0;    ///< they lay beyond it
        std::uint64_t notNumbers = 0; ///< and became 0

        bool any() const { return clipped > 0 || notNumbers > 0; }
    };
    virtual Lost lost() const { return {}; }

    /// Calls the function now and then while reading takes long; it may throw to stop that.
    virtual void whileReading(std::function<void()> const& check);

    /// Puts the region's pixels into `pixels`, interleaved, rows tightly packed from the top: width * height * bands()
    /// * sampleBytes() bytes. Regions are read from the top of the picture down; going back up may throw. Throws
    /// HostError where the region does not lie in the picture, and where the picture cannot be read; what `pixels`
    /// holds is then unspecified.
    void read(Region const& region, std::vector<std::uint8_t>& pixels);

protected:
    /// The same, into memory of the right size, for a region that lies in the picture.
    virtual void readInto(Region const& region, std::uint8_t* pixels) = 0;
};
