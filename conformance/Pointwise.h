#pragma once

#include "conformance/Trial.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace conformance {

/// A pointwise filter, whose output pixel depends on the input pixel at the same place alone: its layouts and its
/// model.
struct Pointwise {
    Layout in;
    Layout out;
    std::function<reference::Texels(reference::Texels const&)> model;
    /// A picture of noise from the filter's domain: width and height in texels, and the start of its random numbers.
    std::function<reference::Texels(int, int, std::uint32_t)> noise = nullptr;
};

/// A picture of the filter's noise, or of random bytes if it has none.
reference::Texels noiseFor(Pointwise const& pointwise, int width, int height, std::uint32_t randomStart);

/// A part of a picture and its clips, in pixels of the input; its destination, in texels of the output.
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

/// The filter of that name without borders: the result of taps beyond a texture is compared too.
Filter withoutBorders(std::string const& name, size_t inputs);

/// The run of a part of each of the sources, wherever they start.
FilterRun runOf(Part const& part, std::vector<FilterSource> sources);

/// Compares runs over the whole of each input.
void expectEach(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                std::vector<reference::Texels> const& inputs, SingleFilterParameters const& params = {});

/// Compares runs over each part of the input, in a larger picture whose other pixels must stay.
void expectParts(Trial& trial, Filter const& filter, Pointwise const& pointwise, reference::Texels const& input,
                 std::vector<Part> const& parts, SingleFilterParameters const& params = {});

/// Compares runs over strips of noise, two rows high or one pixel wide, as long as the trial's strips.
void expectStrips(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                  SingleFilterParameters const& params = {});

/// Compares runs over noise everywhere: the strips, and parts of a picture at all kinds of places.
void expectEverywhere(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                      SingleFilterParameters const& params = {});

/// Compares runs over all 2^24 colours in a full trial, else over a random sample of 2^18, each converted by `before`.
void expectColours(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                   SingleFilterParameters const& params = {},
                   std::function<reference::Texels(reference::Texels const&)> const& before = nullptr);

/// For a filter of pixels in two texels each, run over targets of one texel per pixel, whose clips count texels: an odd
/// clip starts in the middle of a pixel, and the halves stay in their columns.
void expectHalvesOfPixels(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                          SingleFilterParameters const& params = {});

} // namespace conformance
