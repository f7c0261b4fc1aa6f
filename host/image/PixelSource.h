#pragma once

#include "host/Geometry.h"
#include "host/image/PictureMetadata.h"

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

    /// Width in pixels.
    virtual size_t width() const = 0;
    /// Height in pixels.
    virtual size_t height() const = 0;
    /// Samples per pixel: 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA.
    virtual size_t bands() const = 0;
    /// Bytes per sample: 1, or 2 in the machine's byte order.
    virtual size_t sampleBytes() const { return 1; }
    /// Pixels per millimetre along x and along y; 0: unknown.
    virtual double pixelsPerMillimetreX() const { return 0; }
    virtual double pixelsPerMillimetreY() const { return 0; }
    /// A human-readable description: "3 bands of 8-bit unsigned samples, PNG".
    virtual std::string description() const = 0;

    /// The part of a file that has been taken, and its conversion.
    struct Selection {
        std::string text;     ///< which part, and how samples were converted; empty: the whole, unchanged
        double rangeLow = 0;  ///< sample of the file that became 0
        double rangeHigh = 0; ///< sample of the file that became 65535; both 0: samples are the file's
    };
    /// May read the whole picture first.
    virtual Selection selection() { return {}; }

    /// Samples that a range changed for good, among all samples read so far.
    struct Lost {
        std::uint64_t clipped = 0;    ///< lay beyond the range
        std::uint64_t notNumbers = 0; ///< not a number; became 0

        bool any() const { return clipped > 0 || notNumbers > 0; }
    };
    virtual Lost lost() const { return {}; }

    /// What the picture's file holds beside its samples.
    virtual PictureMetadata metadata() { return {}; }

    /// Sets a function that is called now and then while a read takes long; an exception of it stops the read.
    virtual void whileReading(std::function<void()> const& check);

    /// Reads the region's pixels into `pixels`, interleaved, rows tightly packed from the top: width * height * bands()
    /// * sampleBytes() bytes. Regions are read from the top of the picture down; going back up may throw. Throws
    /// HostError if the region does not lie in the picture, or the picture cannot be read; the content of `pixels` is
    /// then unspecified.
    void read(Region const& region, std::vector<std::uint8_t>& pixels);

protected:
    /// As read(), into memory of the right size, for a region that lies in the picture.
    virtual void readInto(Region const& region, std::uint8_t* pixels) = 0;
};
