#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;
using Floats = std::vector<float>;

/// The coefficients that the two colour matrices send to their programs.
class MatrixUploadTest : public BackendRecordingTest {
protected:
    MatrixUploadTest() {
        instance->createFilterInstance(eightBits);
        instance->createFilterInstance(sixteenBits);
        gl.forgetCalls();
    }

    std::map<std::string, Floats> uploaded(Filter const& filter, std::array<std::int32_t, 9> const& matrix,
                                           double strength = 1.0) {
        Filter3x3MatrixParams params;
        params.matrix = matrix;
        params.scale = strength;
        run(filter, params);
        return gl.draws().back().uniforms;
    }

    void run(Filter const& filter, SingleFilterParameters const& params) const {
        instance->executeFilter(filter, {{0, 0, 0, true}}, 8, 8, 0, 0, 0, 0, 0, params, {0, 0});
    }

    Filter eightBits = namedFilter("Filter3x3Matrix8");
    Filter sixteenBits = namedFilter("Filter3x3Matrix16");
};

TEST_F(MatrixUploadTest, MatrixOf8BitsIsTheRecordsInItsOrderDividedBy1024) {
    EXPECT_EQ(uploaded(eightBits, {1024, 512, -256, 1, -1, 2048, 3, 0, -3}).at("a_matrix3x3"),
              (Floats{1.0F, 0.5F, -0.25F, 1 / 1024.0F, -1 / 1024.0F, 2.0F, 3 / 1024.0F, 0.0F, -3 / 1024.0F}));
    auto const& call = gl.last("glUniformMatrix3fv");
    EXPECT_EQ(call.arguments.at(1).text, "1");
    EXPECT_EQ(call.arguments.at(2).text, "GL_FALSE");
}

TEST_F(MatrixUploadTest, HalfStrengthHalvesEveryCoefficientWithRounding) {
    EXPECT_EQ(uploaded(eightBits, {1024, 3, -3, 0, 1, -1, 2, -2, 1023}, 0.5).at("a_matrix3x3"),
              (Floats{0.5F, 2 / 1024.0F, -1 / 1024.0F, 0.0F, 1 / 1024.0F, 0.0F, 1 / 1024.0F, -1 / 1024.0F, 0.5F}));
}

// Column c of matrix j: coefficient 3 * c + j, least significant byte first, all four bytes of its sign.
TEST_F(MatrixUploadTest, MatricesOf16BitsHoldTheBytesOfOneCoefficientAColumn) {
    auto const uniforms = uploaded(sixteenBits, {1024, -1024, 0x123456, 255, -255, -0x123456, 256, 0, -1});
    EXPECT_EQ(uniforms.at("a_matrix4x4_32_1"), (Floats{0, 4, 0, 0, 255, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(uniforms.at("a_matrix4x4_32_2"), (Floats{0, -4, 0, 0, -255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(uniforms.at("a_matrix4x4_32_3"),
              (Floats{0x56, 0x34, 0x12, 0, -0x56, -0x34, -0x12, 0, -1, 0, 0, 0, 0, 0, 0, 0}));
    for (auto const& call : gl.callsOf("glUniformMatrix4fv")) {
        EXPECT_EQ(call.arguments.at(1).text, "1");
        EXPECT_EQ(call.arguments.at(2).text, "GL_FALSE");
    }
    EXPECT_EQ(gl.count("glUniformMatrix4fv"), 3U);
}

TEST_F(MatrixUploadTest, StrengthIsInTheBytesOf16Bits) {
    EXPECT_EQ(uploaded(sixteenBits, {1024, 0, 0, -3, 0, 0, 3, 0, 0}, 0.5).at("a_matrix4x4_32_1"),
              (Floats{0, 2, 0, 0, -1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}));
}

// 1024 * -2097152 is the smallest 32-bit number, and adding half of 1024 does not change the quotient.
TEST_F(MatrixUploadTest, SmallestCoefficientSplitsIntoBytes) {
    EXPECT_EQ(uploaded(sixteenBits, {-2097152, 0, 0, 2097151, 0, 0, 0, 0, 0}).at("a_matrix4x4_32_1"),
              (Floats{0, 0, -32, 0, 255, 255, 31, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(MatrixUploadTest, RoundingCorrectionIsSentWithACountOfZeroSoThatItStaysZero) {
    auto const uniforms = uploaded(sixteenBits, {1024, 0, 0, 0, 1024, 0, 0, 0, 1024});
    EXPECT_EQ(uniforms.count("a_K"), 0U);
    size_t empty = 0;
    for (auto const& call : gl.callsOf("glUniform4fv")) {
        if (call.arguments.at(1).text == "0") ++empty;
    }
    EXPECT_EQ(empty, 1U);
}

TEST_F(MatrixUploadTest, RecordsOfOtherFiltersAreRefusedAndNothingIsUploadedOrDrawn) {
    char const* const text = "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()";
    EXPECT_EQ(failureOf([&] { run(eightBits, FilterSharpness8Params()); }), text);
    EXPECT_EQ(failureOf([&] { run(sixteenBits, SingleFilterParameters()); }), text);
    EXPECT_EQ(gl.count("glUniformMatrix3fv"), 0U);
    EXPECT_EQ(gl.count("glUniformMatrix4fv"), 0U);
    EXPECT_EQ(gl.count("glDrawElements"), 0U);
}

} // namespace
