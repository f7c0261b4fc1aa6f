// Every filter beside a plain pass: a highp fragment stage that reads as many texels of the same textures for an output
// of the same size and writes their sum. The difference is the filter's arithmetic. One filter is also compared with
// the same arithmetic written plainly, on whole numbers. An iteration is one run into an output of 1024 x 1024 pixels
// and ends with glFinish.
#include "bench/Benchmarks.h"
#include "bench/FilterReads.h"
#include "bench/GlBenchContext.h"
#include "bench/RawPass.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "host/filter/FilterDescriptions.h"

#include <memory>
#include <sstream>

namespace {

constexpr size_t kSide = 1024;
constexpr GLsizei kTableEntries = 256;

// FilterYCoCg16ToRGBA8 in its most obvious form: whole bytes, whole values, the formulas.
constexpr char const* kPlainYCoCgToRgb = R"(
void main() {
    vec4 even = floor(255.0 * texture2D(s_0, v_0) + 0.5);
    vec4 odd = floor(255.0 * texture2D(s_0, v_0 + vec2(t_0.x, 0.0)) + 0.5);
    vec3 high = vec3(even.g, odd.r, odd.b);
    high -= 256.0 * step(128.0, high);
    vec3 yCoCg = 256.0 * high + vec3(even.r, even.b, odd.g);
    float t = yCoCg.x - floor(yCoCg.z / 2.0);
    float b = t - floor(yCoCg.y / 2.0);
    gl_FragColor = vec4(b + yCoCg.y, yCoCg.z + t, b, 255.0) / 255.0;
}
)";

size_t inputExtent(size_t borders, size_t numerator, size_t denominator) {
    return (kSide + borders) * denominator / numerator;
}

class FilterScene {
public:
    FilterScene(GlBenchContext const& context, std::string const& name)
        : backend_(context), filter_(description::byName(name)) {
        backend_.instance->createFilterInstance(filter_);
        inputWidth_ =
            inputExtent(filter_.invalidLeft() + filter_.invalidRight(), filter_.scaleXNum(), filter_.scaleXDen());
        inputHeight_ =
            inputExtent(filter_.invalidTop() + filter_.invalidBottom(), filter_.scaleYNum(), filter_.scaleYDen());
        for (size_t i = 0; i < filter_.numTexturesIn(); ++i)
            sources_.push_back({filledTarget(), 0, 0, false});
        destination_ = target(kSide, kSide, filter_.bitsPerPixelOut());
        parameters_ =
            filter_.supportsParameters() ? filter_.getParametersObject() : std::make_shared<SingleFilterParameters>();
        runOurs();
        rawGl::requireNoError();
    }

    FilterScene(FilterScene const&) = delete;
    FilterScene& operator=(FilterScene const&) = delete;
    ~FilterScene() { glDeleteTextures(1, &table_); }

    void runOurs() {
        backend_.instance->executeFilter(filter_, sources_, inputWidth_, inputHeight_, destination_, 0, 0, 0, 0,
                                         *parameters_, offset_);
    }

    void preparePlainYCoCgToRgb() { prepare(kPlainYCoCgToRgb, {passInput(sources_[0].target)}); }

    // The sum of as many texels, side by side.
    void preparePlain(FilterReads const& reads) {
        std::vector<rawGl::PassInput> inputs;
        std::ostringstream fragment;
        fragment << "void main() {\n    gl_FragColor = vec4(0.0)";
        auto const addInput = [&](rawGl::PassInput const& input, size_t count) {
            size_t const i = inputs.size();
            for (size_t k = 0; k < count; ++k)
                fragment << " + texture2D(s_" << i << ", v_" << i << " + vec2(" << k << ".0, 0.0) * t_" << i << ")";
            inputs.push_back(input);
        };
        for (size_t i = 0; i < sources_.size(); ++i)
            addInput(passInput(sources_[i].target), i == 0 ? reads.first : reads.further);
        if (reads.table != 0) table_ = rawGl::noiseTexture(kTableEntries, 1);
        if (reads.table != 0) addInput({table_, {1.0F / kTableEntries, 1.0F}, {1, 1}}, reads.table);
        fragment << ";\n}\n";
        prepare(fragment.str(), inputs);
    }

