#include "host/display/SampleCodes.h"

#include "host/image/NodataSample.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr std::uint16_t kNothing = 65535;
constexpr size_t kShownBytes = 256;

template <class Sample>
Sample sampleAt(std::uint8_t const* bytes) {
    Sample sample{};
    std::memcpy(&sample, bytes, sizeof sample);
    return sample;
}

// Calls take(pixel, sample) with the band's samples, as they are.
template <class Sample, class Take>
void each(std::uint8_t const* samples, SampleFormat const& layout, size_t band, size_t pixels, Take const& take) {
    samples += band * sizeof(Sample);
    for (size_t i = 0; i < pixels; ++i, samples += layout.bands * sizeof(Sample))
        take(i, sampleAt<Sample>(samples));
}

template <class Sample>
std::uint16_t aboveLeast(Sample sample) {
    return static_cast<std::uint16_t>(static_cast<int>(sample) - int{std::numeric_limits<Sample>::lowest()});
}

template <class Sample>
void number(std::uint8_t const* samples, SampleFormat const& layout, size_t band, size_t pixels, std::uint16_t* codes) {
    each<Sample>(samples, layout, band, pixels, [&](size_t i, Sample sample) { codes[i] = aboveLeast(sample); });
}

// The least value of a type whose samples are numbered.
int leastOf(SampleType type) {
    if (type == SampleType::Signed8) return std::numeric_limits<std::int8_t>::lowest();
    return type == SampleType::Signed16 ? std::numeric_limits<std::int16_t>::lowest() : 0;
}

} // namespace

SampleCodes::SampleCodes(SampleType type, std::optional<double> nodata, Tone const& tone)
    : type_(type), nodata_(nodata ? nodatasample::valueOf(*nodata, type) : std::nullopt), tone_(tone) {}

bool SampleCodes::followTone(SampleType type) {
    return bytesOf(type) > 2;
}

void SampleCodes::encode(std::uint8_t const* samples, SampleFormat const& layout, size_t band, size_t pixels,
                         std::uint16_t* codes) const {
    auto const show = [&](size_t i, auto sample) {
        auto const value = static_cast<double>(sample);
        codes[i] = std::isnan(value) || value == nodata_ ? kNothing : tone_.byteOf(value);
    };
    switch (type_) {
    case SampleType::Unsigned8:
        return number<std::uint8_t>(samples, layout, band, pixels, codes);
    case SampleType::Signed8:
        return number<std::int8_t>(samples, layout, band, pixels, codes);
    case SampleType::Unsigned16:
        return number<std::uint16_t>(samples, layout, band, pixels, codes);
    case SampleType::Signed16:
        return number<std::int16_t>(samples, layout, band, pixels, codes);
    case SampleType::Unsigned32:
        return each<std::uint32_t>(samples, layout, band, pixels, show);
    case SampleType::Signed32:
        return each<std::int32_t>(samples, layout, band, pixels, show);
    case SampleType::Float32:
        return each<float>(samples, layout, band, pixels, show);
    case SampleType::Float64:
        return each<double>(samples, layout, band, pixels, show);
    }
}

std::optional<std::uint8_t> SampleCodes::brightness(std::uint16_t code) const {
    if (followTone(type_)) {
        if (code >= kShownBytes) return std::nullopt;
        return static_cast<std::uint8_t>(code);
    }
    double const sample = int{code} + leastOf(type_);
    if (sample == nodata_) return std::nullopt;
    return tone_.byteOf(sample);
}
