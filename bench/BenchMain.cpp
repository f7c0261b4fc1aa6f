// velmora-bench [Google Benchmark's options]: bench/run calls it with the options for published figures.
#include "bench/Benchmarks.h"
#include "bench/GlBenchContext.h"
#include "bench/RatioReporter.h"

#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

// Repetitions of all benchmarks in random order: other work on the machine then affects both sides of a ratio.
std::vector<std::string> const kDefaults = {"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=9",
                                            "--benchmark_min_time=0.05"};

std::vector<std::string> const kPeers = {"raw",       "multi_index", "sortAndSweep", "rtree",
                                         "texImage",  "texSubImage", "plain",        "wholeNumbers",
                                         "bytepairs", "processor",   "opencv"};

std::vector<OwnBaseline> const kOwnBaselines = {
    {"LruMap/insertBehind100000Locked/ours/", "LruMap/insert/ours/", "none"},
    {"stageTiles/ours/2/", "stageTiles/ours/1/", "1 worker"},
    {"clahe/ours/clip1", "clahe/ours/clip3", "clip3"},
};

std::vector<Figure> figures(bool nullDriver) {
    std::vector<Figure> all = {
        {"executeFilter/.*", 1.20, "<= 1.20"},
        {"LruMap/(hit|insert)/.*", 2.0, "<= 2"},
        {"LruMap/insertBehind100000Locked/.* vs none", 2.0, "<= 2"},
        {"mergeCells/.*", 0.5, "<= 0.5"},
        {"coverage/ours/wholeArea .*", 1 / 1000.0, "speed >= 1000"},
        {"coverage/ours/halfSide .*", 1 / 6.0, "speed >= 6"},
        {"coverage/ours/2x2 .*", 1.25, "<= 1.25"},
        {"filter/ours/FilterYCoCg16ToRGBA8 vs (plain|wholeNumbers)", 1 / 0.95, "speed >= 0.95"},
        {"wavelet/ours/.* vs bytepairs", 1.0, "<= 1"},
        {"clahe/ours/clip3 vs opencv", 1 / 0.95, "speed >= 0.95"},
        {"clahe/ours/clip1 vs clip3", 1 / 0.9, "speed >= 0.9"},
    };
    if (nullDriver) {
        all.push_back({"drawTiles/ours/(100|2000) .*", 1.10, "<= 1.10"});
        return all;
    }
    all.push_back({"drawTiles/ours/(100|2000) .*", 1.03, "<= 1.03"});
    // The throughput of a transfer counts: without pixels to move there is none.
    all.push_back({"(setTile|getPixels|getPixelsVector)/ours/(rgba|rgb)/.*", 1 / 0.97, "speed >= 0.97"});
    all.push_back({"stageTiles/ours/1/.* vs raw", 1 / 0.97, "speed >= 0.97"});
    all.push_back({"stageTiles/ours/1/.* vs tex(Sub)?Image", 1 / 0.75, "speed >= 0.75"});
    all.push_back({"stageTiles/ours/2/.* vs 1 worker", 1 / 0.95, "speed >= 0.95"});
    return all;
}

std::unique_ptr<GlBenchContext> makeContext() {
    try {
        return std::make_unique<GlBenchContext>();
    } catch (std::runtime_error const& error) {
        std::cerr << "no OpenGL ES 3 context, so only what needs none: " << error.what() << "\n";
        return nullptr;
    }
}

void initialize(int argc, char** argv) {
    std::vector<std::string> texts(argv, argv + argc);
    texts.insert(texts.begin() + 1, kDefaults.begin(), kDefaults.end());
    std::vector<char*> arguments;
    arguments.reserve(texts.size());
    for (std::string& text : texts)
        arguments.push_back(text.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) throw std::invalid_argument("unknown option");
}

} // namespace

int main(int argc, char** argv) try {
    initialize(argc, argv);
    registerEnvelopes();
    registerLruMap();
    registerClahe();
    auto const context = makeContext();
    if (context != nullptr) {
        benchmark::AddCustomContext("OpenGL", context->description());
        registerDrawTiles(*context);
        registerExecuteFilter(*context);
        registerPixelTransfer(*context);
        registerStagingRing(*context);
        // Benchmarks of pixels, which the null driver does not draw.
        if (!context->nullDriver()) {
            registerFilters(*context);
            registerWavelet(*context);
        }
    }
    RatioReporter reporter(figures(context != nullptr && context->nullDriver()), kPeers, kOwnBaselines);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return reporter.errors() == 0 ? 0 : 1;
} catch (std::exception const& error) {
    std::cerr << "velmora-bench: " << error.what() << "\n";
    return 2;
}
