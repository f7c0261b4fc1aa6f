// executeFilter beside its own GL calls.
//
// The raw side makes exactly the calls of one filter run, in the same order, with the same program, textures and
// framebuffer and with every argument computed beforehand; the difference is the backend's lookups and arithmetic.
// Targets of 16 x 16 texels, so that calls dominate and not pixels. If pixels are drawn, glFinish comes after every
// 64th run: a filter chain does not wait after each step either.
#include "bench/Benchmarks.h"
#include "bench/GlBenchContext.h"
#include "bench/RawGl.h"
#include "gles3renderbackend/resources/Gles3Target.h"

#include <iomanip>
#include <sstream>

namespace {

constexpr size_t kTexels = 16;
constexpr int kRunsPerFinish = 64;
constexpr std::array<GLfloat, 4> kUpright = {1, 0, 0, 1};

// One wavelet step: two bands of 16-bit samples, two samples per texel, become rows of twice the width.
Filter waveletFilter(RenderBackendInstance& instance) {
    Filter filter("FilterFirIH53LeGall16", 0, 0, 0, 0, 0, 1, 0, 1, 2, 1, 1, 1, 2, RenderBackend::NEAREST);
    instance.createFilterInstance(filter);
    return filter;
}

struct RawInput {
    GLuint texture;
    GLint sampler;
    GLint texRange;
    GLint texScale;
    GLint textureCoordinates;
    std::array<GLfloat, 4> range;
    std::array<GLfloat, 2> texel;
};

class FilterScene {
public:
    FilterScene(GlBenchContext const& context, size_t inputs)
        : context_(context),
          backend_(context),
          filter_(inputs == 1 ? blitFilter(*backend_.instance) : waveletFilter(*backend_.instance)),
          bits_(inputs == 1 ? 32 : 16),
          inputTexels_(inputs == 1 ? kTexels : kTexels / 2),
          inputWidth_(inputTexels_ * 32 / bits_) {
        destination_ = createTarget(kTexels);
        for (size_t i = 0; i < inputs; ++i)
            sources_.push_back({createFilledTarget(), 0, 0, false});
        takeProgram();
        requireSamePicture();
    }

    void runOurs() {
        backend_.instance->executeFilter(filter_, sources_, inputWidth_, kTexels, destination_, 0, 0, 0, 0, parameters_,
                                         offset_);
    }

    void runRaw() const {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
        quad_.bind();
        glUseProgram(program_);
        glUseProgram(program_);
        glUniformMatrix2fv(modelView_, 1, GL_FALSE, kUpright.data());
        rawGl::setFixedState();
        glViewport(0, 0, kTexels, kTexels);
        glUseProgram(program_);
        glUniform4f(geometry_, -1, -1, 2, 2);
        rawGl::Quad::pointPositions(position_);
        glEnableVertexAttribArray(static_cast<GLuint>(position_));
        for (size_t i = 0; i < rawInputs_.size(); ++i)
            bindRaw(rawInputs_[i], static_cast<GLint>(i));
        if (outputSize_ != -1) glUniform4f(outputSize_, 0, 0, kTexels, kTexels);
        rawGl::Quad::draw();
        for (RawInput const& input : rawInputs_)
            glDisableVertexAttribArray(static_cast<GLuint>(input.textureCoordinates));
        glDisableVertexAttribArray(static_cast<GLuint>(position_));
    }

private:
    void bindRaw(RawInput const& input, GLint unit) const {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        glBindTexture(GL_TEXTURE_2D, input.texture);
        glUniform1i(input.sampler, unit);
        glUseProgram(program_);
        glUniform4f(input.texRange, input.range[0], input.range[1], input.range[2], input.range[3]);
        if (input.texScale != -1) glUniform2f(input.texScale, input.texel[0], input.texel[1]);
        rawGl::Quad::pointTextureCoordinates(input.textureCoordinates);
        glEnableVertexAttribArray(static_cast<GLuint>(input.textureCoordinates));
    }

    size_t createTarget(size_t texels) {
        return backend_.instance->createTarget({texels * 32 / bits_, kTexels}, bits_, false, RenderBackend::NEAREST,
                                               RenderBackend::RGBA32);
    }

