// Unsharp masks.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Sharpness16.h"
#include "reference/Sharpness8.h"
#include "renderbackend/FilterParameters.h"

namespace conformance {

namespace {

using reference::packThreeChannel16;
using reference::Planes3;
using reference::Texels;

// Differences too small for a clamp to hide a wrong rounding.
Texels gentleSlopes() {
    Texels image = randomTexels(41, 29, 2);
    for (auto& byte : image.bytes)
        byte = static_cast<std::uint8_t>(120 + byte % 17);
    return image;
}

void expectSharpness8(Trial& trial, Filter const& filter, Texels const& image, double gain) {
    FilterSharpness8Params params;
    params.gain = gain;
    Texels const whole = reference::sharpness8(image, gain, 0);
    trial.expect(filter, {trial.runner().uploaded(image, Layout::kRgba8)},
                 reference::cropped(whole, 2, 2, image.width - 4, image.height - 4), Layout::kRgba8, params);
}

// A part at odd places; borders and clips come off it.
void expectSharpness8Part(Trial& trial, Filter const& filter) {
    constexpr double kGain = 1.25;
    FilterSharpness8Params params;
    params.gain = kGain;
    Texels const image = randomTexels(31, 23, 8);
    FilterRun run;
    run.sources = {{trial.runner().uploaded(image, Layout::kRgba8), 5, 3, false}};
    run.width = 20;
    run.height = 14;
    run.clipLeft = 1;
    run.clipBottom = 2;
    run.offset = {7, 5};
    Texels const kept = reference::cropped(reference::sharpness8(image, kGain, 0), 5 + 2 + 1, 3 + 2, 15, 8);
    trial.expectWithin(filter, run, kept, Layout::kRgba8, params);
}

void expectSharpnessH16(Trial& trial, Filter const& filter, Planes3 const& pixels) {
    // Two pixels at each end, four texels, are borders.
    Texels const whole = reference::sharpnessH16(packThreeChannel16(pixels));
    trial.expect(filter, {trial.runner().uploaded(pixels)},
                 reference::cropped(whole, 4, 0, whole.width - 8, whole.height), Layout::kThreeChannel16);
}

void expectSharpnessH16Part(Trial& trial, Filter const& filter) {
    Planes3 const pixels = randomPlanes(31, 13, 9, -50, 1100);
    FilterRun run;
    run.sources = {{trial.runner().uploaded(pixels), 5, 3, false}};
    run.width = 20;
    run.height = 9;
    run.clipLeft = 1;
    run.clipTop = 2;
    run.offset = {6, 5};
    Texels const whole = reference::sharpnessH16(packThreeChannel16(pixels));
    trial.expectWithin(filter, run, reference::cropped(whole, 2 * (5 + 2 + 1), 3 + 2, 2 * 15, 7),
                       Layout::kThreeChannel16);
}

void expectSharpnessV16(Trial& trial, Filter const& filter, Texels const& source, Texels const& blurred, double gain) {
    FilterSharpness16Params params;
    params.gain = gain;
    Texels const whole = reference::sharpnessV16(source, blurred, gain, 0);
    FilterRunner& runner = trial.runner();
    trial.expect(filter,
                 {runner.uploaded(source, Layout::kThreeChannel16), runner.uploaded(blurred, Layout::kThreeChannel16)},
                 reference::cropped(whole, 0, 2, whole.width, whole.height - 4), Layout::kThreeChannel16, params);
}

// Source and blur lie at different places of textures of different sizes.
void expectSharpnessV16Part(Trial& trial, Filter const& filter) {
    constexpr double kGain = 2.0;
    constexpr int kWidth = 15;
    constexpr int kHeight = 13;
    FilterSharpness16Params params;
    params.gain = kGain;
    Texels const source = packThreeChannel16(randomPlanes(29, 17, 20, -100, 1100));
    Texels const blurred = randomTexels(2 * 25, 19, 21);
    FilterRunner& runner = trial.runner();
    FilterRun run;
    run.sources = {{runner.uploaded(source, Layout::kThreeChannel16), 5, 1, false},
                   {runner.uploaded(blurred, Layout::kThreeChannel16), 3, 4, false}};
    run.width = kWidth;
    run.height = kHeight;
    run.clipLeft = 1;
    run.clipTop = 2;
    run.offset = {4, 5};
    Texels const whole = reference::sharpnessV16(reference::cropped(source, 2 * 5, 1, 2 * kWidth, kHeight),
                                                 reference::cropped(blurred, 2 * 3, 4, 2 * kWidth, kHeight), kGain, 0);
    trial.expectWithin(filter, run, reference::cropped(whole, 2 * 1, 2 + 2, 2 * (kWidth - 1), kHeight - 2 - 2 - 2),
                       Layout::kThreeChannel16, params);
}

} // namespace

void checkSharpness8(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpness8());
    Texels const noise = randomTexels(253, 137, 1);
    for (double const gain :
         {0.0, 0.04, 0.25, 1.0, 1.7, 3.96875, 7.0, 25.3, 700.0, 6e7, -0.04, -0.5, -1.0, -31.0, -6e7})
        expectSharpness8(trial, filter, noise, gain);
    for (int steps = -40; steps <= 40; ++steps)
        expectSharpness8(trial, filter, gentleSlopes(), steps / 32.0);
    // Five rows or columns give one.
    for (int const length : trial.stripLengths()) {
        expectSharpness8(trial, filter, randomTexels(length, 5, 3), 1.0);
        expectSharpness8(trial, filter, randomTexels(5, length, 4), 1.0);
    }
    expectSharpness8Part(trial, filter);
    for (std::uint32_t i = 0; trial.full() && i < 64; ++i)
        expectSharpness8(trial, filter, randomTexels(512, 512, 100 + i), 0.125 * i);
}

