#pragma once

#include "host/display/Tone.h"
#include "host/image/SampleSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Samples of any type as 16-bit codes, which the GPU looks up in a table.
///
///     8 and 16 bits      the sample less the type's least value: every sample has a code of its own, whatever the tone
///     32 bits, floats    the byte that the tone makes of it; 65535 if it is nodata or not a number
class SampleCodes {
public:
    static constexpr size_t kCodes = 65536;

    SampleCodes(SampleType type, std::optional<double> nodata, Tone const& tone);

    /// Whether codes are those of one tone.
    static bool followTone(SampleType type);

    /// The codes of one band of pixels that the layout describes.
    void encode(std::uint8_t const* samples, SampleFormat const& layout, size_t band, size_t pixels,
                std::uint16_t* codes) const;

    /// The brightness that a code shows; empty: nothing is there.
    std::optional<std::uint8_t> brightness(std::uint16_t code) const;

private:
    SampleType type_;
    std::optional<double> nodata_;
    Tone tone_;
};
