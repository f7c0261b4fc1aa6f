#pragma once

#include "host/Geometry.h"
#include "host/image/InputFile.h"
#include "host/image/PictureMetadata.h"
#include "host/image/SampleType.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The name of the colour space of linear light, whose samples may exceed white.
constexpr auto kLinearLight = "linear light";

/// The layout of a pixel's samples, and their meaning.
struct SampleFormat {
    size_t width = 0;  ///< pixels
    size_t height = 0; ///< pixels
    size_t bands = 0;  ///< samples per pixel
    SampleType type = SampleType::Unsigned8;
    size_t colours = 0; ///< leading bands that are grey (1), or red, green and blue (3); 0: the file says neither
    bool alpha = false; ///< the file says that the band after them is alpha

    Size size() const { return {width, height}; }
    size_t pixelBytes() const { return bands * bytesOf(type); }
    size_t rowBytes() const { return width * pixelBytes(); }
    /// Whether all bands are grey or RGB, with or without alpha.
    bool isPlain() const { return colours > 0 && bands == colours + (alpha ? 1 : 0); }
};

/// What a file says of a band.
struct BandFacts {
    std::string name;                                  ///< empty: none
    std::optional<std::array<std::uint8_t, 3>> colour; ///< red, green, blue
};

/// Pages of a file that are planes of one picture.
struct ImageStack {
    size_t planes = 1; ///< of one slice at one time: pages with the bands of other channels
    size_t slices = 1;
    size_t times = 1;
    std::string sliceNoun; ///< "z", or "page" where the file does not say what its pages are

    size_t pages() const { return planes * slices * times; }
    bool hasPositions() const { return slices > 1 || times > 1; }
};

/// A slice at a time, counted from 0.
struct StackPosition {
    size_t slice = 0;
    size_t time = 0;

    bool operator==(StackPosition const& other) const { return slice == other.slice && time == other.time; }
    bool operator!=(StackPosition const& other) const { return !(*this == other); }
};

/// Something that a file says of its picture, in its own words.
struct ImageProperty {
    std::string name;
    std::string value;
};

/// The properties of a picture in a file.
struct ImageFacts {
    SampleFormat layout;
    std::string format;              ///< "TIFF"
    size_t pages = 1;                ///< pictures in the file, without reduced-size copies
    std::string pageNoun = "pages";  ///< the format's word for pages
    std::string colourSpace;         ///< of colours other than plain grey or RGB: "CMYK"
    bool convertible = false;        ///< the colours can be converted to sRGB
    int orientation = 1;             ///< value of the orientation tag, if it is not followed; 1: upright
    double pixelsPerMillimetreX = 0; ///< if the file states a physical size; else 0
    double pixelsPerMillimetreY = 0; ///<
    std::string drawn;               ///< how pixels were drawn if the file has none: "drawn at 72 pixels per inch"
    std::uint64_t heldBytes = 0;     ///< approximate memory of the decoder while it reads, besides a few rows
    size_t levels = 1;               ///< sizes in which the decoder gives the picture, at most: SampleRequest::level
    std::optional<double> nodata;    ///< the sample that means that there is none
    std::vector<std::uint8_t> iccProfile;  ///< of the samples; empty: none is stated, or they are sRGB
    std::string followedProfile;           ///< the name of the one that colours were converted from
    std::optional<ImageStack> stack;       ///< of the file's pages, if no page was asked for
    std::vector<BandFacts> bands;          ///< of layout's; empty: the file says nothing of them
    std::vector<ImageProperty> properties; ///< of the picture's making: the instrument, the exposure, the program
    std::vector<MetadataItem> blocks;      ///< EXIF, XMP and IPTC; not those of a TIFF, which has tags
    double dotsPerInchX = 0;               ///< of a print, if the file states it; not of a TIFF. 0: unknown
    double dotsPerInchY = 0;
};

/// The samples of a picture, unchanged from the file.
class SampleSource {
public:
    SampleSource() = default;
    SampleSource(SampleSource const&) = delete;
    SampleSource& operator=(SampleSource const&) = delete;
    virtual ~SampleSource();

    virtual ImageFacts const& facts() const = 0;
    /// Whether regions may be read in any order. If not, they go down the picture, and each row is read once.
    virtual bool readsAnywhere() const { return true; }
    /// Reads a region that lies in the picture: all bands, interleaved, rows tightly packed from the top. Throws
    /// HostError, and what the file's check throws.
    virtual void read(Region const& region, std::uint8_t* samples) = 0;
};

/// The requested part of a file.
struct SampleRequest {
    std::optional<size_t> page; ///< from 1; empty: the file's main picture, or else the first
    bool toSrgb = false;        ///< convert colours to sRGB, if facts().convertible
    bool asNumbers = false;     ///< bands as they lie in the file, even if colours are premultiplied by alpha
    size_t level = 0;           ///< below facts().levels; 0: the full size, others: smaller ones
};

/// Opens a picture file of any supported format. Throws HostError: unreadable image; usage, if there is no such page.
std::unique_ptr<SampleSource> openSamples(std::shared_ptr<InputFile> const& file, SampleRequest const& request);

/// The requested page's number, checked. Throws HostError (usage).
size_t requirePage(InputFile const& file, SampleRequest const& request, size_t pages, std::string const& noun);
