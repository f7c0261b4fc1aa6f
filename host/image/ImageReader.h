#pragma once

#include "host/image/ImageSelection.h"
#include "host/image/InputFile.h"
#include "host/image/PixelSource.h"

#include <memory>
#include <string>
#include <vector>

/// A picture file as pixels of 8 bits, or of 16 where wanted.
///
/// What becomes of the file's samples:
///
///     8 and 16 bits, unsigned             as they lie in the file; with Samples::kEightBits 16 bits become v >> 8
///     floats, signed, 32 bits             refused; a range that is asked for becomes 16 bits
///     1, 2 and 4 bits, palettes           the 8 bits that they stand for
///     CMYK, Lab, XYZ, Radiance's light,   converted to sRGB of 8 bits, which notes() say; refused where every
///     colours multiplied by alpha         sample is to be kept and the conversion is not asked for
///     several pages, or bands that are    refused; those that are asked for are taken
///     neither grey nor RGB
///
/// Alpha is where the file says so. ICC profiles and the orientation tag are not applied: the pixels are the file's,
/// and notes() say where a tag asks for another orientation. Of a pyramid the full picture is read. Tiled formats are
/// read anywhere; of others rows are read once, from the top, so regions must go down the image. A damaged or truncated
/// file is an error, never grey pixels.
///
/// One thread at a time.
class ImageReader final : public PixelSource {
public:
    enum class Samples {
        kEightBits, ///< always 8 bits
        kAsStored   ///< 16 bits where the file has 16 unsigned bits, or where a range is asked for
    };

    struct Options {
        Samples samples = Samples::kEightBits;
        ImageSelection selection;
        bool lossless = false;       ///< colours are converted only where the selection says so
        InputFile::Check check = {}; ///< called now and then while the file is read; may throw to stop it
    };

    /// Opens the file and reads its header. Throws HostError: missing file, unreadable image, usage (the file lacks
    /// what is selected).
    ImageReader(std::string const& path, Options options);
    explicit ImageReader(std::string const& path, Samples samples = Samples::kEightBits);
    ~ImageReader() override;

    size_t width() const override;
    size_t height() const override;
    size_t bands() const override;
    size_t sampleBytes() const override;
    /// Where the file says how large a pixel is of what it shows; how large it is to be printed is something else.
    double pixelsPerMillimetreX() const override;
    double pixelsPerMillimetreY() const override;
    std::string description() const override;
    Selection selection() override;
    Lost lost() const override;
    void whileReading(std::function<void()> const& check) override;
    /// What is done that nobody has asked for, a sentence each: "'a.jpg' is CMYK: its colours are converted to sRGB".
    std::vector<std::string> const& notes() const;

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override;

private:
    class Reading;
    std::unique_ptr<Reading> reading_;
};
