#pragma once

#include "conformance/Trial.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace conformance {

/// A filter that makes each output pixel of the input pixel at its place: its layouts, and what it should give.
struct Pointwise {
    Layout in;
    Layout out;
    std::function<reference::Texels(reference::Texels const&)> model;
    /// A picture of noise from the filter's domain: width and height in texels, where the random numbers start.
    std::function<reference::Texels(int, int, std::uint32_t)> noise = nullptr;
};

/// A picture of its noise, or of any bytes where it has none.
reference::Texels noiseFor(Pointwise const& pointwise, int width, int height, std::uint32_t randomStart);

/// A part of a picture and what of it is left out, in pixels of the input; where it lands, in texels of the output.
struct Part {
    int x;
    int y;
    int width;
    int height;
    int clipLeft;
    int clipRight;
    int clipTop;
    int clipBottom;
    size_t toX;
    size_t toY;
};

/// A filter of that name which leaves nothing out: what its taps find beyond a texture is part of the result.
Filter withoutBorders(std::string const& name, size_t inputs);

/// The run of a part of each of the sources, wherever they start.
FilterRun runOf(Part const& part, std::vector<FilterSource> sources);

/// Over the whole of each input.
void expectEach(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                std::vector<reference::Texels> const& inputs, SingleFilterParameters const& params = {});

/// Over each part of the input, in a larger picture that must stay as it is around it.
void expectParts(Trial& trial, Filter const& filter, Pointwise const& pointwise, reference::Texels const& input,
                 std::vector<Part> const& parts, SingleFilterParameters const& params = {});

/// Over strips of noise of two rows and of one pixel per row, as long as the trial's strips.
void expectStrips(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                  SingleFilterParameters const& params = {});

/// Over noise wherever it lies: the strips, and parts of a picture at all kinds of places.
void expectEverywhere(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                      SingleFilterParameters const& params = {});

/// Over all 2^24 colours in a full trial, otherwise over a random sample of 2^18, each made the input by `before`.
void expectColours(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                   SingleFilterParameters const& params = {},
                   std::function<reference::Texels(reference::Texels const&)> const& before = nullptr);

/// A filter of pixels in two texels each, run over targets of one texel per pixel, where clips count texels: an odd one
/// starts in the middle of a pixel, and the halves stay in their columns.
void expectHalvesOfPixels(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                          SingleFilterParameters const& params = {});

} // namespace conformance
