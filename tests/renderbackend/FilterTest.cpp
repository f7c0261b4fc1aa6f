#include "renderbackend/Filter.h"

#include "renderbackend/FilterParameters.h"
#include "tests/renderbackend/FilterDescription.h"
#include "tests/renderbackend/MinimalInstance.h"
#include "tests/renderbackend/ThrownMessage.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace {

static_assert(std::is_copy_constructible_v<Filter> && std::is_copy_assignable_v<Filter>);
static_assert(std::has_virtual_destructor_v<Filter>);

FilterDescription everythingDifferent() {
    FilterDescription d;
    d.name = "all";
    d.invalidLeft = 1;
    d.invalidRight = 2;
    d.invalidTop = 3;
    d.invalidBottom = 4;
    d.inputPosX0 = 12;
    d.inputPosXStride = 6;
    d.inputPosY0 = 28;
    d.inputPosYStride = 7;
    d.scaleXNum = 5;
    d.scaleXDen = 3;
    d.scaleYNum = 9;
    d.scaleYDen = 21;
    d.numTexturesIn = 3;
    d.bitsPerPixelIn = 16;
    d.bitsPerPixelOut = 48;
    d.componentsIn = 1;
    d.componentsOut = 3;
    d.alignXIn = 2;
    d.alignXOut = 11;
    d.alignYIn = 14;
    d.alignYOut = 13;
    d.signedIn = {true, false, true};
    d.signedOut = true;
    d.bitDepthIn = 12;
    d.filtering = RenderBackend::LINEAR;
    return d;
}

void expectSameDescription(Filter const& a, FilterDescription const& d) {
    EXPECT_EQ(a.name(), d.name);
    EXPECT_EQ(a.invalidLeft(), d.invalidLeft);
    EXPECT_EQ(a.invalidRight(), d.invalidRight);
    EXPECT_EQ(a.invalidTop(), d.invalidTop);
    EXPECT_EQ(a.invalidBottom(), d.invalidBottom);
    EXPECT_EQ(a.inputPosX0(), d.inputPosX0);
    EXPECT_EQ(a.inputPosXStride(), d.inputPosXStride);
    EXPECT_EQ(a.inputPosY0(), d.inputPosY0);
    EXPECT_EQ(a.inputPosYStride(), d.inputPosYStride);
    EXPECT_EQ(a.scaleXNum(), d.scaleXNum);
    EXPECT_EQ(a.scaleXDen(), d.scaleXDen);
    EXPECT_EQ(a.scaleYNum(), d.scaleYNum);
    EXPECT_EQ(a.scaleYDen(), d.scaleYDen);
    EXPECT_EQ(a.numTexturesIn(), d.numTexturesIn);
    EXPECT_EQ(a.bitsPerPixelIn(), d.bitsPerPixelIn);
    EXPECT_EQ(a.bitsPerPixelOut(), d.bitsPerPixelOut);
    EXPECT_EQ(a.componentsIn(), d.componentsIn);
    EXPECT_EQ(a.componentsOut(), d.componentsOut);
    EXPECT_EQ(a.alignXIn(), d.alignXIn);
    EXPECT_EQ(a.alignXOut(), d.alignXOut);
    EXPECT_EQ(a.alignYIn(), d.alignYIn);
    EXPECT_EQ(a.alignYOut(), d.alignYOut);
    for (size_t i = 0; i < d.signedIn.size(); ++i)
        EXPECT_EQ(a.signedIn(i), d.signedIn[i]) << "input " << i;
    EXPECT_EQ(a.signedOut(), d.signedOut);
    EXPECT_EQ(a.bitDepthIn(), d.bitDepthIn);
    EXPECT_EQ(a.filtering(), d.filtering);
}

TEST(FilterTest, EveryFieldIsReadBackAsGiven) {
    Filter const filter = everythingDifferent().filter();
    expectSameDescription(filter, everythingDifferent());
    EXPECT_EQ(filter.effectiveAlignX(), 6u) << "the stride is larger";
    EXPECT_EQ(filter.effectiveAlignY(), 14u) << "the alignment is larger";
}

TEST(FilterTest, ANewFilterHasNoKeyNoInstanceAndNoParameters) {
    Filter filter = everythingDifferent().filter();
    EXPECT_EQ(filter.instanceKey(), nullptr);
    EXPECT_EQ(filter.instance(), nullptr);
    EXPECT_FALSE(filter.supportsParameters());
    EXPECT_EQ(filter.nextSerial(), 0u);
}

TEST(FilterTest, TheDefaultFilterIsTheNamelessIdentity) {
    FilterDescription identity;
    identity.name = "";
    expectSameDescription(Filter(), identity);
    EXPECT_FALSE(Filter().changesGeometry());
}

