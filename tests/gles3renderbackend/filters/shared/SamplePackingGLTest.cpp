#include "gles3renderbackend/resources/Gles3Shader.h"
#include "shared/GlslSources.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/ShaderFixture.h"
#include "tests/support/PixelMatchers.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Pairs = std::array<float, 4>; // L, H, L, H

char const* const kQuad = "#version 100\n"
                          "uniform highp vec4 a_geometry;\n"
                          "attribute highp vec2 a_position;\n"
                          "void main() {\n"
                          "    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);\n"
                          "}\n";

class PairsShader : public Gles3Shader {
public:
    PairsShader(std::string const& fragmentSource, Filter& filter) : Gles3Shader(kQuad, fragmentSource, filter) {}

    void uploadParameters(SingleFilterParameters const& /*params*/) override {
        glUniform4fv(uniformLocation("a_pairs"), 1, pairs.data());
    }

    Pairs pairs = {};
};

class SamplePackingGLTest : public ::testing::Test {
protected:
    Bytes run(Gles3Shader& shader, DrawCall const& call) {
        shader.draw(call.sources, call.inputW, call.inputH, call.destination, call.clip[0], call.clip[1], call.clip[2],
                    call.clip[3], SingleFilterParameters(), call.offset, *backend_, filter_);
        auto const& target = backend_->target(call.destination);
        Bytes pixels;
        target.getPixels(pixels, 0, 0, target.logicalSize()[0], target.height());
        return pixels;
    }

    Bytes texelOf(std::string const& fragmentSource, Pairs const& pairs) {
        PairsShader shader(fragmentSource, filter_);
        shader.pairs = pairs;
        return run(shader, {{}, 1, 1, backend_.makeTarget(1, 1)});
    }

    Filter filter_ = plainFilter();
    TestInstance backend_;
};

struct Carry {
    char const* what;
    float low;
    float high;
    std::uint8_t expectedLow;
    int expectedHigh;
};

TEST_F(SamplePackingGLTest, CarryNormalisationKeepsTheValueAndBringsTheLowByteIntoRange) {
    for (auto const& row :
         {Carry{"too much is carried", 300, 0, 44, 1}, Carry{"minus one borrows", -1, 0, 255, -1},
          Carry{"half of a high part is 128 low ones", 0, 0.5F, 128, 0}, Carry{"in range stays", 255, 127, 255, 127},
          Carry{"zero", 0, 0, 0, 0}, Carry{"exactly one carry", 256, -1, 0, 0},
          Carry{"three carries", 1023, -4, 255, -1}, Carry{"two borrows", -300, 0, 212, -2},
          Carry{"a negative half", 0, -0.5F, 128, -1}, Carry{"half and carry", 200, 0.5F, 72, 1},
          Carry{"quarters of a high part", 1, 3.25F, 65, 3}, Carry{"a low fraction is cut off", 7.75F, 2, 7, 2},
          Carry{"a negative low fraction borrows", -0.25F, 0, 255, -1}}) {
        // The other pair shows that the two do not mix.
        auto const first = texelOf(glsl::test_overunderflow, {row.low, row.high, 17, 5});
        EXPECT_EQ(first, (Bytes{row.expectedLow, static_cast<std::uint8_t>(row.expectedHigh + 128), 17, 133}))
            << row.what;
        auto const second = texelOf(glsl::test_overunderflow, {17, 5, row.low, row.high});
        EXPECT_EQ(second, (Bytes{17, 133, row.expectedLow, static_cast<std::uint8_t>(row.expectedHigh + 128)}))
            << row.what;
    }
}

TEST_F(SamplePackingGLTest, EncodingWritesTwosComplementBytes) {
    struct Row {
        char const* what;
        int value;
        Bytes bytes;
    };
    for (auto const& row :
         {Row{"minus one packs to 255, 255", -1, {255, 255}}, Row{"minus 256 packs to 0, 255", -256, {0, 255}},
          Row{"32767 packs to 255, 127", 32767, {255, 127}}, Row{"zero packs to 0, 0", 0, {0, 0}},
          Row{"minus 32768 packs to 0, 128", -32768, {0, 128}}, Row{"255 packs to 255, 0", 255, {255, 0}},
          Row{"256 packs to 0, 1", 256, {0, 1}}, Row{"minus 255 packs to 1, 255", -255, {1, 255}},
          Row{"65535 packs to 255, 255", 65535, {255, 255}}, Row{"modulo 2^16 from -65536 on", -65536, {0, 0}},
          Row{"minus 49151 is 16385", -49151, {1, 64}}, Row{"minus 32769 is 32767", -32769, {255, 127}},
          Row{"below that the high byte stays at 0", -65537, {255, 0}},
          Row{"beyond 65535 it stays at 255", 65536 + 7, {7, 255}}}) {
        auto const low = ((row.value % 256) + 256) % 256;
        auto const high = (row.value - low) / 256;
        auto const texel = texelOf(glsl::test_packPairs, {static_cast<float>(low), static_cast<float>(high), 1, -2});
        EXPECT_EQ(texel, (Bytes{row.bytes[0], row.bytes[1], 1, 254})) << row.what;
        auto const swapped = texelOf(glsl::test_packPairs, {1, -2, static_cast<float>(low), static_cast<float>(high)});
        EXPECT_EQ(swapped, (Bytes{1, 254, row.bytes[0], row.bytes[1]})) << row.what;
    }
}

