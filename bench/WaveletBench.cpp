// One level of the inverse 5/3 wavelet, four bands to 1024 x 1024 samples: two vertical steps and a horizontal one.
//   ours       through executeFilter, two 16-bit samples per texel
//   bytepairs  the same passes in bare GL with the filter written on byte pairs, high and low byte apart with carries
//              between them, as is usual on GLES 2: ours reads whole samples and splits them at the end
//   processor  arrays of 16-bit numbers, loops that the compiler vectorises, one thread
// All three must give the same samples. An iteration is one level and ends with glFinish where GL draws.
#include "bench/Benchmarks.h"
#include "bench/GlBenchContext.h"
#include "bench/RawPass.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "host/filter/FilterDescriptions.h"

#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

constexpr size_t kOutput = 1024;
constexpr size_t kBand = kOutput / 2 + 2; // samples per side of a band, see description::filterFirIH53LeGall16()

using Samples = std::vector<std::int16_t>;

// Row-major, `width` samples per row.
struct Band {
    size_t width;
    size_t height;
    Samples samples;

    Band(size_t columns, size_t rows) : width(columns), height(rows), samples(columns * rows) {}
    std::int16_t* row(size_t y) { return &samples[y * width]; }
    std::int16_t const* row(size_t y) const { return &samples[y * width]; }
};

// Small enough that no sum overflows 16 bits.
Band noise(std::uint32_t state, std::int32_t magnitude) {
    Band band(kBand, kBand);
    for (auto& sample : band.samples) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<std::int16_t>(static_cast<std::int32_t>(state >> 16U) % (2 * magnitude) - magnitude);
    }
    return band;
}

struct Bands {
    Band ll = noise(1, 2000);
    Band hl = noise(2, 600);
    Band lh = noise(3, 600);
    Band hh = noise(4, 600);
};

std::int16_t predicted(int low, int high, int nextHigh) {
    return static_cast<std::int16_t>(low - ((high + nextHigh + 2) >> 2));
}

std::int16_t interpolated(int high, int even, int nextEven) {
    return static_cast<std::int16_t>(high + ((even + nextEven) >> 1));
}

void evenRow(std::int16_t const* low, std::int16_t const* high, std::int16_t const* nextHigh, size_t count,
             std::int16_t* __restrict even) {
    for (size_t x = 0; x < count; ++x)
        even[x] = predicted(low[x], high[x], nextHigh[x]);
}

void oddRow(std::int16_t const* high, std::int16_t const* even, std::int16_t const* nextEven, size_t count,
            std::int16_t* __restrict odd) {
    for (size_t x = 0; x < count; ++x)
        odd[x] = interpolated(high[x], even[x], nextEven[x]);
}

void vertical(Band const& low, Band const& high, Band& out) {
    std::vector<std::int16_t> last(low.width); // the even row below the output
    for (size_t n = 0; n + 1 < low.height; ++n) {
        std::int16_t* const even = 2 * n < out.height ? out.row(2 * n) : last.data();
        evenRow(low.row(n), high.row(n), high.row(n + 1), low.width, even);
        if (n > 0) oddRow(high.row(n), out.row(2 * n - 2), even, low.width, out.row(2 * n - 1));
    }
}

void horizontalRow(std::int16_t const* low, std::int16_t const* high, size_t count, std::int16_t* __restrict even,
                   std::int16_t* __restrict out) {
    for (size_t n = 0; n <= count; ++n)
        even[n] = predicted(low[n], high[n], high[n + 1]);
    for (size_t n = 0; n < count; ++n) {
        out[2 * n] = even[n];
        out[2 * n + 1] = interpolated(high[n + 1], even[n], even[n + 1]);
    }
}

class ProcessorLevel {
public:
    void run() {
        vertical(bands_.ll, bands_.lh, low_);
        vertical(bands_.hl, bands_.hh, high_);
        for (size_t y = 0; y < kOutput; ++y)
            horizontalRow(low_.row(y), high_.row(y), kOutput / 2, even_.data(), out_.row(y));
        benchmark::DoNotOptimize(out_.samples.data());
        benchmark::ClobberMemory();
    }

    Samples const& samples() const { return out_.samples; }

private:
    Bands bands_;
    Band low_{kBand, kOutput};
    Band high_{kBand, kOutput};
    Band out_{kOutput, kOutput};
    Samples even_ = Samples(kBand);
};

