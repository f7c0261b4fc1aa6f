// The equalisation on the processor, 1000 x 1000 8-bit grey values in regions of 40 x 40 pixels, one thread.
//   ours    CLAHE, in place on the first of four 16-bit components, as the filter uses it
//   opencv  cv::createCLAHE on one 8-bit component; left out if OpenCV is not installed
#include "bench/Benchmarks.h"
#include "gles3renderbackend/filters/CLAHE.h"

#ifdef VELMORA_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

#include <string>
#include <vector>

namespace {

constexpr size_t kSide = 1000;

// Slopes with noise: regions of few and of many grey values.
std::vector<std::uint8_t> picture() {
    std::vector<std::uint8_t> greys(kSide * kSide);
    std::uint32_t state = 5;
    for (size_t i = 0; i < greys.size(); ++i) {
        state = state * 1664525U + 1013904223U;
        size_t const x = i % kSide;
        size_t const y = i / kSide;
        size_t const amplitude = 8 + 56 * y / kSide;
        greys[i] = static_cast<std::uint8_t>((x * x + y * x) / 40000 % 192 + (state >> 24U) * amplitude / 256);
    }
    return greys;
}

std::vector<std::int16_t> fourComponents(std::vector<std::uint8_t> const& greys) {
    std::vector<std::int16_t> pixels(greys.size() * CLAHE::kComponents);
    for (size_t i = 0; i < greys.size(); ++i)
        pixels[i * CLAHE::kComponents] = greys[i];
    return pixels;
}

void count(benchmark::State& state) {
    state.counters["Mpixel"] = benchmark::Counter(kSide * kSide / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

void measureOurs(benchmark::State& state, double clip) {
    std::vector<std::int16_t> const original = fourComponents(picture());
    std::vector<std::int16_t> pixels = original;
    for ([[maybe_unused]] auto _ : state) {
        CLAHE clahe(clip);
        clahe.buildTables(pixels.data(), kSide, kSide, kSide);
        clahe.apply(pixels.data(), 0, 0);
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
        state.PauseTiming();
        pixels = original;
        state.ResumeTiming();
    }
    count(state);
}

#ifdef VELMORA_BENCH_OPENCV
void measureOpenCv(benchmark::State& state, double clip) {
    cv::setNumThreads(1);
    std::vector<std::uint8_t> greys = picture();
    cv::Mat const source(static_cast<int>(kSide), static_cast<int>(kSide), CV_8UC1, greys.data());
    cv::Mat result(source.size(), source.type());
    constexpr int kRegions = static_cast<int>(kSide / CLAHE::kRegionSize);
    auto const clahe = cv::createCLAHE(clip, cv::Size(kRegions, kRegions));
    for ([[maybe_unused]] auto _ : state) {
        clahe->apply(source, result);
        benchmark::DoNotOptimize(result.data);
        benchmark::ClobberMemory();
    }
    count(state);
}
#endif

} // namespace

void registerClahe() {
    for (int const clip : {1, 3}) {
        std::string const tail = "/clip" + std::to_string(clip);
        registerGl(Clock::Cpu, "clahe/ours" + tail, [clip](benchmark::State& state) { measureOurs(state, clip); });
#ifdef VELMORA_BENCH_OPENCV
        registerGl(Clock::Cpu, "clahe/opencv" + tail, [clip](benchmark::State& state) { measureOpenCv(state, clip); });
#endif
    }
}
