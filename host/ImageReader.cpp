#include "host/ImageReader.h"

#include "host/HostError.h"

#include <vips/vips8>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>

using vips::VError;
using vips::VImage;
using vips::VRegion;

namespace {

// Rows that are asked of libvips at once: enough to keep its tile caches at work, little enough to stay in them.
constexpr size_t kRowsPerRequest = 64;

// libvips lives as long as the process: its types cannot be set up a second time.
class VipsLibrary {
public:
    VipsLibrary() {
        if (VIPS_INIT("velmora") != 0)
            throw std::runtime_error("libvips does not start: " + onOneLine(vips_error_buffer()));
        // No operation twice: a file that changes between two readers must be read anew.
        vips_cache_set_max(0);
        // Warnings would be second lines beside our own message.
        constexpr auto kNotErrors = static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE |
                                                                G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG);
        g_log_set_handler(
            "VIPS", kNotErrors, [](gchar const*, GLogLevelFlags, gchar const*, gpointer) {}, nullptr);
    }
    VipsLibrary(VipsLibrary const&) = delete;
    VipsLibrary& operator=(VipsLibrary const&) = delete;
    ~VipsLibrary() { vips_shutdown(); }
};

void startVips() {
    static VipsLibrary const library;
}

void requireFile(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        std::string const reason = errno == ENOENT ? "no such file" : std::strerror(errno);
        throw HostError(HostError::Kind::MissingFile, "cannot open '" + path + "': " + reason + "; check the path");
    }
    if (S_ISDIR(status.st_mode))
        throw HostError(HostError::Kind::UnreadableImage,
                        "cannot read '" + path + "': it is a folder; name an image file");
}

// The text of the exception ends in what earlier attempts left in libvips' buffer: empty it for the next failure.
HostError unreadable(std::string const& path, VError const& error) {
    vips_error_clear();
    return HostError(HostError::Kind::UnreadableImage,
                     "cannot read '" + path + "': " + onOneLine(error.what()) +
                         "; check that it is an undamaged image in a format that libvips reads");
}

VImage open(std::string const& path) {
    char const* const loader = vips_foreign_find_load(path.c_str());
    if (loader == nullptr) throw VError();
    bool const anywhere = (vips_foreign_flags(loader, path.c_str()) & VIPS_FOREIGN_PARTIAL) != 0;
    auto* const options = VImage::option()
                              ->set("access", anywhere ? VIPS_ACCESS_RANDOM : VIPS_ACCESS_SEQUENTIAL)
                              ->set("fail_on", VIPS_FAIL_ON_ERROR);
    // As a loader's argument, not VImage::new_from_file: that one takes a "[" in a file name for options.
    VImage image;
    VImage::call(loader, options->set("filename", path.c_str())->set("out", &image));
    return image;
}

bool isPlainColour(VipsInterpretation interpretation) {
    switch (interpretation) {
    case VIPS_INTERPRETATION_MULTIBAND:
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_RGB:
    case VIPS_INTERPRETATION_sRGB:
    case VIPS_INTERPRETATION_GREY16:
    case VIPS_INTERPRETATION_RGB16:
        return true;
    default:
        return false;
    }
}

VImage toDisplayColour(VImage const& image) {
    auto const display = image.bands() <= 2 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    // Corrects labels that do not fit the samples, such as a three-band "multiband" image. From what stays "multiband",
    // two bands or more than four, libvips knows no way to a colour.
    auto const guessed = image.guess_interpretation();
    auto const label = guessed == VIPS_INTERPRETATION_MULTIBAND ? display : guessed;
    VImage const labelled = image.copy(VImage::option()->set("interpretation", static_cast<int>(label)));
    return labelled.colourspace(display).cast(VIPS_FORMAT_UCHAR);
}

VImage shownSamples(VImage const& image, ImageReader::Samples samples) {
    bool const plain = image.coding() == VIPS_CODING_NONE && isPlainColour(image.interpretation());
    if (plain && image.format() == VIPS_FORMAT_UCHAR) return image;
    if (plain && image.format() == VIPS_FORMAT_USHORT && samples == ImageReader::Samples::kAsStored) return image;
    // A shifting cast, not vips_colourspace: that one rounds on its way through other spaces.
    if (plain && image.format() == VIPS_FORMAT_USHORT)
        return image.cast(VIPS_FORMAT_UCHAR, VImage::option()->set("shift", true));
    return toDisplayColour(image);
}

VImage shownBands(VImage const& image) {
    return image.bands() <= 4 ? image : image.extract_band(0, VImage::option()->set("n", 3));
}

bool hasResolution(VImage const& image) {
    bool const whatFilesWithoutGet = image.xres() == 1 && image.yres() == 1;
    return image.xres() > 0 && image.yres() > 0 && !whatFilesWithoutGet;
}

std::string describe(VImage const& image) {
    char const* const interpretation = vips_enum_nick(VIPS_TYPE_INTERPRETATION, image.interpretation());
    char const* const format = vips_enum_nick(VIPS_TYPE_BAND_FORMAT, image.format());
    // libvips' own format is opened without a loader.
    std::string const loader = image.get_typeof(VIPS_META_LOADER) == 0 ? "vips" : image.get_string(VIPS_META_LOADER);
    return std::to_string(image.bands()) + (image.bands() == 1 ? " band of " : " bands of ") + format + ", " +
           interpretation + ", " + loader;
}

} // namespace

struct ImageReader::State {
    std::string path;
    std::string description;
    VImage image;
    VRegion region;
};

ImageReader::ImageReader(std::string const& path, Samples samples) {
    requireFile(path);
    startVips();
    try {
        VImage const native = open(path);
        VImage const image = shownBands(shownSamples(native, samples));
        state_ = std::make_unique<State>(State{path, describe(native), image, VRegion::new_from_image(image)});
    } catch (VError const& error) {
        throw unreadable(path, error);
    }
}

ImageReader::~ImageReader() = default;

size_t ImageReader::width() const {
    return static_cast<size_t>(state_->image.width());
}

size_t ImageReader::height() const {
    return static_cast<size_t>(state_->image.height());
}

size_t ImageReader::bands() const {
    return static_cast<size_t>(state_->image.bands());
}

size_t ImageReader::sampleBytes() const {
    return state_->image.format() == VIPS_FORMAT_USHORT ? 2 : 1;
}

double ImageReader::pixelsPerMillimetreX() const {
    return hasResolution(state_->image) ? state_->image.xres() : 0;
}

double ImageReader::pixelsPerMillimetreY() const {
    return hasResolution(state_->image) ? state_->image.yres() : 0;
}

std::string ImageReader::description() const {
    return state_->description;
}

void ImageReader::readInto(Region const& region, std::uint8_t* pixels) {
    size_t const rowBytes = region.width * bands() * sampleBytes();
    int const x = static_cast<int>(region.x);
    int const width = static_cast<int>(region.width);
    try {
        for (size_t row = 0; row < region.height; row += kRowsPerRequest) {
            int const y = static_cast<int>(region.y + row);
            int const rows = static_cast<int>(std::min(kRowsPerRequest, region.height - row));
            state_->region.prepare(x, y, width, rows);
            for (int i = 0; i < rows; ++i)
                std::memcpy(pixels + (row + static_cast<size_t>(i)) * rowBytes, state_->region.addr(x, y + i),
                            rowBytes);
        }
    } catch (VError const& error) {
        throw unreadable(state_->path, error);
    }
}