    void runPlain() const { plain_->draw(); }

private:
    void prepare(std::string const& fragment, std::vector<rawGl::PassInput> const& inputs) {
        Gles3Target const& output = backend_.instance->target(destination_);
        plain_ =
            std::make_unique<rawGl::Pass>(fragment, inputs, output.framebuffer(), static_cast<GLsizei>(output.width()),
                                          static_cast<GLsizei>(output.height()));
        plain_->draw();
        rawGl::requireNoError();
    }

    size_t target(size_t width, size_t height, size_t bits) {
        return backend_.instance->createTarget({width, height}, bits, false, RenderBackend::NEAREST,
                                               bits == 24 ? RenderBackend::RGB24 : RenderBackend::RGBA32);
    }

    size_t filledTarget() {
        size_t const id = target(inputWidth_, inputHeight_, filter_.bitsPerPixelIn());
        Gles3Target const& made = backend_.instance->target(id);
        bool const rgb = filter_.bitsPerPixelIn() == 24;
        std::vector<unsigned char> bytes(made.width() * made.height() * 4);
        std::uint32_t state = 7;
        for (auto& byte : bytes) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<unsigned char>(state >> 24U);
        }
        glBindTexture(GL_TEXTURE_2D, made.texture());
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(made.width()), static_cast<GLsizei>(made.height()),
                        rgb ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
        return id;
    }

    rawGl::PassInput passInput(size_t id) const {
        Gles3Target const& source = backend_.instance->target(id);
        return {source.texture(),
                {1.0F / static_cast<float>(source.width()), 1.0F / static_cast<float>(source.height())},
                {1, 1}};
    }

    BenchBackend backend_;
    Filter filter_;
    size_t inputWidth_ = 0; // logical pixels
    size_t inputHeight_ = 0;
    size_t destination_ = 0;
    std::vector<FilterSource> sources_;
    std::shared_ptr<SingleFilterParameters> parameters_;
    std::vector<size_t> const offset_ = {0, 0};
    GLuint table_ = 0;
    std::unique_ptr<rawGl::Pass> plain_;
};

template <class Run>
void measure(benchmark::State& state, GlBenchContext const& context, FilterScene& scene, Run run) {
    context.finish();
    for (auto _ : state) {
        run(scene);
        context.finish();
    }
    state.counters["Mpixel"] = benchmark::Counter(kSide * kSide / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

void measureOurs(benchmark::State& state, GlBenchContext const& context, std::string const& name) {
    FilterScene scene(context, name);
    measure(state, context, scene, [](FilterScene& ours) { ours.runOurs(); });
}

} // namespace

void registerFilters(GlBenchContext const& context) {
    Clock const clock = drawingClock(context);
    for (std::string const& name : description::names()) {
        registerGl(clock, "filter/ours/" + name,
                   [&context, name](benchmark::State& state) { measureOurs(state, context, name); });
        FilterReads const reads = filterReads(name);
        if (!reads.draws()) continue;
        registerGl(clock, "filter/plain/" + name, [&context, name, reads](benchmark::State& state) {
            FilterScene scene(context, name);
            scene.preparePlain(reads);
            measure(state, context, scene, [](FilterScene const& plain) { plain.runPlain(); });
        });
    }
    registerGl(clock, "filter/wholeNumbers/FilterYCoCg16ToRGBA8", [&context](benchmark::State& state) {
        FilterScene scene(context, "FilterYCoCg16ToRGBA8");
        scene.preparePlainYCoCgToRgb();
        measure(state, context, scene, [](FilterScene const& plain) { plain.runPlain(); });
    });
}
