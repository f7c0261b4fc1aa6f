#include "host/output/PngWriter.h"

#include "host/output/TemporaryOutput.h"

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <exception>
#include <vector>

namespace {

// Level 3 with one cheap filter: level 6 with libpng's own choice takes four times as long for a tenth fewer bytes.
constexpr int kCompressionLevel = 3;
constexpr size_t kMaxSide = 0x7fffffff; // limit of a PNG header

int colourType(size_t bands) {
    constexpr std::array<int, 4> kTypes{PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                        PNG_COLOR_TYPE_RGB_ALPHA};
    return kTypes.at(bands - 1);
}

// libpng reports by longjmp, which must not pass over C++ objects: none live between the setjmp and the jump.
void onError(png_structp png, png_const_charp message) {
    auto* const text = static_cast<std::array<char, 256>*>(png_get_error_ptr(png));
    std::snprintf(text->data(), text->size(), "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

bool isLittleEndian() {
    std::uint16_t const one = 1;
    std::uint8_t first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

bool writeHeader(png_structp png, png_infop info, png_uint_32 width, png_uint_32 height, int type, int bits) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_compression_level(png, kCompressionLevel);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    png_set_IHDR(png, info, width, height, bits, type, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    // PNG is big-endian.
    if (bits > 8 && isLittleEndian()) png_set_swap(png);
    return true;
}

bool writePngRows(png_structp png, std::uint8_t const* rows, size_t rowBytes, size_t count) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    for (size_t row = 0; row < count; ++row)
        png_write_row(png, rows + row * rowBytes);
    return true;
}

bool writeEnd(png_structp png, png_infop info) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_write_end(png, info);
    return true;
}

} // namespace

struct PngWriter::State {
    explicit State(OutputFile const& file) : output(file) { bytes.reserve(kBufferBytes); }
    State(State const&) = delete;
    State& operator=(State const&) = delete;
    ~State() { png_destroy_write_struct(&png, &info); }

    void add(png_const_bytep data, size_t count) {
        bytes.insert(bytes.end(), data, data + count);
        if (bytes.size() >= kBufferBytes) flush();
    }

    void flush() {
        output.write(bytes.data(), bytes.size());
        bytes.clear();
    }

    // Throws the exception of a write, or else libpng's message.
    [[noreturn]] void fail() const {
        if (thrown) std::rethrow_exception(thrown);
        throw output.failure(std::string(pngMessage.data()));
    }

    static constexpr size_t kBufferBytes = 64 * 1024;

    TemporaryOutput output;
    std::vector<std::uint8_t> bytes; // waiting to be written
    std::exception_ptr thrown;
    size_t rowBytes = 0;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::array<char, 256> pngMessage{};
};

namespace {

// No exception may pass through libpng: it is kept until libpng has returned.
template <class Writer>
void onWrite(png_structp png, png_bytep data, size_t count) {
    auto* const writer = static_cast<Writer*>(png_get_io_ptr(png));
    try {
        writer->add(data, count);
        return;
    } catch (...) {
        writer->thrown = std::current_exception();
    }
    png_error(png, "the file cannot be written");
}

void onFlush(png_structp) {}

} // namespace

PngWriter::PngWriter(OutputFile const& file, size_t width, size_t height, size_t bands, size_t bits)
    : state_(std::make_unique<State>(file)) {
    State& state = *state_;
    if (width > kMaxSide || height > kMaxSide) throw state.output.failure("the picture is too large for a PNG");
    state.rowBytes = width * bands * bits / 8;
    state.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state.pngMessage, onError, onWarning);
    if (state.png != nullptr) state.info = png_create_info_struct(state.png);
    if (state.info == nullptr) throw state.output.failure("libpng does not start");
    png_set_write_fn(state.png, &state, onWrite<State>, onFlush);
    if (!writeHeader(state.png, state.info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
                     colourType(bands), static_cast<int>(bits)))
        state.fail();
}

PngWriter::~PngWriter() = default;

void PngWriter::writeRows(std::uint8_t const* rows, size_t count) {
    if (!writePngRows(state_->png, rows, state_->rowBytes, count)) state_->fail();
}

void PngWriter::finish() {
    State& state = *state_;
    if (!writeEnd(state.png, state.info)) state.fail();
    state.flush();
    state.output.finish();
}
