#include "reference/LeGall53.h"

#include "reference/Integers.h"

#include <stdexcept>

namespace reference {

namespace {

std::int32_t floorDiv32(std::int32_t numerator, std::int32_t denominator) {
    return static_cast<std::int32_t>(floorDiv(numerator, denominator));
}

std::int32_t mirroredAt(Signal const& signal, std::ptrdiff_t i) {
    return signal[static_cast<size_t>(reflected(i, static_cast<std::ptrdiff_t>(signal.size())))];
}

} // namespace

std::ptrdiff_t reflected(std::ptrdiff_t i, std::ptrdiff_t length) {
    if (length < 2) return 0;
    while (i < 0 || i >= length)
        i = i < 0 ? -i : 2 * (length - 1) - i;
    return i;
}

Bands forward53(Signal const& signal) {
    auto const length = static_cast<std::ptrdiff_t>(signal.size());
    Bands bands;
    for (std::ptrdiff_t n = 0; 2 * n + 1 < length; ++n) {
        std::int32_t const around = mirroredAt(signal, 2 * n) + mirroredAt(signal, 2 * n + 2);
        bands.high.push_back(mirroredAt(signal, 2 * n + 1) - floorDiv32(around, 2));
    }
    for (std::ptrdiff_t n = 0; 2 * n < length; ++n) {
        std::int32_t const around = extendedHigh(bands.high, length, n - 1) + extendedHigh(bands.high, length, n);
        bands.low.push_back(mirroredAt(signal, 2 * n) + floorDiv32(around + 2, 4));
    }
    return bands;
}

Signal inverse53(Bands const& bands) {
    Signal signal(bands.low.size() + bands.high.size());
    auto const length = static_cast<std::ptrdiff_t>(signal.size());
    for (std::ptrdiff_t n = 0; 2 * n < length; ++n) {
        std::int32_t const around = extendedHigh(bands.high, length, n - 1) + extendedHigh(bands.high, length, n);
        auto const k = static_cast<size_t>(n);
        signal[2 * k] = bands.low[k] - floorDiv32(around + 2, 4);
    }
    for (std::ptrdiff_t n = 0; 2 * n + 1 < length; ++n) {
        std::int32_t const around = mirroredAt(signal, 2 * n) + mirroredAt(signal, 2 * n + 2);
        auto const k = static_cast<size_t>(n);
        signal[2 * k + 1] = bands.high[k] + floorDiv32(around, 2);
    }
    return signal;
}

// Mirroring a signal about a sample keeps the parity of positions, so each band's continuation has samples of that band
// only.
std::int32_t extendedLow(Signal const& low, std::ptrdiff_t length, std::ptrdiff_t i) {
    return low[static_cast<size_t>(reflected(2 * i, length) / 2)];
}

std::int32_t extendedHigh(Signal const& high, std::ptrdiff_t length, std::ptrdiff_t i) {
    if (high.empty()) return 0;
    return high[static_cast<size_t>((reflected(2 * i + 1, length) - 1) / 2)];
}

Bands filterWindow(Bands const& bands, std::ptrdiff_t length, std::ptrdiff_t a, size_t m) {
    Bands window;
    for (std::ptrdiff_t n = 0; n < static_cast<std::ptrdiff_t>(m); ++n) {
        window.low.push_back(extendedLow(bands.low, length, a + n));
        window.high.push_back(extendedHigh(bands.high, length, a - 1 + n));
    }
    return window;
}

Signal inverseFilter53(Bands const& window) {
    if (window.low.size() != window.high.size()) throw std::invalid_argument("bands of different lengths");
    size_t const m = window.low.size();
    Signal const& low = window.low;
    Signal const& high = window.high;
    Signal out;
    for (size_t n = 0; n + 2 < m; ++n) {
        std::int32_t const even = low[n] - floorDiv32(high[n] + high[n + 1] + 2, 4);
        std::int32_t const nextEven = low[n + 1] - floorDiv32(high[n + 1] + high[n + 2] + 2, 4);
        out.push_back(even);
        out.push_back(high[n + 1] + floorDiv32(even + nextEven, 2));
    }
    return out;
}

} // namespace reference
