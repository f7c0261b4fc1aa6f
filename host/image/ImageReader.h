#pragma once

#include "host/image/ImageSelection.h"
#include "host/image/InputFile.h"
#include "host/image/PixelSource.h"

#include <memory>
#include <string>
#include <vector>

/// A picture file as pixels of 8 bits, or of 16 on request.
///
/// Treatment of the file's samples:
///
///     8 and 16 bits, unsigned             as they lie in the file; with Samples::kEightBits 16 bits become v >> 8
///     floats, signed, 32 bits             refused; with a range they become 16 bits
///     1, 2 and 4 bits, palettes           expanded to 8 bits
///     CMYK, Lab, XYZ, Radiance's light,   converted to sRGB of 8 bits, which notes() report; with Options::lossless
///     premultiplied alpha                 refused, unless the selection converts them
///     several pages, or bands that are    refused; the selected ones are taken
///     neither grey nor RGB
///
/// The file says which band is alpha. ICC profiles and the orientation tag are followed where the selection says so,
/// which the description tells, or notes() why not. A pyramid is read at full size. Tiled formats are read in any
/// order; rows of other formats are read once, from the top, so regions must go down the image. A damaged or truncated
/// file is an error, never grey pixels.
///
/// One thread at a time.
class ImageReader final : public PixelSource {
public:
    enum class Samples {
        kEightBits, ///< always 8 bits
        kAsStored   ///< 16 bits if the file has 16 unsigned bits, or with a range
    };

    struct Options {
        Samples samples = Samples::kEightBits;
        ImageSelection selection;
        bool lossless = false; ///< colours are converted only if the selection says so
        /// Samples of every type and bands of any meaning are not refused: the file is opened for its notes, and must
        /// not be read. A range is for showing it.
        bool anySamples = false;
        InputFile::Check check = {}; ///< called now and then while the file is read; an exception stops it
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
    /// Pixels per millimetre of the object shown, if the file states them; not those of a print.
    double pixelsPerMillimetreX() const override;
    double pixelsPerMillimetreY() const override;
    std::string description() const override;
    Selection selection() override;
    Lost lost() const override;
    PictureMetadata metadata() override;
    void whileReading(std::function<void()> const& check) override;
    /// Conversions that no option asked for, one sentence each: "'a.jpg' is CMYK: its colours are converted to sRGB".
    std::vector<std::string> const& notes() const;

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override;

private:
    class Reading;
    std::unique_ptr<Reading> reading_;
};
