// JPEG 2000, JPEG XL, WebP and HEIF by the libraries that decode them.
#include "tests/support/reading/FileSamples.h"

#include <jxl/decode.h>
#include <libheif/heif.h>
#include <openjpeg.h>
#include <webp/decode.h>

#include <memory>
#include <stdexcept>

using filesamples::Bytes;
using filesamples::Samples;

namespace {

void require(bool done, char const* what) {
    if (!done) throw std::runtime_error(what);
}

} // namespace

// Samples of fewer bits are shifted up to 8, or to 16.
Samples filesamples::readJpeg2000(std::string const& path, bool isCodestream) {
    std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)> const stream(
        opj_stream_create_default_file_stream(path.c_str(), OPJ_TRUE), opj_stream_destroy);
    std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)> const codec(
        opj_create_decompress(isCodestream ? OPJ_CODEC_J2K : OPJ_CODEC_JP2), opj_destroy_codec);
    opj_dparameters_t parameters{};
    opj_set_default_decoder_parameters(&parameters);
    require(opj_setup_decoder(codec.get(), &parameters) != 0, "openjpeg cannot be set up");
    opj_image_t* read = nullptr;
    require(opj_read_header(stream.get(), codec.get(), &read) != 0, "no JPEG 2000");
    std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)> const image(read, opj_image_destroy);
    require(opj_decode(codec.get(), stream.get(), image.get()) != 0, "JPEG 2000 that cannot be decoded");
    auto const& first = image->comps[0];
    Samples samples{first.w, first.h, image->numcomps, {}};
    unsigned const shift = (first.prec <= 8 ? 8 : 16) - first.prec;
    for (size_t pixel = 0; pixel < samples.width * samples.height; ++pixel)
        for (size_t band = 0; band < samples.bands; ++band)
            samples.values.push_back(image->comps[band].data[pixel] * (1 << shift));
    return samples;
}

Samples filesamples::readJpegXl(Bytes const& bytes, size_t page) {
    std::unique_ptr<JxlDecoder, decltype(&JxlDecoderDestroy)> const decoder(JxlDecoderCreate(nullptr),
                                                                            JxlDecoderDestroy);
    JxlDecoderSubscribeEvents(decoder.get(), JXL_DEC_BASIC_INFO | JXL_DEC_FULL_IMAGE);
    JxlDecoderSetInput(decoder.get(), bytes.data(), bytes.size());
    JxlDecoderCloseInput(decoder.get());
    JxlBasicInfo info{};
    JxlPixelFormat format{};
    std::vector<std::uint16_t> pixels;
    // All frames before the wanted one are decoded too.
    for (JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());;
         status = JxlDecoderProcessInput(decoder.get())) {
        if (status == JXL_DEC_FULL_IMAGE && --page == 0) break;
        if (status == JXL_DEC_FULL_IMAGE) continue;
        if (status == JXL_DEC_BASIC_INFO) {
            JxlDecoderGetBasicInfo(decoder.get(), &info);
            format = {info.num_color_channels + (info.alpha_bits > 0 ? 1 : 0),
                      info.bits_per_sample > 8 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
            continue;
        }
        require(status == JXL_DEC_NEED_IMAGE_OUT_BUFFER, "JPEG XL that cannot be decoded");
        pixels.resize(size_t{info.xsize} * info.ysize * format.num_channels);
        size_t const bytesOfSample = format.data_type == JXL_TYPE_UINT16 ? 2 : 1;
        JxlDecoderSetImageOutBuffer(decoder.get(), &format, pixels.data(), bytesOfSample * pixels.size());
    }
    Samples samples{info.xsize, info.ysize, format.num_channels, {}};
    if (format.data_type == JXL_TYPE_UINT16) {
        samples.values.assign(pixels.begin(), pixels.end());
    } else {
        auto const* const narrow = reinterpret_cast<std::uint8_t const*>(pixels.data());
        samples.values.assign(narrow, narrow + pixels.size());
    }
    return samples;
}

Samples filesamples::readWebp(Bytes const& bytes) {
    WebPBitstreamFeatures features{};
    require(WebPGetFeatures(bytes.data(), bytes.size(), &features) == VP8_STATUS_OK, "no WebP");
    int width = 0;
    int height = 0;
    bool const alpha = features.has_alpha != 0;
    auto* const decode = alpha ? WebPDecodeRGBA : WebPDecodeRGB;
    std::unique_ptr<std::uint8_t, decltype(&WebPFree)> const pixels(decode(bytes.data(), bytes.size(), &width, &height),
                                                                    WebPFree);
    require(pixels != nullptr, "WebP that cannot be decoded");
    Samples samples{static_cast<size_t>(width), static_cast<size_t>(height), alpha ? size_t{4} : size_t{3}, {}};
    samples.values.assign(pixels.get(), pixels.get() + samples.width * samples.height * samples.bands);
    return samples;
}

Samples filesamples::readHeif(Bytes const& bytes) {
    std::unique_ptr<heif_context, decltype(&heif_context_free)> const context(heif_context_alloc(), heif_context_free);
    heif_context_read_from_memory_without_copy(context.get(), bytes.data(), bytes.size(), nullptr);
    heif_image_handle* found = nullptr;
    heif_context_get_primary_image_handle(context.get(), &found);
    std::unique_ptr<heif_image_handle, decltype(&heif_image_handle_release)> const handle(found,
                                                                                          heif_image_handle_release);
    heif_image* decoded = nullptr;
    heif_decode_image(handle.get(), &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGB, nullptr);
    require(decoded != nullptr, "HEIF that cannot be decoded");
    std::unique_ptr<heif_image, decltype(&heif_image_release)> const image(decoded, heif_image_release);
    int stride = 0;
    std::uint8_t const* const rows = heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &stride);
    Samples samples{static_cast<size_t>(heif_image_get_width(image.get(), heif_channel_interleaved)),
                    static_cast<size_t>(heif_image_get_height(image.get(), heif_channel_interleaved)),
                    3,
                    {}};
    for (size_t y = 0; y < samples.height; ++y)
        samples.values.insert(samples.values.end(), rows + y * static_cast<size_t>(stride),
                              rows + y * static_cast<size_t>(stride) + 3 * samples.width);
    return samples;
}
