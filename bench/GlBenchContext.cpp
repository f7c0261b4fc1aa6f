#include "bench/GlBenchContext.h"

#include "bench/Benchmarks.h"
#include "bench/RawGl.h"
#include "gles3renderbackend/Gl.h"

#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

// So large that nothing is evicted during a measurement.
constexpr size_t kSlotBudgetBytes = 1'000'000'000;

std::string glText(GLenum name) {
    return reinterpret_cast<char const*>(glGetString(name));
}

// How often each benchmark runs, where instructions are counted instead of time: bench/instructions sets it.
std::optional<benchmark::IterationCount> fixedIterations() {
    char const* const text = std::getenv("VELMORA_BENCH_ITERATIONS");
    if (text == nullptr) return std::nullopt;
    return std::stoll(text);
}

} // namespace

GlBenchContext::GlBenchContext() : nullDriver_(glText(GL_RENDERER) == "NOOP") {}

std::string GlBenchContext::description() const {
    return glText(GL_RENDERER) + ", " + glText(GL_VERSION);
}

bool GlBenchContext::nullDriver() const {
    return nullDriver_;
}

bool GlBenchContext::drawsOnProcessor() const {
    return glText(GL_RENDERER).rfind("llvmpipe", 0) == 0;
}

void GlBenchContext::finish() const {
    if (!nullDriver_) glFinish();
}

BenchBackend::BenchBackend(GlBenchContext const& context)
    : backend(RenderBackend::RGBA32, kSlotBudgetBytes),
      instance(std::static_pointer_cast<Gles3RenderBackendInstance>(backend.createInstance(context))) {}

Filter blitFilter(RenderBackendInstance& instance) {
    Filter filter("BlitFilter4x8", 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    instance.createFilterInstance(filter);
    return filter;
}

Clock drawingClock(GlBenchContext const& context) {
    return context.drawsOnProcessor() ? Clock::Process : Clock::Wall;
}

void requireSamePicture(GlBenchContext const& context, std::string const& operation, TwoPictures const& pictures) {
    rawGl::requireNoError();
    if (context.nullDriver()) return;
    if (pictures.ours != pictures.raw) throw std::runtime_error("the raw calls give another picture than " + operation);
    if (pictures.ours == std::vector<std::uint8_t>(pictures.ours.size()))
        throw std::runtime_error(operation + " draws nothing");
}

void registerGl(Clock clock, std::string const& name, std::function<void(benchmark::State&)> const& function) {
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), [function](benchmark::State& state) {
        try {
            function(state);
        } catch (std::exception const& error) {
            state.SkipWithError(error.what());
        }
    });
    if (auto const iterations = fixedIterations()) registered->Iterations(*iterations);
    if (clock == Clock::Wall) registered->UseRealTime();
    if (clock == Clock::Process) registered->MeasureProcessCPUTime();
}