TEST_F(SamplePackingGLTest, DecodingTakesHighBytesAsTwosComplement) {
    Bytes source;
    Bytes expected; // 32768 more: 0 stands for -32768
    for (size_t value = 0; value < 65536; ++value) {
        auto const low = static_cast<std::uint8_t>(value % 256);
        auto const high = static_cast<std::uint8_t>(value / 256);
        source.insert(source.end(), {low, high, 1, 128}); // the second is -32767
        expected.insert(expected.end(), {low, static_cast<std::uint8_t>(high ^ 128U), 1, 0});
    }
    auto const input = backend_.makeTarget(256, 256);
    backend_->target(input).setPixels(source, {256, 256, 4});
    Gles3Shader shader(glsl::test_Gles3FilterYCoCg16ToRGB16, glsl::test_samplePair, filter_);
    auto const pixels = run(shader, {{{input, 0, 0, true}}, 256, 256, backend_.makeTarget(256, 256)});
    EXPECT_TRUE(pixelsEqual(pixels, expected, 256));
}

Bytes parities(size_t columns, size_t rows, size_t first) {
    Bytes expected;
    for (size_t i = 0; i < columns * rows; ++i)
        expected.insert(expected.end(), 4, (i % columns + first) % 2 == 0 ? 0 : 255);
    return expected;
}

// Column 1024 is where 16-bit floats lose the halves, 4096 where they lose the parity twice over.
TEST_F(SamplePackingGLTest, ParityHoldsBeyondColumns1024And4096) {
    Gles3Shader shader(kQuad, glsl::test_columnParity, filter_);
    EXPECT_TRUE(pixelsEqual(run(shader, {{}, 5001, 2, backend_.makeTarget(5001, 2)}), parities(5001, 2, 0), 5001));
}

TEST_F(SamplePackingGLTest, AnOddFirstColumnSwapsTheParity) {
    Gles3Shader shader(kQuad, glsl::test_columnParity, filter_);
    for (size_t const clip : {1U, 2U, 1025U, 4097U}) {
        auto const destination = backend_.makeTarget(70, 2);
        DrawCall const call{{}, 70 + clip, 2, destination, {clip, 0, 0, 0}};
        EXPECT_TRUE(pixelsEqual(run(shader, call), parities(70, 2, clip), 70)) << clip;
    }
}

TEST_F(SamplePackingGLTest, RowParityFollowsTheFirstRow) {
    Gles3Shader shader(kQuad, glsl::test_rowParity, filter_);
    for (size_t const clip : {0U, 1U, 2U, 1025U}) {
        auto const destination = backend_.makeTarget(2, 1500);
        auto const pixels = run(shader, {{}, 2, 1500 + clip, destination, {0, 0, clip, 0}});
        Bytes expected;
        for (size_t y = 0; y < 1500; ++y)
            expected.insert(expected.end(), 8, (y + clip) % 2 == 0 ? 0 : 255);
        EXPECT_TRUE(pixelsEqual(pixels, expected, 2)) << clip;
    }
}

// Every value of a channel, once in each of the three: all pass unchanged, alpha 255.
TEST_F(SamplePackingGLTest, APixelOfThreeChannelsIsTakenApartAndPutTogether) {
    constexpr size_t kWidth = 256;
    constexpr size_t kHeight = 256;
    Bytes source;
    Bytes expected;
    for (size_t i = 0; i < kWidth * kHeight; ++i) {
        auto const c0 = i;
        auto const c1 = 65535 - i;
        auto const c2 = (i * 257 + 12345) % 65536;
        auto const byte = [](size_t value) { return static_cast<std::uint8_t>(value & 255U); };
        for (auto* const list : {&source, &expected}) {
            std::uint8_t const alpha = list == &expected ? 255 : byte(i);
            list->insert(list->end(), {byte(c0), byte(c0 >> 8U), byte(c1), alpha});
            list->insert(list->end(), {byte(c1 >> 8U), byte(c2), byte(c2 >> 8U), alpha});
        }
    }
    auto const input = backend_.makeTarget(kWidth, kHeight, 64);
    backend_->target(input).setPixels(source, {2 * kWidth, kHeight, 4});
    Gles3Shader shader(glsl::test_Gles3FilterYCoCg16ToRGB16, glsl::test_pixelInTwoTexels, filter_);
    auto const destination = backend_.makeTarget(kWidth, kHeight, 64);
    auto const pixels = run(shader, {{{input, 0, 0, false}}, kWidth, kHeight, destination});
    EXPECT_TRUE(pixelsEqual(pixels, expected, 2 * kWidth));
}

} // namespace
