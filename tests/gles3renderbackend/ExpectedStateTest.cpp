// Builds with VELMORA_CHECKED end the program if the host left GL in a state that an operation does not expect.
#include "gles3renderbackend/ExpectedState.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <functional>

// Other builds look at nothing: there is nothing to see.
#ifdef VELMORA_CHECKED

namespace {

using namespace backendtest;

struct Spoilt {
    char const* name; // as the program says it
    void (*spoil)();
};

GLuint anyBuffer() {
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    return buffer;
}

constexpr Spoilt kBlend = {"GL_BLEND is off", [] { glEnable(GL_BLEND); }};
constexpr Spoilt kRed = {"all colours are written", [] { glColorMask(GL_FALSE, GL_TRUE, GL_TRUE, GL_TRUE); }};
constexpr Spoilt kAlpha = {"all colours are written", [] { glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE); }};
constexpr Spoilt kDiscard = {"GL_RASTERIZER_DISCARD is off", [] { glEnable(GL_RASTERIZER_DISCARD); }};
constexpr Spoilt kAlphaCoverage = {"GL_SAMPLE_ALPHA_TO_COVERAGE is off", [] { glEnable(GL_SAMPLE_ALPHA_TO_COVERAGE); }};
constexpr Spoilt kCoverage = {"GL_SAMPLE_COVERAGE is off", [] { glEnable(GL_SAMPLE_COVERAGE); }};
constexpr Spoilt kSampler0 = {"no sampler object", [] { glBindSampler(0, 7); }};
constexpr Spoilt kSampler1 = {"no sampler object", [] { glBindSampler(1, 7); }};
constexpr Spoilt kArray = {"no vertex attribute array is enabled", [] { glEnableVertexAttribArray(5); }};
constexpr Spoilt kScissor = {"GL_SCISSOR_TEST is off", [] { glEnable(GL_SCISSOR_TEST); }};
constexpr Spoilt kRestart = {"GL_PRIMITIVE_RESTART_FIXED_INDEX is off",
                             [] { glEnable(GL_PRIMITIVE_RESTART_FIXED_INDEX); }};
constexpr Spoilt kUnpackBuffer = {"no pixel unpack buffer is bound",
                                  [] { glBindBuffer(GL_PIXEL_UNPACK_BUFFER, anyBuffer()); }};
constexpr Spoilt kUnpackRows = {"GL_UNPACK_ROW_LENGTH is 0", [] { glPixelStorei(GL_UNPACK_ROW_LENGTH, 9); }};
constexpr Spoilt kUnpackSkipRows = {"GL_UNPACK_SKIP_ROWS is 0", [] { glPixelStorei(GL_UNPACK_SKIP_ROWS, 1); }};
constexpr Spoilt kUnpackSkip = {"GL_UNPACK_SKIP_PIXELS is 0", [] { glPixelStorei(GL_UNPACK_SKIP_PIXELS, 1); }};
constexpr Spoilt kAlignment8 = {"GL_UNPACK_ALIGNMENT is at most 4", [] { glPixelStorei(GL_UNPACK_ALIGNMENT, 8); }};
constexpr Spoilt kAlignment4 = {"GL_UNPACK_ALIGNMENT is 1", [] { glPixelStorei(GL_UNPACK_ALIGNMENT, 4); }};
constexpr Spoilt kPackBuffer = {"no pixel pack buffer is bound",
                                [] { glBindBuffer(GL_PIXEL_PACK_BUFFER, anyBuffer()); }};
constexpr Spoilt kPackRows = {"GL_PACK_ROW_LENGTH is 0", [] { glPixelStorei(GL_PACK_ROW_LENGTH, 9); }};
constexpr Spoilt kPackSkipRows = {"GL_PACK_SKIP_ROWS is 0", [] { glPixelStorei(GL_PACK_SKIP_ROWS, 1); }};
constexpr Spoilt kPackSkip = {"GL_PACK_SKIP_PIXELS is 0", [] { glPixelStorei(GL_PACK_SKIP_PIXELS, 1); }};

std::vector<Spoilt> const kDrawing = {kBlend, kRed, kAlpha, kDiscard, kAlphaCoverage, kCoverage, kSampler0, kArray};
std::vector<Spoilt> const kUploading = {kUnpackBuffer, kUnpackRows, kUnpackSkipRows, kUnpackSkip, kAlignment8};
std::vector<Spoilt> const kReading = {kPackBuffer, kPackRows, kPackSkipRows, kPackSkip};

class ExpectedStateDeathTest : public BackendRecordingTest {
protected:
    ExpectedStateDeathTest() {
        instance->createFilterInstance(blit);
        instance->createFilterInstance(mask);
        target = rgbaTarget(8, 8);
        instance->dataEnvelopes(Bytes{1}, {{{}, {{0, 0}, {8, 8}}}});
        shape.envelopes = std::const_pointer_cast<DataEnvelopes>(instance->dataEnvelopes(Bytes{1}));
    }

