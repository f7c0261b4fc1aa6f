#include "host/image/SampleRange.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr size_t kPartBytes = 4 * 1024 * 1024;
constexpr double kWhite = 65535;

template <class Sample>
void convert(std::uint8_t const* samples, SampleFormat const& layout, std::vector<size_t> const& bands, size_t pixels,
             double* numbers) {
    for (size_t i = 0; i < pixels; ++i, samples += layout.bands * sizeof(Sample))
        for (size_t const band : bands) {
            Sample sample{};
            std::memcpy(&sample, samples + band * sizeof(Sample), sizeof(Sample));
            *numbers++ = static_cast<double>(sample);
        }
}

} // namespace

std::uint16_t SampleRange::scaled(double sample) const {
    double const share = kWhite * (sample - low) / (high - low);
    if (!(share > 0)) return 0;
    if (share >= kWhite) return static_cast<std::uint16_t>(kWhite);
    auto const whole = static_cast<std::uint16_t>(share);
    // Adding 0.5 to `share` would round once more.
    return static_cast<std::uint16_t>(share - whole >= 0.5 ? whole + 1 : whole);
}

void samplerange::toNumbers(std::uint8_t const* samples, SampleFormat const& layout, std::vector<size_t> const& bands,
                            size_t pixels, std::vector<double>& numbers) {
    numbers.resize(pixels * bands.size());
    switch (layout.type) {
    case SampleType::Unsigned8:
        return convert<std::uint8_t>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Signed8:
        return convert<std::int8_t>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Unsigned16:
        return convert<std::uint16_t>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Signed16:
        return convert<std::int16_t>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Unsigned32:
        return convert<std::uint32_t>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Signed32:
        return convert<std::int32_t>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Float32:
        return convert<float>(samples, layout, bands, pixels, numbers.data());
    case SampleType::Float64:
        return convert<double>(samples, layout, bands, pixels, numbers.data());
    }
}

std::optional<SampleRange> samplerange::extremes(SampleSource& source, std::vector<size_t> const& bands,
                                                 InputFile::Check const& check) {
    SampleFormat const& layout = source.facts().layout;
    size_t const rowsAtOnce = std::clamp<size_t>(kPartBytes / layout.rowBytes(), 1, layout.height);
    std::vector<std::uint8_t> samples(rowsAtOnce * layout.rowBytes());
    std::vector<double> numbers;
    SampleRange found{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (size_t y = 0; y < layout.height; y += rowsAtOnce) {
        if (check) check();
        size_t const rows = std::min(rowsAtOnce, layout.height - y);
        source.read({0, y, layout.width, rows}, samples.data());
        toNumbers(samples.data(), layout, bands, rows * layout.width, numbers);
        for (double const number : numbers) {
            if (!std::isfinite(number)) continue;
            found.low = std::min(found.low, number);
            found.high = std::max(found.high, number);
        }
    }
    return found.low <= found.high ? std::optional(found) : std::nullopt;
}

SampleRange samplerange::automatic(SampleRange const& extremes) {
    if (extremes.low < extremes.high) return extremes;
    return {extremes.low, extremes.low + std::max(1.0, std::abs(extremes.low))};
}
