#pragma once

#include "conformance/Trial.h"

#include <cstdint>
#include <functional>
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

/// Over the whole of each input.
void expectEach(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                std::vector<reference::Texels> const& inputs, SingleFilterParameters const& params = {});

/// Over noise wherever it lies: strips of one row and of one pixel per row that are as long as the trial's strips, and
/// a part of a picture that lands at another place of a larger one, clipped.
void expectEverywhere(Trial& trial, Filter const& filter, Pointwise const& pointwise,
                      SingleFilterParameters const& params = {});

} // namespace conformance
