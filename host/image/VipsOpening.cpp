#include "host/image/VipsOpening.h"

#include "host/image/CodecFacts.h"
#include "host/image/PixelDensity.h"
#include "host/image/TiffDirectory.h"
#include "host/image/VipsColours.h"
#include "host/image/VipsLibrary.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

using vips::VImage;
using vipslibrary::Loader;
using vipsopening::Opened;

namespace {

constexpr auto kMultiplied = "colours multiplied by their alpha";
constexpr long kMostLevels = 64;
// libvips keeps this many rows of a slide's tiles, for tiles of the largest height.
constexpr double kSlideRows = 2.5 * 1024;

// What is known before libvips opens the file, and the options for opening it.
struct Preparation {
    std::optional<TiffDirectory> tiff;
    std::optional<codecfacts::Jpeg2000> jpeg2000;
    size_t frames = 1;
    std::vector<std::uint64_t> zeros;
};

bool is(Loader const& loader, char const* nickname) {
    return std::strcmp(loader.nickname, nickname) == 0;
}

bool endsIn(std::string const& text, std::string const& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// OpenSlide reads files of any kind, and is not hardened against hostile ones: it is given possible slides only.
bool mayBeSlide(InputFile& file) {
    std::array<char const*, 4> const endings{".mrxs", ".vms", ".vmu", ".svslide"};
    return isTiff(file) ||
           std::any_of(endings.begin(), endings.end(), [&](char const* ending) { return endsIn(file.path(), ending); });
}

bool reads(Loader const& loader, InputFile& file, VipsSource* source) {
    if (is(loader, "openslideload")) return vipsopening::isSlide(file);
    // libvips does not accept a TIFF whose first directory is damaged; it is reported as a damaged TIFF.
    if (is(loader, "tiffload")) return isTiff(file);
    vips_source_rewind(source);
    return vips_foreign_is_a_source((std::string(loader.nickname) + "_source").c_str(), source) != 0;
}

Loader const& loaderOf(InputFile& file, VipsSource* source) {
    for (Loader const& loader : vipslibrary::kLoaders)
        if (reads(loader, file, source)) return loader;
    file.rethrow();
    vips_error_clear();
    std::string formats = "FITS, PNM, PAM, PFM, BMP, VIPS, JPEG XL";
    for (Loader const& loader : vipslibrary::kLoaders)
        if (!is(loader, "openslideload")) formats += std::string(", ") + loader.format;
    throw HostError(HostError::Kind::UnreadableImage,
                    "cannot read '" + file.path() + "': it is in none of the formats that " +
                        "are read, or its start is damaged; convert it to one of " + formats);
}

Preparation prepare(Loader const& loader, InputFile& file, SampleRequest const& request) {
    Preparation known;
    if (is(loader, "pngload")) known.frames = codecfacts::framesOfPng(file);
    if (is(loader, "jp2kload")) known.jpeg2000 = codecfacts::jpeg2000(file);
    if (is(loader, "tiffload")) {
        known.tiff = TiffDirectory::read(file, request);
        if (request.asNumbers) known.zeros = known.tiff->multipliedTags;
    }
    if (known.tiff && known.tiff->roundsPalette)
        throw imageNotRead(file.path(), "its palette has colours of 16 bits, which are not read; make RGB of it");
    if (known.jpeg2000 && known.jpeg2000->hasPalette)
        throw imageNotRead(file.path(), "JPEG 2000 with a palette is not read; make RGB of it");
    return known;
}

void setLevel(Loader const& loader, size_t level, vips::VOption* options) {
    if (is(loader, "openslideload")) options->set("level", static_cast<int>(level));
    if (is(loader, "jp2kload")) options->set("page", static_cast<int>(level));
    if (is(loader, "jpegload")) options->set("shrink", 1 << level);
}

// 1, 1/2, 1/4 and 1/8, as far as a pixel is left: libvips rounds down, and ends the program where a side becomes 0.
size_t levelsOfJpeg(VImage const& image) {
    int const side = std::min(image.width(), image.height());
    size_t levels = 1;
    while (levels < 4 && side >> levels > 0)
        ++levels;
    return levels;
}

// Sizes that the decoder gives.
size_t levelsOf(VImage const& image, Loader const& loader) {
    char const* const counter = is(loader, "openslideload") ? "openslide.level-count" : VIPS_META_N_PAGES;
    if (is(loader, "jpegload")) return levelsOfJpeg(image);
    if (!is(loader, "openslideload") && !is(loader, "jp2kload")) return 1;
    if (image.get_typeof(counter) == 0) return 1;
    // libvips keeps OpenSlide's properties as texts.
    bool const isText = image.get_typeof(counter) != G_TYPE_INT;
    long const count = isText ? std::strtol(image.get_string(counter), nullptr, 10) : image.get_int(counter);
    return static_cast<size_t>(std::clamp(count, 1L, kMostLevels));
}

VImage load(Loader const& loader, InputFile const& file, VipsSource* source, SampleRequest const& request,
            Preparation const& known) {
    VImage image;
    auto* const options =
        VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_ERROR)->set("out", &image);
    if (known.tiff)
        options->set("page", static_cast<int>(known.tiff->index));
    else if (loader.paged && request.page)
        options->set("page", static_cast<int>(std::min<size_t>(*request.page, 100000)) - 1);
    if (request.level > 0) setLevel(loader, request.level, options);
    // As a loader's argument: VImage::new_from_file takes a "[" in a file name for options.
    if (is(loader, "openslideload")) {
        VImage::call(loader.nickname, options->set("filename", file.path().c_str()));
        // A slide has no alpha: gaps between its tiles have the background colour.
        return image.extract_band(0, VImage::option()->set("n", 3));
    }
    vips_source_rewind(source);
    std::string const name = std::string(loader.nickname) + "_source";
    VImage::call(name.c_str(), options->set("source", vips::VSource(VIPS_SOURCE(source), vips::NOSTEAL)));
    return image;
}

// libvips shifts JPEG 2000 samples of fewer bits up. Unsigned ones of up to 8 or 16 bits stay shifted, as in other
// formats whose decoders scale; others are shifted back to numbers for which a user chooses a range.
VImage withOwnNumbers(VImage const& image, Preparation const& known) {
    if (!known.jpeg2000 || known.jpeg2000->bits == 0) return image;
    if (image.format() == VIPS_FORMAT_UCHAR || image.format() == VIPS_FORMAT_USHORT) return image;
    auto const held = 8 * static_cast<int>(vips_format_sizeof(image.format()));
    int const shift = held - static_cast<int>(known.jpeg2000->bits);
    return shift > 0 ? image >> shift : image;
}

size_t pagesOf(VImage const& image, Loader const& loader, Preparation const& known) {
    if (known.tiff) return known.tiff->pages;
    if (loader.paged && image.get_typeof(VIPS_META_N_PAGES) != 0)
        return static_cast<size_t>(std::max(image.get_int(VIPS_META_N_PAGES), 1));
    return known.frames;
}

// Throws if the requested picture cannot be read.
void requireFrame(InputFile const& file, SampleRequest const& request, Loader const& loader, ImageFacts const& facts) {
    requirePage(file, request, facts.pages, facts.pageNoun);
    if (loader.paged || request.page.value_or(1) == 1) return;
    throw HostError(HostError::Kind::Usage, "of the " + std::to_string(facts.pages) + " " + facts.pageNoun + " of '" +
                                                file.path() + "' the first alone is read; --page is 1");
}

void nameBands(Loader const& loader, Preparation const& known, ImageFacts& facts) {
    SampleFormat& layout = facts.layout;
    if (known.tiff) {
        layout.colours = known.tiff->colourSpace.empty() ? known.tiff->colourBands : 0;
        layout.alpha = known.tiff->hasAlpha;
        facts.colourSpace = known.tiff->colourSpace;
        facts.convertible = facts.convertible || known.tiff->convertible;
        if (!known.tiff->isMultiplied) return;
        facts.colourSpace = kMultiplied;
        facts.convertible = true;
        return;
    }
    bool const isScene = is(loader, "radload");
    // Floats of other formats are labelled linear light too, though they need not be linear.
    if (facts.colourSpace == kLinearLight && !isScene) facts.colourSpace.clear();
    layout.alpha = layout.bands == layout.colours + 1;
    if (known.jpeg2000) layout.alpha = layout.alpha && known.jpeg2000->lastIsAlpha;
    if (known.jpeg2000 && known.jpeg2000->lastIsMultiplied) facts.colourSpace = kMultiplied;
}

void setDensity(VImage const& image, Loader const& loader, Preparation const& known, ImageFacts& facts) {
    using pixeldensity::Origin;
    if (known.tiff) {
        if (pixeldensity::setFromOme(facts, known.tiff->description)) return;
        pixeldensity::set(facts, Origin::Tag, known.tiff->pixelsPerMillimetreX, known.tiff->pixelsPerMillimetreY);
    } else if (known.jpeg2000) {
        pixeldensity::set(facts, Origin::Tag, known.jpeg2000->pixelsPerMillimetreX,
                          known.jpeg2000->pixelsPerMillimetreY);
    } else if (is(loader, "openslideload")) {
        // libvips reports 1 for a slide that does not state them.
        if (image.get_typeof("openslide.mpp-x") != 0 && image.get_typeof("openslide.mpp-y") != 0)
            pixeldensity::set(facts, Origin::Instrument, image.xres(), image.yres());
    } else if (!is(loader, "pdfload")) {
        pixeldensity::set(facts, Origin::Hint, image.xres(), image.yres());
    }
}

// Deflate's largest ratio of compression.
constexpr std::uint64_t kMostOfDeflate = 1032;

// Sizes in a header are not trusted.
void requirePossible(VImage const& image, Loader const& loader, InputFile const& file) {
    if (!is(loader, "pngload")) return;
    auto const height = static_cast<std::uint64_t>(image.height());
    // Even 1-bit pixels take an eighth of a byte each.
    std::uint64_t const rowBytes = static_cast<std::uint64_t>(image.width()) / 8 + 1;
    if (rowBytes <= kMostOfDeflate * file.size() / height) return;
    throw unreadableImage(file.path(), "its header says " + std::to_string(image.width()) + " x " +
                                           std::to_string(height) + " pixels, which are more than the file holds");
}

// What EXIF says of the exposure. libvips writes "1/125 (1/125 sec., Rational, 1 components, 8 bytes)".
std::vector<ImageProperty> exifOf(VImage const& image) {
    struct Field {
        char const* field;
        char const* name;
    };
    std::array<Field, 11> const fields{{{"exif-ifd0-Make", "make"},
                                        {"exif-ifd0-Model", "model"},
                                        {"exif-ifd2-LensModel", "lens"},
                                        {"exif-ifd2-ExposureTime", "exposure in seconds"},
                                        {"exif-ifd2-FNumber", "f-number"},
                                        {"exif-ifd2-ISOSpeedRatings", "ISO speed"},
                                        {"exif-ifd2-FocalLength", "focal length in mm"},
                                        {"exif-ifd2-DateTimeOriginal", "date"},
                                        {"exif-ifd0-Software", "software"},
                                        {"exif-ifd0-Artist", "artist"},
                                        {"exif-ifd0-Copyright", "copyright"}}};
    std::vector<ImageProperty> found;
    for (auto const& [field, name] : fields) {
        if (image.get_typeof(field) != VIPS_TYPE_REF_STRING) continue;
        std::string const text = image.get_string(field);
        std::string const value = text.substr(0, text.rfind(" ("));
        if (value.find_first_not_of(' ') != std::string::npos) found.push_back({name, value});
    }
    return found;
}

// All that OpenSlide tells, but for the places of levels, regions and other pictures.
std::vector<ImageProperty> slideProperties(VImage const& image) {
    std::array<std::string, 4> const places{"openslide.level", "openslide.region", "openslide.associated",
                                            "openslide.bounds"};
    std::vector<ImageProperty> found;
    char** const fields = vips_image_get_fields(image.get_image());
    for (char** field = fields; *field != nullptr; ++field) {
        std::string const name = *field;
        bool const isPlace = std::any_of(places.begin(), places.end(),
                                         [&](std::string const& place) { return name.rfind(place, 0) == 0; });
        bool const isOfSlide = name.find('.') != std::string::npos && image.get_typeof(*field) == VIPS_TYPE_REF_STRING;
        if (isOfSlide && !isPlace) found.push_back({name, image.get_string(*field)});
    }
    g_strfreev(fields);
    return found;
}

// Texts of a PNG; libvips calls them "png-comment-0-Title".
void addTexts(VImage const& image, std::vector<ImageProperty>& properties) {
    std::string const start = "png-comment-";
    char** const fields = vips_image_get_fields(image.get_image());
    for (char** field = fields; *field != nullptr; ++field) {
        std::string const name = *field;
        size_t const end = name.find('-', start.size());
        if (name.rfind(start, 0) == 0 && end != std::string::npos)
            properties.push_back({name.substr(end + 1), image.get_string(*field)});
    }
    g_strfreev(fields);
}

std::vector<ImageProperty> propertiesOf(VImage const& image, Loader const& loader, InputFile& file,
                                        Preparation const& known) {
    if (known.tiff) return known.tiff->properties;
    if (is(loader, "openslideload")) return slideProperties(image);
    auto properties = exifOf(image);
    addTexts(image, properties);
    if (is(loader, "jpegload"))
        for (std::string const& comment : codecfacts::commentsOfJpeg(file))
            properties.push_back({"comment", comment});
    return properties;
}

std::vector<std::uint8_t> bytesOf(VImage const& image, char const* field) {
    if (image.get_typeof(field) != VIPS_TYPE_BLOB) return {};
    size_t count = 0;
    auto const* const bytes = static_cast<std::uint8_t const*>(image.get_blob(field, &count));
    return {bytes, bytes + count};
}

// libvips reports 1 pixel per millimetre for a file that states none.
void setPrintDensity(VImage const& image, ImageFacts& facts) {
    constexpr double kMillimetresPerInch = 25.4;
    if (image.xres() == 1.0 && image.yres() == 1.0) return;
    facts.dotsPerInchX = image.xres() * kMillimetresPerInch;
    facts.dotsPerInchY = image.yres() * kMillimetresPerInch;
}

std::vector<MetadataItem> blocksOf(VImage const& image) {
    std::vector<MetadataItem> blocks;
    auto const add = [&](char const* kind, char const* field) {
        auto bytes = bytesOf(image, field);
        if (!bytes.empty()) blocks.push_back({kind, {}, std::move(bytes)});
    };
    add(picturemetadata::kExif, VIPS_META_EXIF_NAME);
    add(picturemetadata::kXmp, VIPS_META_XMP_NAME);
    add(picturemetadata::kIptc, VIPS_META_IPTC_NAME);
    return blocks;
}

// HEIF's decoder turns pictures itself.
int ignoredOrientation(VImage const& image, Loader const& loader) {
    if (is(loader, "heifload")) return 1;
    int const told = vips_image_get_orientation(image.get_image());
    if (told != 1) return told;
    // libvips keeps the EXIF block of a PNG, but does not read the orientation from it.
    return codecfacts::exifOrientation(bytesOf(image, VIPS_META_EXIF_NAME));
}

// Approximate memory of libvips and the decoder, according to the sources of libvips 8.14.
std::uint64_t heldBytes(VImage const& image, Loader const& loader, InputFile const& file, Preparation const& known) {
    auto const width = static_cast<std::uint64_t>(image.width());
    auto const height = static_cast<std::uint64_t>(image.height());
    std::uint64_t const rowBytes =
        width * static_cast<std::uint64_t>(image.bands()) * vips_format_sizeof(image.format());
    std::uint64_t const whole = rowBytes * height;
    bool const passes = image.get_typeof("interlaced") != 0;
    if (known.tiff) return known.tiff->heldBytes;
    if (is(loader, "openslideload")) return static_cast<std::uint64_t>(kSlideRows * 4) * width;
    if (is(loader, "jp2kload")) return 3 * rowBytes * std::min<std::uint64_t>(height, 1024) + file.size();
    if (is(loader, "heifload")) return 3 * whole;
    if (is(loader, "webpload") || is(loader, "gifload")) return 8 * width * height + file.size();
    if (is(loader, "jpegload") && passes) return 2 * whole;
    if (is(loader, "pngload") && passes) return whole;
    int tileWidth = 0;
    int tileHeight = 0;
    int rows = 0;
    vips_get_tile_size(image.get_image(), &tileWidth, &tileHeight, &rows);
    return rowBytes * std::min<std::uint64_t>(height, 4 * static_cast<std::uint64_t>(rows));
}

} // namespace

