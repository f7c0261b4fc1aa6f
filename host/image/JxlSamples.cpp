#include "host/image/JxlSamples.h"

#include "host/Threads.h"
#include "host/image/CodecFacts.h"

#include <jxl/decode.h>
#include <jxl/parallel_runner.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr size_t kPartBytes = 256 * 1024;
constexpr std::uint64_t kWorkingBytes = 12; // of libjxl per pixel, about

// Silences libjxl, which prints lines of its own about a damaged file; our message suffices.
class Silence {
public:
    Silence() : kept_(dup(STDERR_FILENO)) {
        int const nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (kept_ >= 0 && nowhere >= 0) dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0) close(nowhere);
    }
    Silence(Silence const&) = delete;
    Silence& operator=(Silence const&) = delete;
    ~Silence() {
        if (kept_ < 0) return;
        dup2(kept_, STDERR_FILENO);
        close(kept_);
    }

private:
    int kept_;
};

// Calls `work` for each number from `begin` up to `end`, on as many threads as the system gives and on the caller's
// own. libjxl's own runner ends the program if the system gives fewer threads than requested.
JxlParallelRetCode runOnThreads(void* /*runner*/, void* picture, JxlParallelRunInit init, JxlParallelRunFunction work,
                                std::uint32_t begin, std::uint32_t end) {
    if (begin >= end) return 0;
    size_t const helpers = std::min<size_t>(threadsFor(0), end - begin) - 1;
    JxlParallelRetCode const code = init(picture, helpers + 1);
    if (code != 0) return code;
    std::atomic<std::uint64_t> next{begin};
    auto const run = [&](size_t thread) {
        for (std::uint64_t number = next++; number < end; number = next++)
            work(picture, static_cast<std::uint32_t>(number), thread);
    };
    std::vector<std::thread> threads;
    try {
        threads = startThreads(helpers, [&](size_t helper) { run(helper + 1); });
    } catch (std::bad_alloc const&) {
        threads.clear(); // no thread was started
    }
    run(0);
    for (std::thread& thread : threads)
        thread.join();
    return 0;
}

// A decoder that is fed from a file.
class Stream {
public:
    Stream(InputFile& file, int events)
        : file_(file), decoder_(JxlDecoderCreate(nullptr), JxlDecoderDestroy), part_(kPartBytes) {
        require(JxlDecoderSetParallelRunner(decoder_.get(), runOnThreads, nullptr));
        require(JxlDecoderSubscribeEvents(decoder_.get(), events));
    }

    JxlDecoder* decoder() const { return decoder_.get(); }

    void require(JxlDecoderStatus status) const {
        if (status != JXL_DEC_SUCCESS) throw unreadableImage(file_.path(), "libjxl cannot decode it");
    }

    /// The next event, or the end.
    JxlDecoderStatus next() {
        while (true) {
            file_.check();
            JxlDecoderStatus const status = process();
            if (status == JXL_DEC_ERROR) require(status);
            if (status != JXL_DEC_NEED_MORE_INPUT) return status;
            feed();
        }
    }

private:
    JxlDecoderStatus process() {
        Silence const silence;
        return JxlDecoderProcessInput(decoder_.get());
    }

    void feed() {
        size_t const left = JxlDecoderReleaseInput(decoder_.get());
        // The decoder needs a larger part at once.
        if (left == part_.size()) part_.resize(2 * part_.size());
        offset_ -= left;
        auto const got = file_.readAt(offset_, part_.data(), part_.size());
        file_.rethrow();
        auto const count = static_cast<size_t>(std::max<std::int64_t>(got, 0));
        if (count <= left) throw unreadableImage(file_.path(), "the file ends before its picture does");
        require(JxlDecoderSetInput(decoder_.get(), part_.data(), count));
        offset_ += count;
    }

    InputFile& file_;
    std::unique_ptr<JxlDecoder, decltype(&JxlDecoderDestroy)> decoder_;
    std::vector<std::uint8_t> part_;
    std::uint64_t offset_ = 0;
};