TEST(FilterTest, TheShorterConstructorDescribesEightBitPixels) {
    FilterDescription expected;
    expected.name = "short";
    expected.invalidLeft = 1;
    expected.invalidRight = 2;
    expected.invalidTop = 3;
    expected.invalidBottom = 4;
    expected.inputPosX0 = 5;
    expected.inputPosXStride = 6;
    expected.inputPosY0 = 7;
    expected.inputPosYStride = 8;
    expected.scaleXNum = 1;
    expected.scaleXDen = 2;
    expected.scaleYNum = 3;
    expected.scaleYDen = 4;
    expected.numTexturesIn = 2;
    expected.signedIn = {false, false};
    expected.filtering = RenderBackend::TRILINEAR;
    expectSameDescription(Filter("short", 1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 2, RenderBackend::TRILINEAR), expected);
}

TEST(FilterTest, AnInputAlignmentSetsTheEffectiveAlignmentOfItsAxisAnew) {
    FilterDescription d;
    d.inputPosXStride = 4;
    d.inputPosYStride = 3;
    Filter filter = d.filter();
    filter.setAlignXIn(8);
    EXPECT_EQ(filter.alignXIn(), 8u);
    EXPECT_EQ(filter.effectiveAlignX(), 8u);
    EXPECT_EQ(filter.effectiveAlignY(), 3u);
    filter.setAlignXIn(2);
    EXPECT_EQ(filter.effectiveAlignX(), 4u) << "never below the stride";
    filter.setAlignYIn(6);
    EXPECT_EQ(filter.alignYIn(), 6u);
    EXPECT_EQ(filter.effectiveAlignY(), 6u);
    EXPECT_EQ(filter.effectiveAlignX(), 4u);
}

TEST(FilterTest, AnOutputAlignmentChangesOnlyItself) {
    Filter filter;
    filter.setAlignXOut(4);
    filter.setAlignYOut(8);
    EXPECT_EQ(filter.alignXOut(), 4u);
    EXPECT_EQ(filter.alignYOut(), 8u);
    EXPECT_EQ(filter.alignXIn(), 1u);
    EXPECT_EQ(filter.alignYIn(), 1u);
    EXPECT_EQ(filter.effectiveAlignX(), 1u);
    EXPECT_EQ(filter.effectiveAlignY(), 1u);
}

TEST(FilterTest, TheIdentityDoesNotChangeGeometry) {
    EXPECT_FALSE(FilterDescription().filter().changesGeometry());
}

TEST(FilterTest, EachGeometricFieldAloneChangesGeometry) {
    struct Row {
        char const* name;
        void (*change)(FilterDescription&);
    };
    Row const rows[] = {
        {"invalidLeft", [](FilterDescription& d) { d.invalidLeft = 1; }},
        {"invalidRight", [](FilterDescription& d) { d.invalidRight = 1; }},
        {"invalidTop", [](FilterDescription& d) { d.invalidTop = 1; }},
        {"invalidBottom", [](FilterDescription& d) { d.invalidBottom = 1; }},
        {"x scale", [](FilterDescription& d) { d.scaleXNum = 2; }},
        {"y scale", [](FilterDescription& d) { d.scaleYNum = 2; }},
        {"inputPosX0", [](FilterDescription& d) { d.inputPosX0 = 1; }},
        {"inputPosXStride", [](FilterDescription& d) { d.inputPosXStride = 2; }},
        {"inputPosY0", [](FilterDescription& d) { d.inputPosY0 = 1; }},
        {"inputPosYStride", [](FilterDescription& d) { d.inputPosYStride = 2; }},
        {"alignXIn", [](FilterDescription& d) { d.alignXIn = 2; }},
        {"alignXOut", [](FilterDescription& d) { d.alignXOut = 2; }},
        {"alignYIn", [](FilterDescription& d) { d.alignYIn = 2; }},
        {"alignYOut", [](FilterDescription& d) { d.alignYOut = 2; }},
    };
    for (Row const& row : rows) {
        FilterDescription d;
        row.change(d);
        EXPECT_TRUE(d.filter().changesGeometry()) << row.name;
    }
}

TEST(FilterTest, PixelLayoutAndAnEqualScaleFractionDoNotChangeGeometry) {
    FilterDescription d;
    d.scaleXNum = d.scaleXDen = 3;
    d.scaleYNum = d.scaleYDen = 2;
    d.numTexturesIn = 2;
    d.signedIn = {true, true};
    d.signedOut = true;
    d.bitsPerPixelIn = 16;
    d.bitsPerPixelOut = 48;
    d.componentsIn = 1;
    d.componentsOut = 3;
    d.bitDepthIn = 16;
    d.filtering = RenderBackend::LINEAR;
    EXPECT_FALSE(d.filter().changesGeometry());
}

