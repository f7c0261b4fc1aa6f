// Misuse of filters: missing sources, programs that hold their instance, incomplete programs.
#include "gles3renderbackend/filters/Gles3BlitFilter8.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"
#include "tests/gles3renderbackend/FailingAllocation.h"

namespace {

using namespace backendtest;

constexpr char const* kMissingSource =
    "#Name:fewer sources than the filter has inputs#Location:void Gles3RenderBackendInstance::executeFilter(Filter "
    "const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination, size_t "
    "clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom, std::vector<size_t> const& offset)";

// A program that samples the inputs that the test names.
class Sampling final : public Gles3Shader {
public:
    Sampling(Filter& filter, std::string const& samplers)
        : Gles3Shader("uniform vec4 a_geometry; attribute vec2 a_position;", samplers, filter) {}
};

class SamplingFactory final : public Gles3RenderBackend::FilterRegistry::Factory {
public:
    explicit SamplingFactory(std::string samplers) : samplers_(std::move(samplers)) {}
    std::unique_ptr<Gles3Shader> create(Filter& filter) const override {
        return std::make_unique<Sampling>(filter, samplers_);
    }

private:
    std::string samplers_;
};

Filter withInputs(std::string const& name, size_t inputs) {
    return {name, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, inputs, RenderBackend::NEAREST};
}

class Gles3RenderBackendInstanceFilterSafetyTest : public BackendRecordingTest {
public:
    ~Gles3RenderBackendInstanceFilterSafetyTest() override { letAllocationsSucceed(); }

protected:
    // The filter of a host whose program declares these samplers.
    Filter sampling(std::string const& samplers, size_t inputs) {
        instance.reset();
        Gles3RenderBackend::FilterRegistry registry;
        registry.registerFactory("Sampling", std::make_shared<SamplingFactory>(samplers));
        other = std::make_unique<Gles3RenderBackend>(registry, RenderBackend::RGBA32, kDefaultBudget);
        instance = other->createInstance(surface);
        return instantiated(withInputs("Sampling", inputs));
    }

    Filter instantiated(Filter filter) const {
        instance->createFilterInstance(filter);
        return filter;
    }

    std::string run(Filter const& filter, size_t sources, SingleFilterParameters const& params = {}) const {
        size_t const target = rgbaTarget(8, 8);
        gl.forgetCalls();
        return failureOf([&] {
            instance->executeFilter(filter, std::vector<FilterSource>(sources, {target, 0, 0, true}), 8, 8, target, 0,
                                    0, 0, 0, params, {0, 0});
        });
    }

    std::unique_ptr<Gles3RenderBackend> other;
};

constexpr char const* kNoFailure = "nothing was thrown";

// Sources

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, MissingSourceIsReportedBeforeAnyGlCall) {
    Filter const blit = instantiated(withInputs("BlitFilter4x8", 1));
    EXPECT_EQ(run(blit, 0), kMissingSource);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(run(blit, 1), kNoFailure);

    Filter const interleave = instantiated(withInputs("FilterInterleave16", 3));
    EXPECT_EQ(run(interleave, 2), kMissingSource);
    EXPECT_EQ(run(interleave, 3), kNoFailure);
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, InputsThatTheProgramDoesNotSampleNeedNoSource) {
    Filter const filter = sampling("uniform sampler2D s_texture00;", 3);
    EXPECT_EQ(run(filter, 0), kMissingSource);
    EXPECT_EQ(run(filter, 1), kNoFailure);
    EXPECT_EQ(run(sampling("uniform float a_gain;", 1), 0), kNoFailure) << "it samples nothing";
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, SamplersCountFromInput00OnWithoutAGap) {
    Filter const filter = sampling("uniform sampler2D s_texture00, s_texture01, s_texture03;", 4);
    EXPECT_EQ(run(filter, 1), kMissingSource);
    EXPECT_EQ(run(filter, 2), kNoFailure) << "s_texture03 is no fourth input: unit 3 is the program's own";
    EXPECT_EQ(run(sampling("uniform sampler2D s_texture01;", 1), 0), kNoFailure);
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, MoreInputsThanTheCatalogueHasAreCountedToo) {
    std::string const samplers = "uniform sampler2D s_texture00, s_texture01, s_texture02, s_texture03, s_texture04;";
    Filter const filter = sampling(samplers, 5);
    EXPECT_EQ(run(filter, 4), kMissingSource);
    EXPECT_EQ(run(filter, 5), kNoFailure);
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, DescriptionWithFewerInputsThanTheProgramNeedsAsManySources) {
    EXPECT_EQ(run(instantiated(withInputs("FilterInterleave16", 1)), 1), kNoFailure);
}

// Unit 1 holds the table.
TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, TableFilterNeedsOneSource) {
    Filter const table = instantiated(withInputs("FilterBlackWhiteGamma8", 1));
    EXPECT_EQ(run(table, 0, FilterBlackWhiteGamma8Params()), kMissingSource);
    EXPECT_EQ(run(table, 1, FilterBlackWhiteGamma8Params()), kNoFailure);
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, SourcesBeyondTheInputsAreBoundAndChangeNothing) {
    Filter const blit = instantiated(withInputs("BlitFilter4x8", 1));
    EXPECT_EQ(run(blit, 3), kNoFailure);
    EXPECT_EQ(gl.draws().size(), 1U);
    EXPECT_EQ(gl.draws().back().textures.size(), 3U);
    EXPECT_EQ(gl.draws().back().uniforms.at("s_texture00"), (std::vector<float>{0}));
}