bool vipsopening::isSlide(InputFile& file) {
    return mayBeSlide(file) && vips_foreign_is_a("openslideload", file.path().c_str()) != 0;
}

Opened vipsopening::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    auto source = std::make_unique<VipsSourceOfFile>(file, std::vector<std::uint64_t>{});
    Loader const& loader = loaderOf(*file, source->get());
    Preparation const known = prepare(loader, *file, request);
    if (!known.zeros.empty()) source = std::make_unique<VipsSourceOfFile>(file, known.zeros);
    if (loader.paged && !known.tiff && request.page.value_or(1) > 1) {
        // The number of pages is reported with the first page only.
        SampleRequest const first;
        VImage const whole = load(loader, *file, source->get(), first, known);
        requirePage(*file, request, pagesOf(whole, loader, known), loader.pageNoun);
    }
    VImage const loaded = load(loader, *file, source->get(), request, known);

    Opened opened;
    ImageFacts& facts = opened.facts;
    facts.format = loader.format;
    facts.pageNoun = loader.pageNoun;
    facts.pages = pagesOf(loaded, loader, known);
    if (known.tiff) {
        facts.stack = known.tiff->stack;
        facts.nodata = known.tiff->nodata;
    }
    requireFrame(*file, request, loader, facts);
    requirePossible(loaded, loader, *file);
    facts.orientation = ignoredOrientation(loaded, loader);
    facts.heldBytes = heldBytes(loaded, loader, *file, known);
    facts.levels = levelsOf(loaded, loader);
    facts.iccProfile = bytesOf(loaded, VIPS_META_ICC_NAME);
    facts.properties = propertiesOf(loaded, loader, *file, known);
    bool const isDrawn = is(loader, "pdfload");
    if (isDrawn) facts.drawn = "drawn at 72 pixels per inch";
    if (!known.tiff && !isDrawn && !is(loader, "openslideload")) {
        facts.blocks = is(loader, "jp2kload") ? codecfacts::boxesBeside(*file) : blocksOf(loaded);
        setPrintDensity(loaded, facts);
    }
    setDensity(loaded, loader, known, facts);

    VImage const image = vipscolours::unpacked(withOwnNumbers(loaded, known));
    vipscolours::describe(image, facts);
    nameBands(loader, known, facts);
    opened.image = image;
    if (request.toSrgb && facts.convertible) {
        opened.image = vipscolours::toSrgb(image);
        if (facts.colourSpace != kMultiplied) facts.iccProfile.clear(); // it has been followed
        vipscolours::describe(opened.image, facts);
        facts.layout.alpha = facts.layout.bands == facts.layout.colours + 1;
    }
    opened.readsAnywhere = known.tiff ? known.tiff->tiled : loader.readsAnywhere;
    opened.source = std::move(source);
    return opened;
}