TEST(FilterTest, TheSerialGrowsWithEveryCall) {
    Filter filter;
    EXPECT_EQ(filter.nextSerial(), 0u);
    EXPECT_EQ(filter.nextSerial(), 1u);
    Filter copy = filter;
    EXPECT_EQ(copy.nextSerial(), 2u) << "copies carry the counter over";
    EXPECT_EQ(copy.nextSerial(), 3u);
    EXPECT_EQ(filter.nextSerial(), 2u) << "and count on their own";
}

// Makes records that carry 0, 1, 2, ... in shiftBits: its state shows whether a copy counts on its own.
Filter::ParametersFactory countingFactory() {
    return [made = 0]() mutable {
        auto record = std::make_shared<FilterClaheParams>();
        record->shiftBits = made++;
        return record;
    };
}

void expectCopyOf(Filter& original, Filter& copy, FilterDescription const& description) {
    expectSameDescription(copy, description);
    EXPECT_EQ(copy.effectiveAlignX(), original.effectiveAlignX());
    EXPECT_EQ(copy.effectiveAlignY(), original.effectiveAlignY());
    EXPECT_EQ(copy.instanceKey(), original.instanceKey()) << "shared, not a second key";
    EXPECT_EQ(copy.instance(), original.instance());
    ASSERT_TRUE(copy.supportsParameters());
    EXPECT_EQ(copy.getParametersObject()->shiftBits, 1) << "cloned after one record was made";
    EXPECT_EQ(copy.getParametersObject()->shiftBits, 2);
    EXPECT_EQ(original.getParametersObject()->shiftBits, 1) << "the factories do not share their state";
}

class FilterCopyTest : public testing::Test {
protected:
    FilterCopyTest() : original(everythingDifferent().filter()) {
        original.setParametersFactory(countingFactory());
        original.setInstanceKey(std::make_shared<size_t>(3));
        original.getParametersObject();
    }
    Filter original;
};

TEST_F(FilterCopyTest, ACopySharesTheKeyAndClonesTheFactory) {
    Filter copy(original);
    expectCopyOf(original, copy, everythingDifferent());
}

TEST_F(FilterCopyTest, AnAssignedFilterSharesTheKeyAndClonesTheFactory) {
    Filter copy;
    copy = original;
    expectCopyOf(original, copy, everythingDifferent());
}

TEST_F(FilterCopyTest, ACloneSharesTheKeyAndClonesTheFactory) {
    std::unique_ptr<Filter> const copy = original.clone();
    ASSERT_NE(copy.get(), &original);
    expectCopyOf(original, *copy, everythingDifferent());
}

TEST_F(FilterCopyTest, ACloneOfADerivedObjectIsAPlainFilter) {
    struct Derived : Filter {
        explicit Derived(Filter const& filter) : Filter(filter) {}
        size_t invalidLeft() const override { return 99; }
    };
    Derived const derived(original);
    std::unique_ptr<Filter> const copy = static_cast<Filter const&>(derived).clone();
    Filter const& made = *copy;
    EXPECT_EQ(typeid(made), typeid(Filter));
    EXPECT_EQ(copy->invalidLeft(), 1u);
}

TEST_F(FilterCopyTest, TheKeyLivesUntilItsLastCopyGoes) {
    std::weak_ptr<size_t> const key = original.instanceKey();
    auto copy = std::make_unique<Filter>(original);
    original = Filter();
    EXPECT_FALSE(key.expired());
    copy.reset();
    EXPECT_TRUE(key.expired());
}

TEST(FilterTest, WithoutAFactoryThereAreNoParameters) {
    Filter filter;
    std::string const expected = "#Name:Filter does not support parameters#Location:std::shared_ptr"
                                 "<SingleFilterParameters> Filter::getParametersObject ()";
    EXPECT_FALSE(filter.supportsParameters());
    EXPECT_EQ(thrownMessage([&] { filter.getParametersObject(); }), expected);
    filter.setParametersFactory(countingFactory());
    EXPECT_TRUE(filter.supportsParameters());
    filter.setParametersFactory(nullptr);
    EXPECT_FALSE(filter.supportsParameters());
    EXPECT_EQ(thrownMessage([&] { filter.getParametersObject(); }), expected);
}

TEST(FilterTest, EveryParametersObjectIsAFreshOne) {
    Filter filter;
    filter.setParametersFactory([] { return std::make_shared<FilterTruncate16Params>(); });
    std::shared_ptr<SingleFilterParameters> const first = filter.getParametersObject();
    std::shared_ptr<SingleFilterParameters> const second = filter.getParametersObject();
    EXPECT_NE(first, second);
    first->as<FilterTruncate16Params>().shift = 4;
    EXPECT_EQ(second->as<FilterTruncate16Params>().shift, 0u);
}

