#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;

char const* const kCastFailed = "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()";

/// The gain that the two unsharp masks send to their programs.
class SharpnessUploadTest : public BackendRecordingTest {
protected:
    SharpnessUploadTest() {
        instance->createFilterInstance(eightBits);
        instance->createFilterInstance(sixteenBits);
        gl.forgetCalls();
    }

    void run(Filter const& filter, SingleFilterParameters const& params) const {
        instance->executeFilter(filter, {{0, 0, 0, true}}, 8, 8, 0, 0, 0, 0, 0, params, {0, 0});
    }

    float gainOf8(double gain, std::int32_t shiftBits = 0) {
        FilterSharpness8Params params;
        params.gain = gain;
        params.shiftBits = shiftBits;
        run(eightBits, params);
        return gl.draws().back().uniforms.at("a_gain").at(0);
    }

    float gainOf16(double gain, std::int32_t shiftBits = 0) {
        FilterSharpness16Params params;
        params.gain = gain;
        params.shiftBits = shiftBits;
        run(sixteenBits, params);
        return gl.draws().back().uniforms.at("a_gain").at(0);
    }

    Filter eightBits = namedFilter("FilterSharpness8");
    Filter sixteenBits = namedFilter("FilterSharpnessV16");
};

TEST_F(SharpnessUploadTest, GainOf8BitsMovesInStepsOfOneThirtySecondTowardZero) {
    EXPECT_EQ(gainOf8(0.04), 0.03125F);
    EXPECT_EQ(gainOf8(-0.04), -0.03125F);
    EXPECT_EQ(gainOf8(0.031), 0.0F);
    EXPECT_EQ(gainOf8(-0.031), 0.0F);
    EXPECT_EQ(gainOf8(1.0), 1.0F);
    EXPECT_EQ(gainOf8(2.99), 2.96875F);
}

TEST_F(SharpnessUploadTest, GainOf8BitsIsShiftedWithItsSignRoundedDown) {
    EXPECT_EQ(gainOf8(1.0, 2), 0.25F);
    EXPECT_EQ(gainOf8(0.03125, 1), 0.0F);
    EXPECT_EQ(gainOf8(-0.03125, 1), -0.03125F);
    EXPECT_EQ(gainOf8(-1.0, 31), -0.03125F);
}

TEST_F(SharpnessUploadTest, GainOf8BitsBeyond32BitsIsTheLargest) {
    EXPECT_EQ(gainOf8(1e12), 67108864.0F);
    EXPECT_EQ(gainOf8(-1e12), -67108864.0F);
}

TEST_F(SharpnessUploadTest, GainOf16BitsIs32TimesItsWholePart) {
    EXPECT_EQ(gainOf16(1.0), 32.0F);
    EXPECT_EQ(gainOf16(1.9), 32.0F);
    EXPECT_EQ(gainOf16(-1.9), -32.0F);
    EXPECT_EQ(gainOf16(0.9), 0.0F);
    EXPECT_EQ(gainOf16(-0.9), 0.0F);
    EXPECT_EQ(gainOf16(7.0), 224.0F);
}

TEST_F(SharpnessUploadTest, GainOf16BitsIsShiftedIn64BitsRoundedDown) {
    EXPECT_EQ(gainOf16(3.0, 1), 48.0F);
    EXPECT_EQ(gainOf16(1.0, 6), 0.0F);
    EXPECT_EQ(gainOf16(-1.0, 6), -1.0F);
    EXPECT_EQ(gainOf16(2147483647.0, 5), 2147483647.0F);
    EXPECT_EQ(gainOf16(-2147483648.0, 0), -68719476736.0F);
}

TEST_F(SharpnessUploadTest, RecordsOfTheOtherFilterAreRefusedAndNothingIsUploadedOrDrawn) {
    EXPECT_EQ(failureOf([&] { run(eightBits, FilterSharpness16Params()); }), kCastFailed);
    EXPECT_EQ(failureOf([&] { run(sixteenBits, FilterSharpness8Params()); }), kCastFailed);
    EXPECT_EQ(failureOf([&] { run(eightBits, SingleFilterParameters()); }), kCastFailed);
    EXPECT_EQ(gl.count("glUniform1f"), 0U);
    EXPECT_EQ(gl.count("glDrawElements"), 0U);
}

TEST_F(SharpnessUploadTest, RecordDerivedFromItsOwnIsAccepted) {
    struct Named : FilterSharpness8Params {};
    Named params;
    params.gain = 2.0;
    run(eightBits, params);
    EXPECT_EQ(gl.draws().back().uniforms.at("a_gain"), std::vector<float>{2.0F});
}

} // namespace