// The common beginning of both byte-pair fragment texts. A vec4 holds two samples, each as low and high byte.
constexpr char const* kBytePairs = R"(
highp vec4 pairsOf(highp vec4 texel) {
    highp vec4 bytes = floor(255.0 * texel + 0.5);
    bytes.yw -= 256.0 * step(127.5, bytes.yw);
    return bytes;
}
// The fraction of a high byte goes down into the low one, what that has too much goes up.
highp vec4 normalised(highp vec4 pairs) {
    highp vec2 fractions = fract(pairs.yw);
    highp vec2 carries = floor(pairs.xz / 256.0 + fractions);
    pairs.xz += 256.0 * (fractions - carries);
    pairs.yw += carries;
    return floor(pairs);
}
highp vec4 texelOf(highp vec4 pairs) {
    pairs.yw += 256.0 * step(0.5, -pairs.yw);
    return pairs / 255.0;
}
highp vec4 predicted(highp vec4 low, highp vec4 high, highp vec4 nextHigh) {
    return normalised(low - normalised((high + nextHigh + vec4(2.0, 0.0, 2.0, 0.0)) / 4.0));
}
)";

constexpr char const* kVerticalBytePairs = R"(
void main() {
    highp float odd = floor(mod(gl_FragCoord.y, 2.0));
    highp float toCentre = mix(0.25, -0.25, odd);
    highp vec2 rowL = vec2(0.0, t_0.y);
    highp vec2 rowH = vec2(0.0, t_1.y);
    highp vec2 atL = v_0 + toCentre * rowL;
    highp vec2 atH = v_1 + toCentre * rowH;
    highp vec4 L0 = pairsOf(texture2D(s_0, atL));
    highp vec4 L1 = pairsOf(texture2D(s_0, atL + rowL));
    highp vec4 H0 = pairsOf(texture2D(s_1, atH));
    highp vec4 H1 = pairsOf(texture2D(s_1, atH + rowH));
    highp vec4 H2 = pairsOf(texture2D(s_1, atH + 2.0 * rowH));
    highp vec4 even = predicted(L0, H0, H1);
    highp vec4 nextEven = predicted(L1, H1, H2);
    gl_FragColor = texelOf(mix(even, normalised(H1 + normalised((even + nextEven) / 2.0)), odd));
}
)";

constexpr char const* kHorizontalBytePairs = R"(
void main() {
    highp float odd = floor(mod(gl_FragCoord.x, 2.0));
    highp float toCentre = mix(0.25, -0.25, odd);
    highp vec2 nextL = vec2(t_0.x, 0.0);
    highp vec2 nextH = vec2(t_1.x, 0.0);
    highp vec2 atL = v_0 + toCentre * nextL;
    highp vec2 atH = v_1 + toCentre * nextH;
    highp vec4 low = pairsOf(texture2D(s_0, atL));
    highp vec4 lowAfter = pairsOf(texture2D(s_0, atL + nextL));
    highp vec4 high = pairsOf(texture2D(s_1, atH));
    highp vec4 highAfter = pairsOf(texture2D(s_1, atH + nextH));
    highp vec4 L = mix(low, vec4(low.zw, lowAfter.xy), odd);
    highp vec4 H01 = mix(high, vec4(high.zw, highAfter.xy), odd);
    highp vec4 H12 = mix(vec4(high.zw, highAfter.xy), highAfter, odd);
    highp vec4 even = predicted(L, H01, H12);
    highp vec2 between = normalised((even + even.zwxy) / 2.0).xy;
    highp vec2 odds = normalised(vec4(H01.zw + between, 0.0, 0.0)).xy;
    gl_FragColor = texelOf(vec4(even.xy, odds));
}
)";

class GlLevel {
public:
    explicit GlLevel(GlBenchContext const& context) : backend_(context) {
        backend_.instance->createFilterInstance(vertical_);
        backend_.instance->createFilterInstance(horizontal_);
        Bands const bands;
        ll_ = filledTarget(bands.ll);
        hl_ = filledTarget(bands.hl);
        lh_ = filledTarget(bands.lh);
        hh_ = filledTarget(bands.hh);
        low_ = target(kBand, kOutput);
        high_ = target(kBand, kOutput);
        out_ = target(kOutput, kOutput);
    }

    void runOurs() {
        step(vertical_, ll_, lh_, kBand, low_);
        step(vertical_, hl_, hh_, kBand, high_);
        step(horizontal_, low_, high_, kOutput, out_);
    }

