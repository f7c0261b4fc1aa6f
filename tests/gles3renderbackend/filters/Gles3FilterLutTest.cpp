#include "gles3renderbackend/filters/Gles3FilterLut.h"

#include "conformance/TableFilter.h"
#include "gles3renderbackend/filters/Gles3FilterBlackWhiteGamma8.h"
#include "gles3renderbackend/filters/Gles3FilterLinear16TosRGB8.h"
#include "gles3renderbackend/filters/Gles3FilterLinearTo8bitSRGB.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/gles3renderbackend/FailingAllocation.h"
#include "tests/support/RecordingGlTest.h"

#include <cmath>
#include <stdexcept>

namespace {

using backendtest::failureOf;
using conformance::tableFilter;
using Bytes = std::vector<std::uint8_t>;
using Record = ComparableSingleFilterParameters<std::string>;

char const* const kBadCast =
    "#Name:Error: bad cast, provided filter parameters are expected to be of type ComparableSingleFilterParameters"
    "#Location:virtual void Gles3FilterLut::uploadParameters(SingleFilterParameters const& params) override";
char const* const kCastFailed = "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()";

/// Tables full of the key's length, and the keys in the order in which they were computed.
class CountingLut : public Gles3FilterLut<std::string> {
public:
    using Gles3FilterLut::Gles3FilterLut;

    Bytes computeTable(SingleFilterParameters const& params) const override {
        auto const& key = params.as<Record>().key();
        if (key == "too short") return Bytes(3);
        computed.push_back(key);
        return Bytes(size_t{1} << bitDepthIn(), static_cast<std::uint8_t>(key.size()));
    }
    std::string tableKey(SingleFilterParameters const& params) const override { return params.as<Record>().key(); }

    mutable std::vector<std::string> computed;
};

class Gles3FilterLutTest : public RecordingGlTest {
protected:
    Gles3FilterLutTest() { glUseProgram(lut.program()); }

    void use(std::string const& key) { lut.uploadParameters(Record(key)); }
    void useAll(std::string const& keys) {
        for (char const key : keys)
            use(std::string(1, key));
    }
    size_t textures() const {
        size_t count = 0;
        for (auto const& object : gl.living())
            count += object.rfind("texture ", 0) == 0 ? 1U : 0U;
        return count;
    }

