#pragma once

#include "host/Geometry.h"
#include "host/image/InputFile.h"
#include "host/image/SampleType.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// The name of the colour space whose samples are amounts of light, and may be more than white.
constexpr auto kLinearLight = "linear light";

/// How the samples of a pixel lie, and what they stand for.
struct SampleFormat {
    size_t width = 0;  ///< pixels
    size_t height = 0; ///< pixels
    size_t bands = 0;  ///< samples of a pixel
    SampleType type = SampleType::Unsigned8;
    size_t colours = 0; ///< first bands that are grey (1), or red, green and blue (3); 0: the file says neither
    bool alpha = false; ///< whether the file says that the band behind them is alpha

    size_t pixelBytes() const { return bands * bytesOf(type); }
    size_t rowBytes() const { return width * pixelBytes(); }
    /// Whether all bands are grey or RGB, and perhaps alpha.
    bool isPlain() const { return colours > 0 && bands == colours + (alpha ? 1 : 0); }
};

/// What a file says of a picture in it.
struct ImageFacts {
    SampleFormat layout;
    std::string format;              ///< "TIFF"
    size_t pages = 1;                ///< pictures in the file; smaller copies of one are none of their own
    std::string pageNoun = "pages";  ///< what the format calls them
    std::string colourSpace;         ///< of colours that are no plain grey or RGB: "CMYK"
    bool convertible = false;        ///< whether they can be had as sRGB
    int orientation = 1;             ///< of the tag that viewers turn by, where it is ignored; 1: upright
    double pixelsPerMillimetreX = 0; ///< where the file says a physical size; 0 where not
    double pixelsPerMillimetreY = 0; ///<
    std::string drawn;               ///< how pixels were made where the file has none: "drawn at 72 pixels per inch"
    std::uint64_t heldBytes = 0;     ///< about what the decoder holds while it reads, beside a few rows
};

/// Samples of a picture in a file as the file has them.
class SampleSource {
public:
    SampleSource() = default;
    SampleSource(SampleSource const&) = delete;
    SampleSource& operator=(SampleSource const&) = delete;
    virtual ~SampleSource();

    virtual ImageFacts const& facts() const = 0;
    /// Whether regions may be read in any order. If not, they go down the picture, and a row is read once.
    virtual bool readsAnywhere() const { return true; }
    /// A region that lies in the picture: all bands, interleaved, rows tightly packed from the top. Throws HostError,
    /// and what the check of the file throws.
    virtual void read(Region const& region, std::uint8_t* samples) = 0;
};

/// What is wanted of a file.
struct SampleRequest {
    std::optional<size_t> page; ///< from 1; without: the first, or the one that the file says is the main one
    bool toSrgb = false;        ///< colours converted to sRGB, where facts().convertible
    bool asNumbers = false;     ///< bands as they lie in the file, even where colours have been multiplied by alpha
};

/// Opens a picture file of any format that is read. Throws HostError: unreadable image; usage, where there is no such
/// page.
std::unique_ptr<SampleSource> openSamples(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

/// The page's number, checked. Throws HostError (usage).
size_t requirePage(InputFile const& file, SampleRequest const& request, size_t pages, std::string const& noun);
