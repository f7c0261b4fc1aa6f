// Colour matrices on 8-bit and on 16-bit pixels.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/ColourMatrix.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <random>
#include <vector>

namespace conformance {

namespace {

using reference::Matrix3;
using reference::packThreeChannel16;
using reference::Planes3;
using reference::Texels;

constexpr Matrix3 kIdentity = {1024, 0, 0, 0, 1024, 0, 0, 0, 1024};
constexpr Matrix3 kWarm = {1300, 20, -60, -200, 1050, 90, -76, -46, 994};
// Coefficients that do not fit in 11 bits.
constexpr Matrix3 kStrong = {4097, -2051, 0, -3073, 3077, 7, 3, -2, 1023};
// Halves of these coefficients are not whole.
constexpr Matrix3 kOdd = {1024, 3, -3, 200, 1023, 0, 1, -15, 1200};
// Coefficients that keep every sum of three samples within 16384.
constexpr Matrix3 kSmall = {170, -1, 100, -171, 255, -200, 150, 256, 211};

struct Product {
    Matrix3 matrix;
    double strength;
};

Filter3x3MatrixParams paramsOf(Product const& product) {
    Filter3x3MatrixParams params;
    params.matrix = product.matrix;
    params.scale = product.strength;
    return params;
}

Matrix3 randomMatrix(std::mt19937& random, std::int32_t range) {
    Matrix3 matrix{};
    for (auto& coefficient : matrix)
        coefficient = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(2 * range + 1)) - range;
    return matrix;
}

Pointwise by8(Product const& product) {
    return {Layout::kRgba8, Layout::kRgba8,
            [=](Texels const& image) { return reference::matrix8(image, product.matrix, product.strength); }};
}

void expect8(Trial& trial, Filter const& filter, Texels const& image, Product const& product) {
    expectEach(trial, filter, by8(product), {image}, paramsOf(product));
}

void expectThorough8(Trial& trial, Filter const& filter) {
    for (Product const& product : {Product{kIdentity, 1.0}, {kWarm, 0.37}, {kOdd, 0.5}})
        expect8(trial, filter, randomColours(3), product);
    // Odd colours at half strength give exact halves, which every implementation rounds up.
    expect8(trial, filter, randomColours(5), {{512, 0, 0, 0, 512, 0, 0, 0, 512}, 1.0});
    expect8(trial, filter, randomColours(6), {{512, 512, -512, 256, -256, 1536, 768, 256, 512}, 1.0});
    // Sums that are clamped.
    expect8(trial, filter, randomColours(7), {{-1024, 0, 2048, 0, 3000, 2048, 1024, -5000, 2048}, 1.0});
    std::mt19937 random(8);
    for (int i = 0; i < 24; ++i) {
        Matrix3 const matrix = randomMatrix(random, i % 2 == 0 ? 1200 : 20000);
        for (double const strength : {1.0, -0.77})
            expect8(trial, filter, randomTexels(64, 48, 9), {matrix, strength});
    }
    expectEach(trial, filter, by8({kIdentity, 1.0}), {randomTexels(16, 16, 2)}, Filter3x3MatrixParams());
    for (Product const& product : {Product{kWarm, 1.0}, {kIdentity, 0.5}})
        expectColours(trial, filter, by8(product), paramsOf(product));
}

void check3x3Matrix8(Trial& trial) {
    Filter const filter = trial.prepared(description::filter3x3Matrix8());
    for (Matrix3 const& matrix : {kWarm, kStrong})
        expect8(trial, filter, randomColours(1), {matrix, 1.0});
    expectEverywhere(trial, filter, by8({kWarm, 1.0}), paramsOf({kWarm, 1.0}));
    if (trial.thorough()) expectThorough8(trial, filter);
}

Pointwise by16(Product const& product) {
    return {Layout::kThreeChannel16, Layout::kThreeChannel16,
            [=](Texels const& texels) { return reference::matrix16(texels, product.matrix, product.strength); },
            [](int width, int height, std::uint32_t randomStart) {
                return packThreeChannel16(randomPlanes(width / 2, height, randomStart, -8192, 8191));
            }};
}

void expect16(Trial& trial, Filter const& filter, Planes3 const& pixels, Product const& product) {
    expectEach(trial, filter, by16(product), {packThreeChannel16(pixels)}, paramsOf(product));
}

// Each sample with small matrices of either sign, and the remainders of the division on both sides of zero.
void expectEverySample16(Trial& trial, Filter const& filter) {
    for (Matrix3 const& matrix : {kIdentity, kSmall, Matrix3{-512, 0, 1, 0, 511, 0, 0, 1, -510},
                                  Matrix3{1, 2, 3, 4, 5, 6, 7, 8, 9}, Matrix3{-1, -1, -1, -1, -1, -1, -1, -1, -1}})
        expect16(trial, filter, everySampleThrice(), {matrix, 1.0});
    for (size_t channel = 0; channel < 3; ++channel)
        expect16(trial, filter, everySampleOfChannel(channel, 1), {kIdentity, 1.0});
    for (std::int32_t const coefficient : {1, -1, 3, 513, -511})
        expect16(trial, filter, everySampleOfChannel(0, 5), {{coefficient, 0, 0, 0, 1, 0, 0, 0, 1}, 1.0});
}

void expectBoundaries16(Trial& trial, Filter const& filter) {
    expectEach(trial, filter, by16({kIdentity, 1.0}), {packThreeChannel16(boundaryTriples())}, Filter3x3MatrixParams());
    for (Matrix3 const& matrix : {kSmall, Matrix3{341, -300, 0, -341, 700, 340, 341, 20, -683}})
        expect16(trial, filter, boundaryTriples(), {matrix, 1.0});
    // Rows whose magnitudes add up to 65535, on samples of all 16 bits. Most results do not fit 16 bits: they are
    // modulo 2^16 from -65536 to 65535, and clamped beyond.
    for (Matrix3 const& matrix : {Matrix3{21845, 65535, -1, 21845, 0, 65533, 21845, 0, 1},
                                  {-21845, 0, -32768, -21845, -65535, -32767, -21845, 0, 0},
                                  {65535, -40000, 1024, 0, 20000, -1024, 0, -5535, 63487}}) {
        expect16(trial, filter, everySampleThrice(), {matrix, 1.0});
        expect16(trial, filter, boundaryTriples(), {matrix, 1.0});
    }
}

// Coefficients up to 8191 with the largest samples that the result allows.
void expectRandomMatrices16(Trial& trial, Filter const& filter) {
    std::mt19937 random(4);
    std::uint32_t randomStart = 400;
    for (std::int32_t const range : {255, 256, 700, 2047, 4096, 8191}) {
        std::int32_t const samples = std::min(32767, 16383 * 1024 / (3 * range));
        for (int i = 0; i < 3; ++i)
            expect16(trial, filter, randomPlanes(96, 32, randomStart++, -samples, samples),
                     {randomMatrix(random, range), 1.0});
    }
}

void expectThorough16(Trial& trial, Filter const& filter) {
    expectEverySample16(trial, filter);
    expectBoundaries16(trial, filter);
    expectRandomMatrices16(trial, filter);
    for (double const strength : {1.0, 0.37, -1.0})
        expect16(trial, filter, randomPlanes(250, 120, 3, -8192, 8191), {kWarm, strength});
    expect16(trial, filter, randomPlanes(40, 20, 6, -9000, 9000), {kOdd, 0.5});
    expect16(trial, filter, randomPlanes(40, 20, 6, -9000, 9000), {kIdentity, 0.5});
    // Random bytes in the unused places.
    Product const any = {{100, 20, -30, 40, 150, 60, -70, 80, 200}, 1.0};
    expectEach(trial, filter, by16(any), {randomTexels(64, 12, 7)}, paramsOf(any));
    expectHalvesOfPixels(trial, filter, by16({kWarm, 1.0}), paramsOf({kWarm, 1.0}));
    std::uint32_t const rounds = trial.full() ? 64 : 2;
    for (std::uint32_t i = 0; i < rounds; ++i) {
        expect16(trial, filter, randomPlanes(256, 256, 3 * i, -8192, 8191), {kWarm, 1.0});
        expect16(trial, filter, randomPlanes(256, 256, 500 + 3 * i, -8192, 8191), {kWarm, -0.37});
    }
}

void check3x3Matrix16(Trial& trial) {
    Filter const filter = trial.prepared(description::filter3x3Matrix16());
    expect16(trial, filter, randomPlanes(128, 64, 1, -9000, 9000), {kWarm, 1.0});
    expect16(trial, filter, randomPlanes(128, 64, 2, -2, 2), {kStrong, 1.0});
    expectEverywhere(trial, filter, by16({kWarm, 1.0}), paramsOf({kWarm, 1.0}));
    if (trial.thorough()) expectThorough16(trial, filter);
}

} // namespace

Checks matrixChecks() {
    return {{"Filter3x3Matrix8", check3x3Matrix8}, {"Filter3x3Matrix16", check3x3Matrix16}};
}

} // namespace conformance
