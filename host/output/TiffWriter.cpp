#include "host/output/TiffWriter.h"

#include "host/Threads.h"
#include "host/image/TiffMessage.h"
#include "host/output/StripCompressor.h"
#include "host/output/TemporaryOutput.h"
#include "host/output/TiffTagWriter.h"

#include <tiffio.h>

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <vector>

namespace {

constexpr double kMicronsPerCentimetre = 10000;
constexpr size_t kStripBytes = 256 * 1024;
// Deflate may enlarge noise a little: well below the 4 GiB limit of a classic TIFF.
constexpr size_t kMaxClassicBytes = size_t{7} << 29;

// Whether it can be stored as a fraction of two 32-bit numbers, in pixels per centimetre.
bool isFraction(double micronsPerPixel) {
    constexpr double kLargest = 4294967295.0;
    return micronsPerPixel >= kMicronsPerCentimetre / kLargest && micronsPerPixel <= kMicronsPerCentimetre * kLargest;
}

size_t rowBytesOf(TiffWriter::Format const& format) {
    return format.width * format.bands * format.bits / 8;
}

bool isBig(TiffWriter::Format const& format) {
    size_t bytes = rowBytesOf(format) * format.height + tifftagwriter::bytesOf(format.tags);
    for (auto const& other : format.others)
        bytes += other.picture.samples.size();
    return bytes > kMaxClassicBytes || std::any_of(format.tags.begin(), format.tags.end(),
                                                   [](TiffTag const& tag) { return tifftags::isBig(tag.type); });
}

} // namespace

bool TiffWriter::Format::hasResolution() const {
    return isFraction(micronsPerPixelX) && isFraction(micronsPerPixelY);
}

struct TiffWriter::State {
    State(OutputFile const& file, Format const& tiffFormat, size_t jobs)
        : output(file),
          format(tiffFormat),
          rowsPerStrip(std::max<size_t>(kStripBytes / rowBytesOf(format), 1)),
          strips({rowBytesOf(format), format.bands, format.bits}, jobs) {
        // A duplicate, so that closing the library's handle leaves TemporaryOutput's descriptor open.
        int const descriptor = dup(output.descriptor());
        if (descriptor < 0) throw output.failure(errno);
        errno = 0;
        // Little-endian, as tags are that are added.
        tiff = TIFFFdOpenExt(descriptor, file.path.c_str(), isBig(format) ? "w8l" : "wl", message.options().get());
        if (tiff != nullptr) return;
        close(descriptor);
        throw failure();
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;
    ~State() {
        if (tiff != nullptr) TIFFClose(tiff);
    }

    // libtiff says where a write failed; the system says why.
    HostError failure() const {
        int const reason = errno;
        return reason != 0 ? output.failure(reason) : output.failure(std::string(message.text()));
    }

    template <class... Values>
    void set(std::uint32_t tag, Values... values) {
        if (TIFFSetField(tiff, tag, values...) != 1) throw failure();
    }

    void setLayout(Size const& size, size_t bands, size_t bits) {
        set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(size.width));
        set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(size.height));
        set(TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(bands));
        set(TIFFTAG_BITSPERSAMPLE, static_cast<int>(bits));
        set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        set(TIFFTAG_PHOTOMETRIC, bands <= 2 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
        set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        if (bands % 2 == 0) {
            std::uint16_t const alpha = EXTRASAMPLE_UNASSALPHA;
            set(TIFFTAG_EXTRASAMPLES, 1, &alpha);
        }
    }

    void setFields() {
        setLayout({format.width, format.height}, format.bands, format.bits);
        set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rowsPerStrip));
        if (format.hasResolution()) {
            set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
            set(TIFFTAG_XRESOLUTION, kMicronsPerCentimetre / format.micronsPerPixelX);
            set(TIFFTAG_YRESOLUTION, kMicronsPerCentimetre / format.micronsPerPixelY);
        }
    }

    void addStrip() {
        strips.add(std::move(strip));
        strip.clear();
        while (strips.isFull())
            writeStrip();
    }

    void writeStrip() {
        StripCompressor::Strip bytes = strips.take();
        errno = 0;
        if (TIFFWriteRawStrip(tiff, stripsWritten++, bytes.data(), static_cast<tmsize_t>(bytes.size())) < 0)
            throw failure();
    }

    void writeOthers() {
        // As slide scanners mark them: reduced-size, and (8) not of the picture itself.
        constexpr std::uint32_t kBesideThePicture = FILETYPE_REDUCEDIMAGE | 8;
        for (auto& [name, picture] : format.others) {
            if (TIFFWriteDirectory(tiff) != 1) throw failure();
            setLayout(picture.size, picture.bands, 8);
            set(TIFFTAG_SUBFILETYPE, kBesideThePicture);
            set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(picture.size.height));
            set(TIFFTAG_IMAGEDESCRIPTION, name.c_str());
            if (TIFFWriteEncodedStrip(tiff, 0, picture.samples.data(), static_cast<tmsize_t>(picture.samples.size())) <
                0)
                throw failure();
        }
    }

    TemporaryOutput output;
    Format format;
    TiffMessage message;
    TIFF* tiff = nullptr;
    size_t rowsPerStrip;
    size_t rows = 0; // taken so far
    std::uint32_t stripsWritten = 0;
    StripCompressor::Strip strip;
    StripCompressor strips;
};

TiffWriter::TiffWriter(OutputFile const& file, Format const& format, size_t jobs)
    : state_(std::make_unique<State>(file, format, threadsFor(jobs))) {
    errno = 0;
    state_->setFields();
}

TiffWriter::~TiffWriter() = default;

void TiffWriter::writeRows(std::uint8_t const* rows, size_t count) {
    State& state = *state_;
    size_t const rowBytes = rowBytesOf(state.format);
    for (size_t i = 0; i < count; ++i) {
        if (state.rows == state.format.height) throw state.output.failure("there are more rows than it has");
        state.strip.insert(state.strip.end(), rows + i * rowBytes, rows + (i + 1) * rowBytes);
        ++state.rows;
        if (state.rows % state.rowsPerStrip == 0 || state.rows == state.format.height) state.addStrip();
    }
}

void TiffWriter::finish() {
    State& state = *state_;
    if (state.rows != state.format.height) throw state.output.failure("rows are missing");
    while (!state.strips.isEmpty())
        state.writeStrip();
    errno = 0;
    state.writeOthers();
    bool const flushed = TIFFFlush(state.tiff) == 1;
    if (!flushed) throw state.failure();
    TIFFClose(state.tiff);
    state.tiff = nullptr;
    tifftagwriter::add(state.output, state.format.tags);
    state.output.finish();
}