// They pass one source to the filter, whatever its number of inputs.
TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, TilesAndMasksAreRefusedForAFilterOfMoreInputs) {
    size_t const target = rgbaTarget(8, 8);
    auto const drawTiles = [&](Filter const& filter) {
        return failureOf([&] {
            instance->drawTiles(target, filter, {0, 7, 0, 7}, {0, 0, 0, 0}, {8, 8}, {{0, 0}}, {1}, {});
        });
    };
    auto const maskRange = [&](Filter const& filter) {
        return failureOf([&] { instance->maskRange(target, 0, filter, {0, 7, 0, 7}, MaskFilterParams()); });
    };
    std::string const refused = "#Name:fewer sources than the filter has inputs#Location:void "
                                "Gles3RenderBackendInstance::";
    for (Filter const& filter :
         {instantiated(withInputs("FilterFirIV53LeGall16", 2)), instantiated(withInputs("FilterInterleave16", 3))}) {
        EXPECT_EQ(drawTiles(filter).find(refused + "drawTiles("), 0U) << drawTiles(filter);
        EXPECT_TRUE(gl.draws().empty());
        gl.forgetCalls();
        EXPECT_EQ(maskRange(filter).find(refused + "maskRange("), 0U) << maskRange(filter);
        EXPECT_TRUE(gl.calls().empty());
    }
    // Unit 1 holds the table.
    EXPECT_EQ(drawTiles(instantiated(withInputs("FilterBlackWhiteGamma8", 1))), kNoFailure);
    EXPECT_EQ(maskRange(instantiated(withInputs("MaskFilter4x8", 1))).find("#Name:bad parameters cast#"), 0U)
        << "one source is enough";
}

// The equalisation computes on its instance.
TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, TilesAndMasksAreRefusedForAFilterWithoutAProgram) {
    size_t const target = rgbaTarget(8, 8);
    Filter const clahe = instantiated(withInputs("FilterCLAHE", 1));
    std::string const refused = "#Name:a filter without a program draws no tiles#Location:void "
                                "Gles3RenderBackendInstance::";
    std::string const tiles = failureOf([&] {
        instance->drawTiles(target, clahe, {0, 7, 0, 7}, {0, 0, 0, 0}, {8, 8}, {{0, 0}}, {1}, {});
    });
    EXPECT_EQ(tiles.find(refused + "drawTiles("), 0U) << tiles;
    gl.forgetCalls();
    std::string const mask = failureOf([&] {
        instance->maskRange(target, 0, clahe, {0, 7, 0, 7}, MaskFilterParams());
    });
    EXPECT_EQ(mask.find(refused + "maskRange("), 0U) << mask;
    EXPECT_TRUE(gl.calls().empty());
}

// The filter has a check, and words, of its own.
TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, FilterWithoutAProgramReportsItsMissingSourceItself) {
    Filter const clahe = instantiated(withInputs("FilterCLAHE", 1));
    EXPECT_EQ(run(clahe, 0, FilterClaheParams()).find("#Name:CLAHE needs one source#"), 0U);
}

// The instance behind a filter

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, FilterBoundAgainAfterItsKeyWasClearedDoesNotKeepItsInstanceAlive) {
    auto filter = std::make_unique<Filter>(namedFilter("BlitFilter4x8"));
    filter->bind(instance);
    filter->setInstanceKey(nullptr);
    instance->createFilterInstance(*filter);
    EXPECT_NE(filter->instanceKey(), nullptr);
    EXPECT_EQ(filter->instance(), instance) << "the caller's filter is bound as before";
    std::weak_ptr<RenderBackendInstance> const watched = instance;
    filter.reset();
    instance.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(gl.living(), std::vector<std::string>());
    instance = backend.createInstance(surface);
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, FilterOfAnotherInstanceDoesNotKeepThatOneAlive) {
    Filter filter = namedFilter("BlitFilter4x8");
    filter.bind(instance);
    Gles3RenderBackend second;
    auto const secondInstance = second.createInstance(surface);
    filter.setInstanceKey(nullptr);
    secondInstance->createFilterInstance(filter);
    std::weak_ptr<RenderBackendInstance> const watched = instance;
    instance.reset();
    EXPECT_FALSE(watched.expired()) << "the caller's filter holds it";
    filter = Filter();
    EXPECT_TRUE(watched.expired());
}

// Out of memory

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, InstantiationThatRunsOutOfMemoryLeavesFilterAndTableAsTheyWere) {
    auto const living = gl.living();
    Filter filter = namedFilter("BlitFilter3x16");
    size_t const failures = failEachAllocation([&] { instance->createFilterInstance(filter); },
                                               [&] {
                                                   EXPECT_EQ(filter.instanceKey(), nullptr);
                                                   EXPECT_EQ(filter.alignXOut(), 1U);
                                                   EXPECT_EQ(gl.living(), living);
                                               });
    EXPECT_GT(failures, 10U);
    EXPECT_EQ(*filter.instanceKey(), 0U);
    EXPECT_EQ(filter.alignXOut(), 2U);
}

TEST_F(Gles3RenderBackendInstanceFilterSafetyTest, RunThatRunsOutOfMemoryLeavesNoAttributeEnabled) {
    Filter const table = instantiated(withInputs("FilterBlackWhiteGamma8", 1));
    size_t const target = rgbaTarget(8, 8);
    auto const execute = [&] {
        instance->executeFilter(table, {{target, 0, 0, true}}, 8, 8, target, 0, 0, 0, 0, FilterBlackWhiteGamma8Params(),
                                {0, 0});
    };
    size_t const failures = failEachAllocation(execute, [&] {
        for (auto const& [index, attribute] : gl.attributes())
            EXPECT_FALSE(attribute.enabled) << index;
    });
    EXPECT_GT(failures, 3U) << "the table and its texture";
    EXPECT_EQ(gl.draws().size(), 1U);
}

} // namespace