    // Runs once unchanged, then ends the program for each of these.
    static void expectDeath(std::function<void()> const& operation, std::vector<Spoilt> const& states) {
        operation();
        for (auto const& state : states)
            EXPECT_DEATH((state.spoil(), operation()), std::string("precondition violated: GL state: .*") + state.name);
    }

    static std::vector<Spoilt> with(std::vector<Spoilt> states, std::vector<Spoilt> const& more) {
        states.insert(states.end(), more.begin(), more.end());
        return states;
    }

    void executeFilter(size_t sources) const {
        instance->executeFilter(blit, std::vector<FilterSource>(sources, {0, 0, 0, true}), 8, 8, target, 0, 0, 0, 0,
                                SingleFilterParameters(), {0, 0});
    }

    Filter blit = namedFilter("BlitFilter4x8");
    Filter mask = namedFilter("MaskFilter4x8");
    MaskFilterParams shape;
    size_t target = 0;
};

TEST_F(ExpectedStateDeathTest, DrawingTiles) {
    expectDeath(
        [&] {
            instance->drawTiles(target, blit, {0, 7, 0, 7}, {0, 0, 0, 0}, {8, 8}, {{0, 0}}, {1}, {});
        },
        kDrawing);
}

TEST_F(ExpectedStateDeathTest, RunningAFilter) {
    expectDeath([&] { executeFilter(1); }, with(with(kDrawing, {kSampler1}), with(kUploading, kReading)));
    expectDeath([&] { executeFilter(3); }, {{"no sampler object", [] { glBindSampler(2, 7); }}});
}

TEST_F(ExpectedStateDeathTest, Masking) {
    expectDeath(
        [&] {
            instance->maskRange(0, target, mask, {0, 7, 0, 7}, shape);
        },
        {kDiscard, kRestart, kSampler0, kArray});
}

TEST_F(ExpectedStateDeathTest, Clearing) {
    expectDeath([&] { instance->clear(target, {0, 0, 0}); }, {kRed, kAlpha, kDiscard, kScissor});
    expectDeath([&] { instance->clearRect(target, {0, 0, 0}, {0, 0, 4, 4}); }, {kRed, kAlpha, kDiscard});
}

TEST_F(ExpectedStateDeathTest, Reading) {
    expectDeath([&] { instance->getPixels(target, {0, 8, 0, 8}); }, kReading);
    Bytes buffer(256);
    expectDeath([&] { instance->getPixels(buffer.data(), buffer.size(), target, {0, 8, 0, 8}); }, kReading);
}

TEST_F(ExpectedStateDeathTest, Uploading) {
    expectDeath([&] { instance->setTile(1, Bytes(16), {2, 2, 4}, 0); }, kUploading);
    expectDeath([&] { rgbaTarget(8, 8); }, kUploading);
    instance.reset();
    expectDeath([&] { backend.createInstance(surface); }, kUploading);
}

TEST_F(ExpectedStateDeathTest, Staging) {
    std::vector<Spoilt> const states = {kUnpackRows, kUnpackSkipRows, kUnpackSkip, kAlignment4};
    size_t tile = 0;
    auto const stage = [&] {
        auto buffer = instance->concurrentStagingBuffer(++tile, RenderBackend::TILE, {2, 2, 3});
        buffer->write({}, 0);
        return buffer;
    };
    expectDeath(stage, states);
    auto buffer = stage();
    expectDeath([&] { instance->synchronizeConcurrentStagingBuffer(buffer ? std::move(buffer) : stage()); }, states);
}

// The host's state applies to a mask: so a host can blend or limit it.
TEST_F(ExpectedStateDeathTest, MaskIsDrawnUnderTheHostsOwnState) {
    for (auto const capability : {GL_BLEND, GL_SCISSOR_TEST, GL_DEPTH_TEST, GL_STENCIL_TEST, GL_CULL_FACE})
        glEnable(static_cast<GLenum>(capability));
    glColorMask(GL_FALSE, GL_TRUE, GL_TRUE, GL_TRUE);
    instance->maskRange(0, target, mask, {0, 7, 0, 7}, shape);
    EXPECT_EQ(gl.draws().back().enabled.count(GL_BLEND), 1U);
}

TEST_F(ExpectedStateDeathTest, LookingAtTheStateChangesNothingAndIsNotRecorded) {
    glActiveTexture(GL_TEXTURE3);
    gl.forgetCalls();
    expectedState::forDrawing(6);
    expectedState::forMasking();
    expectedState::forClearing();
    expectedState::forReading();
    expectedState::forUploading();
    expectedState::forStaging();
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(gl.activeUnit(), 3U);
    GLint ours = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &ours);
    EXPECT_EQ(gl.calls().size(), 1U) << "a query of an operation's own is recorded";
}

} // namespace

#endif