// Basic info, and the ICC profile of the samples that are decoded: libjxl makes one of colours that the file names.
JxlBasicInfo infoOf(InputFile& file, std::vector<std::uint8_t>& profile) {
    Stream stream(file, JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING);
    JxlBasicInfo info{};
    if (stream.next() != JXL_DEC_BASIC_INFO) stream.require(JXL_DEC_ERROR);
    stream.require(JxlDecoderGetBasicInfo(stream.decoder(), &info));
    if (stream.next() != JXL_DEC_COLOR_ENCODING) stream.require(JXL_DEC_ERROR);
    size_t bytes = 0;
    if (JxlDecoderGetICCProfileSize(stream.decoder(), nullptr, JXL_COLOR_PROFILE_TARGET_DATA, &bytes) !=
        JXL_DEC_SUCCESS)
        return info;
    profile.resize(bytes);
    stream.require(JxlDecoderGetColorAsICCProfile(stream.decoder(), nullptr, JXL_COLOR_PROFILE_TARGET_DATA,
                                                  profile.data(), bytes));
    return info;
}

size_t framesOf(InputFile& file) {
    Stream stream(file, JXL_DEC_FRAME);
    size_t frames = 0;
    while (stream.next() == JXL_DEC_FRAME)
        ++frames;
    return frames;
}

SampleType typeOf(JxlBasicInfo const& info) {
    if (info.exponent_bits_per_sample > 0 || info.alpha_exponent_bits > 0) return SampleType::Float32;
    return info.bits_per_sample > 8 ? SampleType::Unsigned16 : SampleType::Unsigned8;
}

JxlDataType dataTypeOf(SampleType type) {
    if (type == SampleType::Float32) return JXL_TYPE_FLOAT;
    return type == SampleType::Unsigned16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8;
}

class JxlSamples final : public SampleSource {
public:
    JxlSamples(std::shared_ptr<InputFile> file, SampleRequest const& request) : file_(std::move(file)) {
        JxlBasicInfo const info = infoOf(*file_, facts_.iccProfile);
        if (info.num_extra_channels > (info.alpha_bits > 0 ? 1u : 0u))
            throw imageNotRead(file_->path(), "it has channels beside colours and alpha, which are not read");
        facts_.format = "JPEG XL";
        facts_.pageNoun = "frames";
        facts_.pages = info.have_animation != 0 ? framesOf(*file_) : 1;
        frame_ = requirePage(*file_, request, facts_.pages, facts_.pageNoun) - 1;
        SampleFormat& layout = facts_.layout;
        layout.width = info.xsize;
        layout.height = info.ysize;
        layout.colours = info.num_color_channels;
        layout.alpha = info.alpha_bits > 0;
        layout.bands = layout.colours + (layout.alpha ? 1 : 0);
        layout.type = typeOf(info);
        facts_.blocks = codecfacts::boxesBeside(*file_);
        facts_.heldBytes = layout.height * (layout.rowBytes() + kWorkingBytes * layout.width);
    }

    ImageFacts const& facts() const override { return facts_; }

    void read(Region const& region, std::uint8_t* samples) override {
        if (pixels_.empty()) decode();
        SampleFormat const& layout = facts_.layout;
        size_t const rowBytes = region.width * layout.pixelBytes();
        for (size_t row = 0; row < region.height; ++row)
            std::memcpy(samples + row * rowBytes,
                        &pixels_[(region.y + row) * layout.rowBytes() + region.x * layout.pixelBytes()], rowBytes);
    }

private:
    void decode() {
        SampleFormat const& layout = facts_.layout;
        JxlPixelFormat const format{static_cast<std::uint32_t>(layout.bands), dataTypeOf(layout.type),
                                    JXL_NATIVE_ENDIAN, 0};
        Stream stream(*file_, JXL_DEC_FULL_IMAGE);
        JxlDecoderSkipFrames(stream.decoder(), frame_);
        std::vector<std::uint8_t> pixels(layout.height * layout.rowBytes());
        JxlDecoderStatus status = stream.next();
        while (status == JXL_DEC_NEED_IMAGE_OUT_BUFFER) {
            stream.require(JxlDecoderSetImageOutBuffer(stream.decoder(), &format, pixels.data(), pixels.size()));
            status = stream.next();
        }
        if (status != JXL_DEC_FULL_IMAGE) stream.require(JXL_DEC_ERROR);
        pixels_ = std::move(pixels);
    }

    std::shared_ptr<InputFile> file_;
    ImageFacts facts_;
    size_t frame_ = 0;
    std::vector<std::uint8_t> pixels_; // empty before the first region is read
};

} // namespace

bool jxlpicture::is(std::string const& start) {
    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(start.data());
    JxlSignature const signature = JxlSignatureCheck(bytes, start.size());
    return signature == JXL_SIG_CODESTREAM || signature == JXL_SIG_CONTAINER;
}

std::unique_ptr<SampleSource> jxlpicture::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    return std::make_unique<JxlSamples>(file, request);
}