TEST(FilterTest, ExecuteOfAFilterThatWasNeverInstantiatedThrows) {
    std::string const expected =
        "#Name:filter has not been instantiated in a RenderBackend#Location:void "
        "Filter::execute(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination, "
        "std::vector<size_t> const& clip, std::vector<size_t> offset) const";
    Filter const filter;
    EXPECT_EQ(thrownMessage([&] {
                  filter.execute({}, 1, 1, 1, {0, 0, 0, 0}, SingleFilterParameters(), {0, 0});
              }),
              expected);
    EXPECT_EQ(thrownMessage([&] { filter.execute({}, 1, 1, 1, {}, SingleFilterParameters(), {}); }), expected)
        << "before the clip is looked at";
}

TEST(FilterTest, AKeyAloneDoesNotMakeAFilterExecutable) {
    Filter filter;
    filter.setInstanceKey(std::make_shared<size_t>(0));
    EXPECT_THROW(filter.execute({}, 1, 1, 1, {0, 0, 0, 0}, SingleFilterParameters(), {0, 0}), VelmoraException);
}

TEST(FilterTest, BindInstantiatesTheFilterThenKeepsTheInstance) {
    FixedContext const context;
    auto const instance = std::make_shared<MinimalInstance>(1, context);
    Filter filter;
    filter.bind(instance);
    EXPECT_EQ(instance->instantiated, std::vector<Filter*>{&filter});
    EXPECT_EQ(filter.instance(), instance);
    ASSERT_NE(filter.instanceKey(), nullptr);
    EXPECT_EQ(*filter.instanceKey(), 7u);
}

TEST(FilterTest, BindToTheInstanceThatTheFilterAlreadyHolds) {
    FixedContext const context;
    Filter filter;
    filter.bind(std::make_shared<MinimalInstance>(1, context));
    std::weak_ptr<RenderBackendInstance> const watch = filter.instance();
    filter.bind(filter.instance()); // the instance assigns over the filter, which holds its only owner
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(filter.instance(), watch.lock());
}

TEST(FilterTest, AnInstanceThatRefusesTheFilterIsNotKept) {
    struct Refusing : MinimalInstance {
        using MinimalInstance::MinimalInstance;
        void createFilterInstance(Filter&) override { throw VelmoraException("no", "here"); }
    };
    FixedContext const context;
    Filter filter;
    EXPECT_EQ(thrownMessage([&] { filter.bind(std::make_shared<Refusing>(1, context)); }), "#Name:no#Location:here");
    EXPECT_EQ(filter.instance(), nullptr);
}

TEST(FilterTest, BindToNothingThrowsAndLeavesTheFilterAsItWas) {
    Filter filter;
    EXPECT_EQ(thrownMessage([&] { filter.bind(nullptr); }),
              "#Name:no backend instance to bind to#Location:void "
              "Filter::bind(std::shared_ptr<RenderBackendInstance> const& instance)");
    EXPECT_EQ(filter.instance(), nullptr);
    EXPECT_EQ(filter.instanceKey(), nullptr);
}

TEST(FilterTest, ExecutePassesEverythingOnInOrder) {
    FixedContext const context;
    auto const instance = std::make_shared<MinimalInstance>(1, context);
    Filter filter;
    filter.bind(instance);
    FilterClaheParams const params;
    filter.execute({{4, 5, 6, true}, {7, 8, 9, false}}, 100, 200, 3, {11, 12, 13, 14}, params, {21, 22});
    ASSERT_EQ(instance->executions.size(), 1u);
    MinimalInstance::Execution const& run = instance->executions.front();
    EXPECT_EQ(run.filter, &filter);
    ASSERT_EQ(run.sources.size(), 2u);
    EXPECT_EQ(run.sources[0].target, 4u);
    EXPECT_EQ(run.sources[0].x, 5u);
    EXPECT_EQ(run.sources[0].y, 6u);
    EXPECT_TRUE(run.sources[0].wholeTexture);
    EXPECT_EQ(run.sources[1].target, 7u);
    EXPECT_EQ(run.numbers, (std::vector<size_t>{100, 200, 3, 11, 12, 13, 14}));
    EXPECT_EQ(run.params, &params);
    EXPECT_EQ(run.offset, (std::vector<size_t>{21, 22}));
}

TEST(FilterTest, ExecuteWithAClipOfFewerThanFourValuesThrows) {
    FixedContext const context;
    auto const instance = std::make_shared<MinimalInstance>(1, context);
    Filter filter;
    filter.bind(instance);
    EXPECT_THROW(filter.execute({}, 1, 1, 1, {0, 0, 0}, SingleFilterParameters(), {0, 0}), VelmoraException);
    EXPECT_TRUE(instance->executions.empty());
}

} // namespace