    Filter description = tableFilter("counting", 4);
    CountingLut lut{description};
};

using Keys = std::vector<std::string>;

TEST_F(Gles3FilterLutTest, TableIsBoundToUnitOneWithItsSamplerAndItsRange) {
    use("abc");
    EXPECT_EQ(gl.activeUnit(), 1U);
    EXPECT_EQ(gl.texture(gl.boundTexture(1)).image().pixels, Bytes(16, 3));
    EXPECT_EQ(gl.program(lut.program()).value("a_maxValue"), std::vector<float>{15});
    EXPECT_EQ(gl.program(lut.program()).value("s_texture01"), std::vector<float>{1});
}

TEST_F(Gles3FilterLutTest, KeySeenBeforeIsNeitherComputedNorUploadedAgain) {
    use("a");
    use("bb");
    GLuint const second = gl.boundTexture(1);
    gl.forgetCalls();
    use("a");
    EXPECT_NE(gl.boundTexture(1), second);
    use("bb");
    EXPECT_EQ(gl.boundTexture(1), second);
    EXPECT_EQ(gl.count("glTexImage2D"), 0U);
    EXPECT_EQ(lut.computed, (Keys{"a", "bb"}));
    EXPECT_EQ(gl.program(lut.program()).value("s_texture01"), std::vector<float>{1});
}

TEST_F(Gles3FilterLutTest, TenTablesAreKept) {
    useAll("0123456789");
    EXPECT_EQ(textures(), 10U);
    useAll("9876543210");
    EXPECT_EQ(lut.computed.size(), 10U);
}

TEST_F(Gles3FilterLutTest, EleventhKeyDropsTheOneNotUsedLongest) {
    useAll("0123456789");
    use("x");
    EXPECT_EQ(textures(), 10U);
    useAll("123456789x");
    EXPECT_EQ(lut.computed.size(), 11U);
    use("0");
    EXPECT_EQ(lut.computed.size(), 12U);
}

TEST_F(Gles3FilterLutTest, UseOfATableKeepsItFromBeingDropped) {
    useAll("0123456789");
    use("0");
    use("x");
    EXPECT_EQ(lut.computed.size(), 11U);
    use("0");
    EXPECT_EQ(lut.computed.size(), 11U);
    use("1");
    EXPECT_EQ(lut.computed.back(), "1");
}

TEST_F(Gles3FilterLutTest, RecordThatIsNotComparableIsRefusedAndTheTablesStay) {
    use("a");
    gl.forgetCalls();
    EXPECT_EQ(failureOf([&] { lut.uploadParameters(SingleFilterParameters()); }), kBadCast);
    EXPECT_EQ(failureOf([&] { lut.uploadParameters(FilterSharpness8Params()); }), kBadCast);
    EXPECT_EQ(failureOf([&] { lut.uploadParameters(ComparableSingleFilterParameters<unsigned char>(7)); }), kBadCast);
    EXPECT_EQ(gl.texts(), (std::vector<std::string>(3, "glActiveTexture(GL_TEXTURE1)")));
    use("a");
    EXPECT_EQ(lut.computed, Keys{"a"});
}

TEST_F(Gles3FilterLutTest, TableOfAWrongLengthIsRefusedAndTheOthersStay) {
    useAll("0123456789");
    EXPECT_THROW(use("too short"), std::length_error);
    EXPECT_EQ(textures(), 10U);
    useAll("0123456789");
    EXPECT_EQ(lut.computed.size(), 10U);
    EXPECT_THROW(use("too short"), std::length_error);
}

TEST_F(Gles3FilterLutTest, EleventhTableThatRunsOutOfMemoryDropsNone) {
    useAll("0123456789");
    auto const ten = gl.living();
    std::string const key = "too long for a string without memory of its own";
    size_t const failures = backendtest::failEachAllocation([&] { use(key); }, [&] { EXPECT_EQ(gl.living(), ten); });
    EXPECT_GT(failures, 5U) << "the record, the key, the table, its texture, both entries";
    size_t const computed = lut.computed.size();
    useAll("123456789");
    use(key);
    EXPECT_EQ(lut.computed.size(), computed) << "the oldest alone has gone";
    EXPECT_EQ(textures(), 10U);
}

TEST_F(Gles3FilterLutTest, TablesGoWithTheFilter) {
    {
        CountingLut other(description);
        glUseProgram(other.program());
        other.uploadParameters(Record("a"));
        EXPECT_EQ(textures(), 1U);
        glUseProgram(0);
    }
    EXPECT_EQ(textures(), 0U);
}

TEST_F(Gles3FilterLutTest, GammaFiltersRefuseRecordsOfAnotherFilterAfterThoseThatAreNotComparable) {
    Filter eight = tableFilter("eight", 8);
    Filter deep = tableFilter("deep", 12);
    Gles3FilterBlackWhiteGamma8 blackWhite(eight);
    Gles3FilterLinear16TosRGB8 linear(deep);
    EXPECT_EQ(failureOf([&] { blackWhite.uploadParameters(FilterLinear16TosRGB8Params()); }), kCastFailed);
    EXPECT_EQ(failureOf([&] { linear.uploadParameters(FilterBlackWhiteGamma8Params()); }), kCastFailed);
    EXPECT_EQ(failureOf([&] { linear.uploadParameters(Record("key")); }), kCastFailed);
    EXPECT_EQ(failureOf([&] { linear.uploadParameters(FilterClaheParams()); }), kBadCast);
    EXPECT_EQ(textures(), 0U);
    EXPECT_EQ(gl.count("glUniform1f"), 0U);
    EXPECT_EQ(gl.count("glUniform1i"), 0U);
}

TEST_F(Gles3FilterLutTest, RecordsOfEqualValuesShareATableAndOthersDoNot) {
    Filter deep = tableFilter("deep", 12);
    Gles3FilterLinear16TosRGB8 linear(deep);
    glUseProgram(linear.program());
    linear.uploadParameters(FilterLinear16TosRGB8Params(2.2, 5, 4000));
    linear.uploadParameters(FilterLinear16TosRGB8Params(2.2, 5, 4000));
    EXPECT_EQ(textures(), 1U);
    EXPECT_EQ(gl.program(linear.program()).value("a_maxValue"), std::vector<float>{4095});
    linear.uploadParameters(FilterLinear16TosRGB8Params(std::nextafter(2.2, 3.0), 5, 4000));
    EXPECT_EQ(textures(), 2U);
    glUseProgram(0);
}

TEST_F(Gles3FilterLutTest, KeyGivenByTheHostDecidesWhichTableIsUsed) {
    Filter eight = tableFilter("eight", 8);
    Gles3FilterBlackWhiteGamma8 blackWhite(eight);
    glUseProgram(blackWhite.program());
    blackWhite.uploadParameters(FilterBlackWhiteGamma8Params("mine", 1.0, 0, 3500));
    GLuint const first = gl.boundTexture(1);
    blackWhite.uploadParameters(FilterBlackWhiteGamma8Params("mine", 2.2, 0, 3500));
    EXPECT_EQ(gl.boundTexture(1), first);
    EXPECT_EQ(textures(), 1U);
    glUseProgram(0);
}

TEST_F(Gles3FilterLutTest, SrgbTableGoesByTheInputDepthAndDepthsAboveSixteenAreRefused) {
    using AnyKey = ComparableSingleFilterParameters<unsigned char>;
    Filter eight = tableFilter("eight", 8);
    Gles3FilterLinearTo8bitSRGB srgb(eight);
    glUseProgram(srgb.program());
    srgb.uploadParameters(AnyKey(1));
    srgb.uploadParameters(AnyKey(2));
    EXPECT_EQ(textures(), 1U);
    EXPECT_EQ(srgb.tableKey(AnyKey(1)), 8);
    Filter tooDeep = tableFilter("too deep", 17);
    Gles3FilterLinearTo8bitSRGB refused(tooDeep);
    std::string const failure = failureOf([&] { refused.uploadParameters(AnyKey()); });
    EXPECT_EQ(failure, "unsupported bit depth for Gles3FilterLinearTo8bitSRGB");
    EXPECT_EQ(textures(), 1U);
    glUseProgram(0);
}

} // namespace
