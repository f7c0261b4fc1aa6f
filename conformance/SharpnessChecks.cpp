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

void expectSharpnessV16(Trial& trial, Filter const& filter, Texels const& source, Texels const& blurred, double gain) {
    FilterSharpness16Params params;
    params.gain = gain;
    Texels const whole = reference::sharpnessV16(source, blurred, gain, 0);
    FilterRunner& runner = trial.runner();
    trial.expect(filter,
                 {runner.uploaded(source, Layout::kThreeChannel16), runner.uploaded(blurred, Layout::kThreeChannel16)},
                 reference::cropped(whole, 0, 2, whole.width, whole.height - 4), Layout::kThreeChannel16, params);
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
    for (std::uint32_t i = 0; trial.full() && i < 64; ++i)
        expectSharpness8(trial, filter, randomTexels(512, 512, 100 + i), 0.125 * i);
}

void checkSharpnessH16(Trial& trial) {
    Filter const filter = trial.prepared(description::filterSharpnessH16());
    std::vector<Planes3> pictures = {everySampleOfChannel(0, 3), everySampleOfChannel(1, 4), everySampleOfChannel(2, 5),
                                     randomPlanes(61, 33, 4, 0, 1023), boundaryTriples()};
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        pictures.push_back(randomPlanes(512, 256, 100 + 3 * i, -200, 1300));
    for (Planes3 const& pixels : pictures) {
        // Two pixels at each end, four texels, are borders.
        Texels const whole = reference::sharpnessH16(packThreeChannel16(pixels));
        trial.expect(filter, {trial.runner().uploaded(pixels)},
                     reference::cropped(whole, 4, 0, whole.width - 8, whole.height), Layout::kThreeChannel16);
    }
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
    for (std::uint32_t i = 0; trial.full() && i < 32; ++i)
        expectSharpnessV16(trial, filter, packThreeChannel16(randomPlanes(256, 256, 900 + 3 * i, 0, 1023)),
                           randomTexels(512, 256, 700 + i), static_cast<double>(i) - 15.0);
}

} // namespace conformance
