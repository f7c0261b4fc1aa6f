#include "gles3renderbackend/filters/Gles3BlitFilter8.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <functional>

namespace {

using namespace backendtest;

using FilterRegistry = Gles3RenderBackend::FilterRegistry;
using FilterFactory = FilterRegistry::Factory;

constexpr char const* kCreateShader =
    "#Location:std::string Gles3RenderBackendInstance::createShaderInstance(Filter const& filter)";
constexpr char const* kExecuteFilter =
    "#Location:void Gles3RenderBackendInstance::executeFilter(Filter const& filter, std::vector<FilterSource> const& "
    "sources, size_t inputW, size_t inputH, size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, "
    "size_t clipBottom, std::vector<size_t> const& offset)";
constexpr char const* kDestroyFilter =
    "#Location:void Gles3RenderBackendInstance::destroyFilterInstance(Filter& filter)";

std::string notAvailable(std::string const& name, std::string const& location) {
    return "#Name:Instance for Filter <" + name + "> not available" + location;
}

// A filter class of a host: recognised by its alignment, of an own mind about its borders.
class HostBlit final : public Gles3BlitFilter8 {
public:
    static constexpr size_t kAlignment = 5;

    explicit HostBlit(Filter& filter) : Gles3BlitFilter8(filter) { setAlignYOut(kAlignment); }
    size_t invalidLeft() const override { return 3; }
};

class FunctionFactory final : public FilterFactory {
public:
    using Function = std::function<std::unique_ptr<Gles3Shader>(Filter&)>;

    explicit FunctionFactory(Function function) : function_(std::move(function)) {}
    std::unique_ptr<Gles3Shader> create(Filter& filter) const override { return function_(filter); }

private:
    Function function_;
};

class Gles3RenderBackendInstanceFiltersTest : public BackendRecordingTest {
protected:
    // An instance of a backend with a registry of the host's; the one of the fixture is gone then.
    void restart(FilterRegistry const& registry) {
        instance.reset();
        other = std::make_unique<Gles3RenderBackend>(registry, RenderBackend::RGBA32, kDefaultBudget);
        instance = other->createInstance(surface);
    }

    static FilterRegistry hostRegistry(std::string const& name) {
        FilterRegistry registry;
        registry.registerFactory(name, std::make_shared<FilterRegistry::SpecializedFactory<HostBlit>>());
        return registry;
    }

    Filter instantiated(std::string const& name) const {
        Filter filter = namedFilter(name);
        instance->createFilterInstance(filter);
        return filter;
    }

    void execute(Filter const& filter, Sizes const& offset) const {
        instance->executeFilter(filter, {{0, 0, 0, true}}, 10, 10, 0, 0, 0, 0, 0, SingleFilterParameters(), offset);
    }