    size_t createFilledTarget() {
        size_t const target = createTarget(inputTexels_);
        std::vector<unsigned char> pixels(inputTexels_ * kTexels * 4);
        for (size_t byte = 0; byte < pixels.size(); ++byte)
            pixels[byte] = static_cast<unsigned char>(target * 31 + byte * 7);
        glBindTexture(GL_TEXTURE_2D, backend_.instance->target(target).texture());
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(inputTexels_), kTexels, GL_RGBA, GL_UNSIGNED_BYTE,
                        pixels.data());
        return target;
    }

    void takeProgram() {
        runOurs();
        framebuffer_ = backend_.instance->target(destination_).framebuffer();
        program_ = rawGl::currentProgram();
        geometry_ = uniform("a_geometry");
        modelView_ = uniform("a_modelView");
        outputSize_ = uniform("a_outputSize");
        position_ = attribute("a_position");
        for (size_t i = 0; i < sources_.size(); ++i)
            rawInputs_.push_back(rawInput(i));
    }

    RawInput rawInput(size_t i) {
        std::ostringstream digits;
        digits << std::setfill('0') << std::setw(2) << i;
        double x = 0;
        double y = 0;
        double w = 0;
        double h = 0;
        backend_.instance->inputTextureRange(sources_[i], filter_, inputWidth_, kTexels, 0, 0, 0, 0, x, y, w, h);
        return {backend_.instance->target(sources_[i].target).texture(),
                uniform("s_texture" + digits.str()),
                uniform("a_texRange" + digits.str()),
                uniform("a_texscale" + digits.str()),
                attribute("a_texturecoordinates" + digits.str()),
                {static_cast<float>(x), static_cast<float>(y), static_cast<float>(w), static_cast<float>(h)},
                {1 / static_cast<float>(inputTexels_), 1 / static_cast<float>(kTexels)}};
    }

    GLint uniform(std::string const& name) const { return glGetUniformLocation(program_, name.c_str()); }
    GLint attribute(std::string const& name) const { return glGetAttribLocation(program_, name.c_str()); }

    void requireSamePicture() {
        auto const picture = [this](auto run) {
            backend_.instance->clear(destination_, {0, 0, 0, 0});
            run();
            return rawGl::read(framebuffer_, kTexels, kTexels);
        };
        ::requireSamePicture(context_, "executeFilter",
                             {picture([this] { runOurs(); }), picture([this] { runRaw(); })});
    }

    GlBenchContext const& context_;
    BenchBackend backend_;
    Filter filter_;
    size_t bits_;
    size_t inputTexels_;
    size_t inputWidth_; // logical pixels
    size_t destination_ = 0;
    std::vector<FilterSource> sources_;
    SingleFilterParameters const parameters_;
    std::vector<size_t> const offset_ = {0, 0};

    // The raw calls' arguments.
    rawGl::Quad quad_;
    std::vector<RawInput> rawInputs_;
    GLuint framebuffer_ = 0;
    GLuint program_ = 0;
    GLint geometry_ = -1;
    GLint modelView_ = -1;
    GLint outputSize_ = -1;
    GLint position_ = -1;
};

template <class Run>
void measure(benchmark::State& state, GlBenchContext const& context, size_t inputs, Run run) {
    FilterScene scene(context, inputs);
    int runs = 0;
    for (auto _ : state) {
        run(scene);
        if (++runs % kRunsPerFinish == 0) context.finish();
    }
    state.SetItemsProcessed(state.iterations());
}

} // namespace

void registerExecuteFilter(GlBenchContext const& context) {
    Clock const clock = context.nullDriver() ? Clock::Cpu : Clock::Wall;
    for (size_t const inputs : {size_t{1}, size_t{2}}) {
        std::string const tail = "/inputs" + std::to_string(inputs);
        registerGl(clock, "executeFilter/ours" + tail, [&context, inputs](benchmark::State& state) {
            measure(state, context, inputs, [](FilterScene& scene) { scene.runOurs(); });
        });
        registerGl(clock, "executeFilter/raw" + tail, [&context, inputs](benchmark::State& state) {
            measure(state, context, inputs, [](FilterScene& scene) { scene.runRaw(); });
        });
    }
}