    void prepareBytePairs() {
        std::string const common = kBytePairs;
        constexpr float kPart = static_cast<float>(kOutput) / static_cast<float>(2 * kBand);
        std::array<GLfloat, 2> const halfOfRows = {1, kPart};
        std::array<GLfloat, 2> const halfOfColumns = {kPart, 1};
        addPass(common + kVerticalBytePairs, ll_, lh_, halfOfRows, low_);
        addPass(common + kVerticalBytePairs, hl_, hh_, halfOfRows, high_);
        addPass(common + kHorizontalBytePairs, low_, high_, halfOfColumns, out_);
    }

    void runBytePairs() const {
        for (auto const& pass : passes_)
            pass->draw();
    }

    // A comparison with passes that compute something else would be worthless.
    void requireSamplesOf(ProcessorLevel const& level) {
        Gles3Target const& out = backend_.instance->target(out_);
        auto const bytes = rawGl::read(out.framebuffer(), static_cast<GLsizei>(out.width()), kOutput);
        rawGl::requireNoError();
        if (bytes.size() != level.samples().size() * sizeof(std::int16_t) ||
            std::memcmp(bytes.data(), level.samples().data(), bytes.size()) != 0)
            throw std::runtime_error("the levels differ");
    }

private:
    size_t target(size_t width, size_t height) {
        return backend_.instance->createTarget({width, height}, 16, false, RenderBackend::NEAREST,
                                               RenderBackend::RGBA32);
    }

    size_t filledTarget(Band const& band) {
        size_t const id = target(band.width, band.height);
        glBindTexture(GL_TEXTURE_2D, backend_.instance->target(id).texture());
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(band.width / 2), static_cast<GLsizei>(band.height),
                        GL_RGBA, GL_UNSIGNED_BYTE, band.samples.data());
        return id;
    }

    void step(Filter const& filter, size_t low, size_t high, size_t rows, size_t destination) {
        backend_.instance->executeFilter(filter, {{low, 0, 0, false}, {high, 0, 0, false}}, kBand, rows, destination, 0,
                                         0, 0, 0, parameters_, offset_);
    }

    rawGl::PassInput passInput(size_t id, std::array<GLfloat, 2> const& span) const {
        Gles3Target const& source = backend_.instance->target(id);
        return {source.texture(),
                {1.0F / static_cast<float>(source.width()), 1.0F / static_cast<float>(source.height())},
                span};
    }

    void addPass(std::string const& fragment, size_t low, size_t high, std::array<GLfloat, 2> const& span,
                 size_t destination) {
        Gles3Target const& output = backend_.instance->target(destination);
        passes_.push_back(std::make_unique<rawGl::Pass>(
            fragment, std::vector<rawGl::PassInput>{passInput(low, span), passInput(high, span)}, output.framebuffer(),
            static_cast<GLsizei>(output.width()), static_cast<GLsizei>(output.height())));
    }

    BenchBackend backend_;
    Filter vertical_ = description::filterFirIV53LeGall16();
    Filter horizontal_ = description::filterFirIH53LeGall16();
    SingleFilterParameters const parameters_;
    std::vector<size_t> const offset_ = {0, 0};
    size_t ll_ = 0;
    size_t hl_ = 0;
    size_t lh_ = 0;
    size_t hh_ = 0;
    size_t low_ = 0;
    size_t high_ = 0;
    size_t out_ = 0;
    std::vector<std::unique_ptr<rawGl::Pass>> passes_;
};

void count(benchmark::State& state) {
    state.counters["Mpixel"] =
        benchmark::Counter(kOutput * kOutput / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

template <class Run>
void measure(benchmark::State& state, GlBenchContext const& context, GlLevel& level, Run run) {
    run(level);
    ProcessorLevel expected;
    expected.run();
    level.requireSamplesOf(expected);
    for (auto _ : state) {
        run(level);
        context.finish();
    }
    count(state);
}

} // namespace

void registerWavelet(GlBenchContext const& context) {
    Clock const clock = drawingClock(context);
    registerGl(clock, "wavelet/ours/1024", [&context](benchmark::State& state) {
        GlLevel level(context);
        measure(state, context, level, [](GlLevel& ours) { ours.runOurs(); });
    });
    registerGl(clock, "wavelet/bytepairs/1024", [&context](benchmark::State& state) {
        GlLevel level(context);
        level.prepareBytePairs();
        measure(state, context, level, [](GlLevel const& bare) { bare.runBytePairs(); });
    });
    registerGl(clock, "wavelet/processor/1024", [](benchmark::State& state) {
        ProcessorLevel level;
        for (auto _ : state)
            level.run();
        count(state);
    });
}