    std::unique_ptr<Gles3RenderBackend> other;
};

TEST_F(Gles3RenderBackendInstanceFiltersTest, KeysAreTheSmallestThatAreFree) {
    Filter const first = instantiated("BlitFilter4x8");
    Filter second = instantiated("BlitFilter4x8");
    Filter const third = instantiated("BlitFilter3x8");
    EXPECT_EQ(*first.instanceKey(), 0U);
    EXPECT_EQ(*second.instanceKey(), 1U);
    EXPECT_EQ(*third.instanceKey(), 2U);
    instance->destroyFilterInstance(second);
    EXPECT_EQ(*instantiated("BlitFilter4x8").instanceKey(), 1U);
    EXPECT_EQ(*instantiated("BlitFilter4x8").instanceKey(), 3U);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, InstantiatingTwiceMakesOneProgram) {
    Filter filter = instantiated("BlitFilter4x8");
    auto const key = filter.instanceKey();
    gl.forgetCalls();
    instance->createFilterInstance(filter);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(filter.instanceKey(), key);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, CopyOfAnInstantiatedFilterSharesItsProgram) {
    Filter const filter = instantiated("BlitFilter4x8");
    Filter copy = filter;
    gl.forgetCalls();
    instance->createFilterInstance(copy);
    EXPECT_TRUE(gl.calls().empty());
    instance->destroyFilterInstance(copy);
    EXPECT_EQ(failureOf([&] { execute(filter, {0, 0}); }), notAvailable("BlitFilter4x8", kExecuteFilter));
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, DescriptionComesBackWithWhatTheFilterClassAdjusted) {
    EXPECT_EQ(instantiated("BlitFilter3x16").alignXOut(), 2U);
    Filter const filter = instantiated("BlitFilter4x8");
    EXPECT_EQ(filter.alignXOut(), 1U);
    EXPECT_EQ(filter.name(), "BlitFilter4x8");
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, UnknownNameIsReportedAndTheTableUnchanged) {
    gl.forgetCalls();
    for (std::string const name : {"NoSuchFilter", "", "blitfilter4x8", "BlitFilter4x8 "}) {
        Filter filter = namedFilter(name);
        EXPECT_EQ(failureOf([&] { instance->createFilterInstance(filter); }),
                  "#Name:Filter <" + name + "> not available" + kCreateShader);
        EXPECT_EQ(filter.instanceKey(), nullptr);
    }
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(*instantiated("BlitFilter4x8").instanceKey(), 0U);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, HostRegistryIsAskedFirst) {
    restart(hostRegistry("BlitFilter4x8"));
    EXPECT_EQ(instantiated("BlitFilter4x8").alignYOut(), HostBlit::kAlignment);
    EXPECT_EQ(instantiated("BlitFilter3x8").alignYOut(), 1U) << "a name of the built-in registry alone";
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, HostMayBringNamesOfItsOwn) {
    restart(hostRegistry("Sepia"));
    EXPECT_EQ(instantiated("Sepia").alignYOut(), HostBlit::kAlignment);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, HostRegistryIsCopied) {
    FilterRegistry registry = hostRegistry("Sepia");
    restart(registry);
    registry.registerFactory("Late", registry.get("Sepia"));
    Filter late = namedFilter("Late");
    EXPECT_EQ(failureOf([&] { instance->createFilterInstance(late); }),
              std::string("#Name:Filter <Late> not available") + kCreateShader);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, RefusedProgramLeavesFilterAndTableAsTheyWere) {
    auto const before = gl.living();
    std::string const location = "#Location:Gles3Shader::Gles3Shader(std::string const&, std::string const&)";
    Filter filter = namedFilter("BlitFilter3x16");
    gl.failCompile(GL_FRAGMENT_SHADER, "no sampler");
    EXPECT_EQ(failureOf([&] {
                  instance->createFilterInstance(filter);
              }).find("#Name:Error compiling fragment shader" + location + "#Description:no sampler\n001 #version 100"),
              0U);
    gl.failLink("too many varyings");
    EXPECT_EQ(failureOf([&] { instance->createFilterInstance(filter); }),
              "#Name:Error linking shader program" + location + "#Description:too many varyings");
    EXPECT_EQ(filter.instanceKey(), nullptr);
    EXPECT_EQ(filter.alignXOut(), 1U);
    EXPECT_EQ(gl.living(), before);
    instance->createFilterInstance(filter);
    EXPECT_EQ(*filter.instanceKey(), 0U);
}

// The key was chosen before the factory ran; a filter that the factory instantiates meanwhile takes it.
TEST_F(Gles3RenderBackendInstanceFiltersTest, ShaderWhoseKeyItsOwnFactoryTookIsDiscarded) {
    FilterRegistry registry;
    Filter inner = namedFilter("BlitFilter4x8");
    registry.registerFactory("Reentrant", std::make_shared<FunctionFactory>([&](Filter& filter) {
                                 instance->createFilterInstance(inner);
                                 return std::make_unique<Gles3BlitFilter8>(filter);
                             }));
    restart(registry);
    Filter filter = namedFilter("Reentrant");
    size_t const programs = gl.count("glCreateProgram") - gl.count("glDeleteProgram");
    EXPECT_EQ(failureOf([&] { instance->createFilterInstance(filter); }),
              std::string("#Name:Failed to create shader instance") + kCreateShader);
    EXPECT_EQ(gl.count("glCreateProgram") - gl.count("glDeleteProgram"), programs + 1) << "the inner filter's";
    EXPECT_EQ(filter.instanceKey(), nullptr);
    ASSERT_NE(inner.instanceKey(), nullptr);
    EXPECT_EQ(*inner.instanceKey(), 0U);
    EXPECT_NO_THROW(execute(inner, {0, 0}));
    EXPECT_EQ(*instantiated("BlitFilter4x8").instanceKey(), 1U);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, FactoryThatMakesNothingIsReported) {
    FilterRegistry registry;
    registry.registerFactory("Nothing", std::make_shared<FunctionFactory>([](Filter&) { return nullptr; }));
    restart(registry);
    Filter filter = namedFilter("Nothing");
    EXPECT_EQ(failureOf([&] { instance->createFilterInstance(filter); }),
              std::string("#Name:Failed to create shader instance") + kCreateShader);
    EXPECT_EQ(filter.instanceKey(), nullptr);
    EXPECT_EQ(*instantiated("BlitFilter4x8").instanceKey(), 0U);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, DestroyingAFilterThatWasNeverInstantiatedDoesNothing) {
    Filter filter = namedFilter("BlitFilter4x8");
    gl.forgetCalls();
    EXPECT_NO_THROW(instance->destroyFilterInstance(filter));
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, DestroyingDeletesTheProgramAndItsBuffers) {
    auto const before = gl.living();
    Filter filter = instantiated("BlitFilter4x8");
    instance->destroyFilterInstance(filter);
    EXPECT_EQ(gl.living(), before);
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, DestroyedFilterKeepsItsKey) {
    Filter filter = instantiated("BlitFilter4x8");
    auto const key = filter.instanceKey();
    instance->destroyFilterInstance(filter);
    EXPECT_EQ(filter.instanceKey(), key);
    EXPECT_EQ(failureOf([&] { instance->destroyFilterInstance(filter); }),
              notAvailable("BlitFilter4x8", kDestroyFilter));
    EXPECT_EQ(failureOf([&] { execute(filter, {0, 0}); }), notAvailable("BlitFilter4x8", kExecuteFilter));
    gl.forgetCalls();
    EXPECT_NO_THROW(instance->createFilterInstance(filter));
    EXPECT_TRUE(gl.calls().empty()) << "instantiating it again does nothing";
    EXPECT_EQ(failureOf([&] { execute(filter, {0, 0}); }), notAvailable("BlitFilter4x8", kExecuteFilter));
}

// The key is all that a filter knows of its program.
TEST_F(Gles3RenderBackendInstanceFiltersTest, DestroyedFilterReachesWhicheverProgramHasItsKeyNow) {
    Filter filter = instantiated("BlitFilter4x8");
    instance->destroyFilterInstance(filter);
    Filter const successor = instantiated("BlitFilter3x8");
    EXPECT_EQ(*successor.instanceKey(), 0U);
    EXPECT_NO_THROW(execute(filter, {0, 0}));
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, FilterThatWasNeverInstantiatedCannotRun) {
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] {
                  execute(namedFilter("BlitFilter4x8"), {0, 0});
              }),
              notAvailable("BlitFilter4x8", kExecuteFilter));
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, RunningNeedsAnOffsetOfTwoValues) {
    Filter const filter = instantiated("BlitFilter4x8");
    gl.forgetCalls();
    EXPECT_THROW(execute(filter, {}), VelmoraException);
    EXPECT_THROW(execute(filter, {1}), VelmoraException);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, WholeTextureIsSampledWhateverThePosition) {
    Filter const filter = instantiated("BlitFilter4x8");
    size_t const source = rgbaTarget(100, 50);
    size_t const destination = rgbaTarget(100, 50);
    instance->executeFilter(filter, {{source, 30, 20, true}}, 10, 10, destination, 1, 2, 3, 4, SingleFilterParameters(),
                            {0, 0});
    EXPECT_EQ(gl.draws().back().uniforms.at("a_texRange00"), (std::vector<float>{0, 0, 1, 1}));
    EXPECT_EQ(gl.draws().back().textures.at(0), gles().target(source).texture());
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, RunPlacesTheValidOutputAtTheOffset) {
    Filter const filter = instantiated("BlitFilter4x8");
    size_t const source = rgbaTarget(64, 64);
    size_t const destination = rgbaTarget(128, 64);
    instance->executeFilter(filter, {{source, 16, 8, false}}, 40, 32, destination, 4, 4, 8, 8, SingleFilterParameters(),
                            {32, 16});
    // 40 - 4 - 4 by 32 - 8 - 8 texels at (32, 16) of 128 x 64, from (16 + 4, 8 + 8) of 64 x 64.
    auto const& draw = gl.draws().back();
    EXPECT_EQ(draw.framebuffer, gles().target(destination).framebuffer());
    EXPECT_EQ(draw.uniforms.at("a_geometry"), (std::vector<float>{-0.5F, -0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(draw.uniforms.at("a_texRange00"), (std::vector<float>{0.3125F, 0.25F, 0.5F, 0.25F}));
}

// The extent of the output follows the caller's description, the texture range the filter class.
TEST_F(Gles3RenderBackendInstanceFiltersTest, RunAsksTheFilterClassForItsBordersOnTheInputSide) {
    restart(hostRegistry("Sepia"));
    Filter const filter = instantiated("Sepia");
    EXPECT_EQ(filter.invalidLeft(), 0U);
    size_t const source = rgbaTarget(64, 64);
    size_t const destination = rgbaTarget(64, 64);
    instance->executeFilter(filter, {{source, 1, 0, false}}, 35, 32, destination, 0, 0, 0, 0, SingleFilterParameters(),
                            {0, 0});
    EXPECT_EQ(gl.draws().back().uniforms.at("a_texRange00"), (std::vector<float>{0.0625F, 0, 0.5F, 0.5F}));
    EXPECT_EQ(gl.draws().back().uniforms.at("a_geometry"), (std::vector<float>{-1, -1, 1.09375F, 1}));
}

TEST_F(Gles3RenderBackendInstanceFiltersTest, BoundFilterRunsThroughItsInstance) {
    Filter filter = namedFilter("BlitFilter4x8");
    filter.bind(instance);
    size_t const destination = rgbaTarget(64, 64);
    filter.execute({{destination, 0, 0, true}}, 64, 64, destination, {0, 0, 0, 0}, SingleFilterParameters(), {0, 0});
    EXPECT_EQ(gl.draws().back().framebuffer, gles().target(destination).framebuffer());
}

} // namespace
