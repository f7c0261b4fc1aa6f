#pragma once

#include "host/PixelSource.h"

#include <memory>
#include <string>

/// An image file as pixels of 8 bits, or of 16 where wanted, read with libvips: every format that libvips opens.
///
/// What becomes of the file's samples:
///
///     8 bit, 1 to 4 bands, grey or RGB    byte for byte as stored
///     16 bit unsigned, 1 to 4 bands       the upper byte of each sample, v >> 8; with Samples::kAsStored the sample
///     CMYK, Lab, XYZ, scRGB, ...          converted by libvips to sRGB, or to grey where there is one colour band
///     float, signed and 32-bit integers   likewise, values beyond 0..255 clipped
///     more than four bands                the first three, as RGB
///
/// ICC profiles and the orientation tag are not applied: the pixels are the file's. Of several pages or pyramid levels
/// the first is shown. Tiled formats are read anywhere; of others a row is read once, so regions must go down the
/// image. A damaged or truncated file is an error, never grey pixels.
///
/// One thread at a time.
class ImageReader final : public PixelSource {
public:
    enum class Samples {
        kEightBits, ///< always 8 bits
        kAsStored   ///< 16 bits where the file has 16 unsigned bits
    };

    /// Opens the file and reads its header. Throws HostError: missing file, unreadable image.
    explicit ImageReader(std::string const& path, Samples samples = Samples::kEightBits);
    ~ImageReader() override;

    size_t width() const override;
    size_t height() const override;
    size_t bands() const override;
    size_t sampleBytes() const override;
    /// Resolutions of 1 along both axes, which libvips gives where a file has none, are taken as unknown.
    double pixelsPerMillimetreX() const override;
    double pixelsPerMillimetreY() const override;
    std::string description() const override;

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override;

private:
    struct State;
    std::unique_ptr<State> state_;
};
