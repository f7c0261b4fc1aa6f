#include "host/PngWriter.h"

#include "host/HostError.h"
#include "host/TemporaryOutput.h"

#include <png.h>

#include <array>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

// Level 3 with one cheap filter: level 6 with libpng's own choice takes four times as long for a tenth less.
constexpr int kCompressionLevel = 3;
constexpr size_t kMaxSide = 0x7fffffff; // what a PNG header can say

int colourType(size_t bands) {
    constexpr std::array<int, 4> kTypes{PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                        PNG_COLOR_TYPE_RGB_ALPHA};
    return kTypes.at(bands - 1);
}

// libpng reports by longjmp, which must not pass over C++ objects: between the setjmp and the jump there are none.
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
    // In the file the upper byte comes first.
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
    explicit State(std::string const& path) : output(path) {
        // Of its own: closing it must leave the output's open.
        int const descriptor = dup(output.descriptor());
        file = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
        if (file != nullptr) return;
        int const reason = errno;
        if (descriptor >= 0) close(descriptor);
        throw output.failure(reason);
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    ~State() {
        png_destroy_write_struct(&png, &info);
        if (file != nullptr) std::fclose(file);
    }

    HostError pngFailure() const {
        return errno == ENOSPC || errno == EFBIG ? output.failure(errno) : output.failure(pngMessage.data());
    }

    TemporaryOutput output;
    std::FILE* file = nullptr;
    size_t rowBytes = 0;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::array<char, 256> pngMessage{};
};

PngWriter::PngWriter(std::string const& path, size_t width, size_t height, size_t bands, size_t bits)
    : state_(std::make_unique<State>(path)) {
    if (width > kMaxSide || height > kMaxSide) throw state_->output.failure("the picture is too large for a PNG");
    state_->rowBytes = width * bands * bits / 8;
    state_->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state_->pngMessage, onError, onWarning);
    if (state_->png != nullptr) state_->info = png_create_info_struct(state_->png);
    if (state_->info == nullptr) throw state_->output.failure("libpng does not start");
    png_init_io(state_->png, state_->file);
    errno = 0;
    if (!writeHeader(state_->png, state_->info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
                     colourType(bands), static_cast<int>(bits)))
        throw state_->pngFailure();
}

PngWriter::~PngWriter() = default;

void PngWriter::writeRows(std::uint8_t const* rows, size_t count) {
    errno = 0;
    if (!writePngRows(state_->png, rows, state_->rowBytes, count)) throw state_->pngFailure();
}

void PngWriter::finish() {
    State& state = *state_;
    errno = 0;
    if (!writeEnd(state.png, state.info)) throw state.pngFailure();
    int const closed = std::fclose(state.file);
    state.file = nullptr;
    if (closed != 0) throw state.output.failure(errno);
    state.output.finish();
}
