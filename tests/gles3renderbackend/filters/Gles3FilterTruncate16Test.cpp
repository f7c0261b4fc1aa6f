#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;

class Gles3FilterTruncate16Test : public BackendRecordingTest {
protected:
    Gles3FilterTruncate16Test() {
        instance->createFilterInstance(filter);
        gl.forgetCalls();
    }

    void run(SingleFilterParameters const& params) const {
        instance->executeFilter(filter, {{0, 0, 0, true}}, 8, 8, 0, 0, 0, 0, 0, params, {0, 0});
    }

    /// The divisor and the constant that a run uploads.
    std::vector<float> uploaded(size_t bits, bool rounding) {
        FilterTruncate16Params params;
        params.shift = bits;
        params.rounding = rounding;
        run(params);
        auto const& uniforms = gl.draws().back().uniforms;
        return {uniforms.at("a_divisor").at(0), uniforms.at("a_constant").at(0)};
    }

    Filter filter = namedFilter("FilterTruncate16");
};

using Uploaded = std::vector<float>;

TEST_F(Gles3FilterTruncate16Test, ConstantIsTheMiddleOfWhatIsCut) {
    EXPECT_EQ(uploaded(0, true), (Uploaded{1, 0}));
    EXPECT_EQ(uploaded(1, true), (Uploaded{2, 0}));
    EXPECT_EQ(uploaded(4, true), (Uploaded{16, 7}));
    EXPECT_EQ(uploaded(16, true), (Uploaded{65536, 32767}));
    EXPECT_EQ(uploaded(24, true), (Uploaded{16777216, 8388607}));
}

TEST_F(Gles3FilterTruncate16Test, WithoutRoundingTheConstantIsZero) {
    EXPECT_EQ(uploaded(0, false), (Uploaded{1, 0}));
    EXPECT_EQ(uploaded(4, false), (Uploaded{16, 0}));
    EXPECT_EQ(uploaded(31, false), (Uploaded{2147483648.0F, 0}));
    EXPECT_EQ(uploaded(63, false), (Uploaded{9223372036854775808.0F, 0}));
}

// The divisor counts in 64 bits, the constant in 32, and each takes the bit count modulo its own width.
TEST_F(Gles3FilterTruncate16Test, LargeBitCountsWrapAsTheMachineDoes) {
    EXPECT_EQ(uploaded(31, true), (Uploaded{2147483648.0F, 1073741823.0F}));
    EXPECT_EQ(uploaded(32, true), (Uploaded{4294967296.0F, 0}));
    EXPECT_EQ(uploaded(36, true), (Uploaded{68719476736.0F, 7}));
    EXPECT_EQ(uploaded(63, true), (Uploaded{9223372036854775808.0F, 1073741823.0F}));
    EXPECT_EQ(uploaded(64, true), (Uploaded{1, 0}));
    EXPECT_EQ(uploaded(68, true), (Uploaded{16, 7}));
}

TEST_F(Gles3FilterTruncate16Test, RecordOfAnotherFilterIsRefusedAndNothingIsUploadedOrDrawn) {
    char const* const text = "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()";
    EXPECT_EQ(failureOf([&] { run(SingleFilterParameters()); }), text);
    EXPECT_EQ(failureOf([&] { run(FilterSharpness8Params()); }), text);
    EXPECT_EQ(gl.count("glUniform1f"), 0U);
    EXPECT_EQ(gl.count("glDrawElements"), 0U);
}

TEST_F(Gles3FilterTruncate16Test, RecordDerivedFromItsOwnIsAccepted) {
    struct Named : FilterTruncate16Params {};
    Named params;
    params.shift = 4;
    run(params);
    EXPECT_EQ(gl.draws().back().uniforms.at("a_divisor"), (Uploaded{16}));
}

} // namespace
