#include "tests/host/image/TestCodecs.h"

#include "tests/support/TemporaryFolder.h"

#include <jxl/encode.h>
#include <openjpeg.h>

#include <array>
#include <memory>
#include <stdexcept>

namespace {

void require(bool done, char const* what) {
    if (!done) throw std::runtime_error(what);
}

} // namespace

std::string testcodecs::jpeg2000(std::string const& path, Jpeg2000 const& picture) {
    std::vector<opj_image_cmptparm_t> parameters(picture.components.size());
    for (auto& one : parameters) {
        one.dx = one.dy = 1;
        one.w = picture.width;
        one.h = picture.height;
        one.prec = picture.bits;
        one.sgnd = picture.isSigned ? 1 : 0;
    }
    std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)> const image(
        opj_image_create(static_cast<std::uint32_t>(parameters.size()), parameters.data(), OPJ_CLRSPC_UNSPECIFIED),
        opj_image_destroy);
    image->x1 = picture.width;
    image->y1 = picture.height;
    for (size_t i = 0; i < parameters.size(); ++i)
        std::copy(picture.components[i].begin(), picture.components[i].end(), image->comps[i].data);
    opj_cparameters_t settings{};
    opj_set_default_encoder_parameters(&settings);
    settings.numresolution = 1;
    settings.tcp_numlayers = 1;
    settings.cp_disto_alloc = 1;
    std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)> const codec(opj_create_compress(OPJ_CODEC_J2K),
                                                                           opj_destroy_codec);
    require(opj_setup_encoder(codec.get(), &settings, image.get()) != 0, "openjpeg takes no such picture");
    {
        std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)> const stream(
            opj_stream_create_default_file_stream(path.c_str(), OPJ_FALSE), opj_stream_destroy);
        require(opj_start_compress(codec.get(), image.get(), stream.get()) != 0, "openjpeg does not start");
        require(opj_encode(codec.get(), stream.get()) != 0, "openjpeg does not encode");
        require(opj_end_compress(codec.get(), stream.get()) != 0, "openjpeg does not end");
    }
    return readFile(path);
}

std::string testcodecs::number(std::uint64_t value, size_t bytes) {
    std::string text;
    for (size_t i = bytes; i-- > 0;)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

std::string testcodecs::box(std::string const& name, std::string const& content) {
    return number(8 + content.size(), 4) + name + content;
}

std::string testcodecs::jp2File(std::string const& codestream, Jpeg2000 const& picture, std::string const& boxes) {
    unsigned const depth = (picture.bits - 1) | (picture.isSigned ? 0x80u : 0u);
    std::string const size = number(picture.height, 4) + number(picture.width, 4) +
                             number(picture.components.size(), 2) + number(depth, 1) + number(7, 1) + number(0, 2);
    // Grey, or sRGB.
    std::string const colour = number(1, 1) + number(0, 2) + number(picture.components.size() < 3 ? 17 : 16, 4);
    return box("jP  ", "\x0d\x0a\x87\x0a") + box("ftyp", "jp2 " + number(0, 4) + "jp2 ") +
           box("jp2h", box("ihdr", size) + box("colr", colour) + boxes) + box("jp2c", codestream);
}

std::string testcodecs::jpegXl(JpegXl const& picture) {
    std::unique_ptr<JxlEncoder, decltype(&JxlEncoderDestroy)> const encoder(JxlEncoderCreate(nullptr),
                                                                            JxlEncoderDestroy);
    auto const done = [](JxlEncoderStatus status) { require(status == JXL_ENC_SUCCESS, "libjxl does not encode"); };
    bool const floats = picture.bits == 32;
    JxlBasicInfo info{};
    JxlEncoderInitBasicInfo(&info);
    info.xsize = picture.width;
    info.ysize = picture.height;
    info.bits_per_sample = picture.bits;
    info.exponent_bits_per_sample = floats ? 8 : 0;
    info.num_color_channels = picture.colours;
    info.num_extra_channels = (picture.alpha ? 1U : 0U) + (picture.otherChannel ? 1U : 0U);
    info.alpha_bits = picture.alpha ? picture.bits : 0;
    info.alpha_exponent_bits = picture.alpha ? info.exponent_bits_per_sample : 0;
    info.uses_original_profile = 1;
    info.orientation = static_cast<JxlOrientation>(picture.orientation);
    info.have_animation = picture.frames.size() > 1 ? 1 : 0;
    info.animation.tps_numerator = 10;
    info.animation.tps_denominator = 1;
    done(JxlEncoderSetBasicInfo(encoder.get(), &info));
    if (picture.otherChannel) {
        JxlExtraChannelInfo channel{};
        JxlEncoderInitExtraChannelInfo(JXL_CHANNEL_DEPTH, &channel);
        channel.bits_per_sample = picture.bits;
        done(JxlEncoderSetExtraChannelInfo(encoder.get(), info.num_extra_channels - 1, &channel));
    }
    JxlColorEncoding colours{};
    JxlColorEncodingSetToSRGB(&colours, picture.colours == 1 ? JXL_TRUE : JXL_FALSE);
    done(JxlEncoderSetColorEncoding(encoder.get(), &colours));
    JxlEncoderFrameSettings* const settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    done(JxlEncoderSetFrameLossless(settings, JXL_TRUE));
    JxlPixelFormat const format{picture.colours + (picture.alpha ? 1U : 0U),
                                floats             ? JXL_TYPE_FLOAT
                                : picture.bits > 8 ? JXL_TYPE_UINT16
                                                   : JXL_TYPE_UINT8,
                                JXL_NATIVE_ENDIAN, 0};
    for (auto const& frame : picture.frames) {
        JxlFrameHeader header{};
        JxlEncoderInitFrameHeader(&header);
        header.duration = 1;
        if (picture.frames.size() > 1) done(JxlEncoderSetFrameHeader(settings, &header));
        done(JxlEncoderAddImageFrame(settings, &format, frame.data(), frame.size()));
        if (!picture.otherChannel) continue;
        JxlPixelFormat const one{1, format.data_type, JXL_NATIVE_ENDIAN, 0};
        done(JxlEncoderSetExtraChannelBuffer(settings, &one, frame.data(), frame.size() / format.num_channels,
                                             info.num_extra_channels - 1));
    }
    JxlEncoderCloseInput(encoder.get());
    std::string file;
    std::array<std::uint8_t, 65536> part{};
    JxlEncoderStatus status = JXL_ENC_NEED_MORE_OUTPUT;
    while (status == JXL_ENC_NEED_MORE_OUTPUT) {
        std::uint8_t* next = part.data();
        size_t left = part.size();
        status = JxlEncoderProcessOutput(encoder.get(), &next, &left);
        file.append(reinterpret_cast<char const*>(part.data()), part.size() - left);
    }
    done(status);
    return file;
}