void checkSharpnessH16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpnessH16());
    std::vector<Planes3> pictures = {everySampleOfChannel(0, 3), everySampleOfChannel(1, 4), everySampleOfChannel(2, 5),
                                     randomPlanes(61, 33, 4, 0, 1023), boundaryTriples()};
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        pictures.push_back(randomPlanes(512, 256, 100 + 3 * i, -200, 1300));
    for (int const length : trial.stripLengths()) {
        pictures.push_back(randomPlanes(length / 2, 1, 10, -50, 1100));
        pictures.push_back(randomPlanes(5, length, 11, -50, 1100));
    }
    for (Planes3 const& pixels : pictures)
        expectSharpnessH16(trial, filter, pixels);
    expectSharpnessH16Part(trial, filter);
}

void checkSharpnessV16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpnessV16());
    Texels const source = packThreeChannel16(randomPlanes(133, 81, 1, -100, 1100));
    Texels const anyBlur = randomTexels(2 * 133, 81, 2);
    for (double const gain : {0.0, 1.0, 2.0, 3.0, 7.0, 16.0, 31.0, -1.0, -2.0, -15.0, -31.0})
        expectSharpnessV16(trial, filter, source, anyBlur, gain);
    // A blur near the source leaves small differences, where the rounding shows.
    Texels const flat = packThreeChannel16(randomPlanes(48, 24, 3, 500, 503));
    Texels const nearBlur = packThreeChannel16(randomPlanes(48, 24, 4, 64 * 500 - 20, 64 * 500 + 220));
    for (double const gain : {1.0, 2.0, 5.0, -1.0, -4.0})
        expectSharpnessV16(trial, filter, flat, nearBlur, gain);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        expectSharpnessV16(trial, filter, packThreeChannel16(everySampleOfChannel(channel, 6)),
                           randomTexels(512, 256, 5), 1.0);
        expectSharpnessV16(trial, filter, packThreeChannel16(randomPlanes(256, 256, 7, 0, 1023)),
                           packThreeChannel16(everySampleOfChannel(channel, 8)), 3.0);
    }
    for (int const length : trial.stripLengths()) {
        expectSharpnessV16(trial, filter, packThreeChannel16(randomPlanes(length / 2, 5, 12, -50, 1100)),
                           randomTexels(length, 5, 13), 2.0);
        expectSharpnessV16(trial, filter, packThreeChannel16(randomPlanes(1, length, 14, -50, 1100)),
                           randomTexels(2, length, 15), 2.0);
    }
    expectSharpnessV16Part(trial, filter);
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        expectSharpnessV16(trial, filter, packThreeChannel16(randomPlanes(256, 256, 900 + 3 * i, 0, 1023)),
                           randomTexels(512, 256, 700 + i), static_cast<double>(i) - 15.0);
}

} // namespace conformance
