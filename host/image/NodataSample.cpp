#include "host/image/NodataSample.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

template <class Sample>
std::vector<std::uint8_t> bytes(Sample sample) {
    std::vector<std::uint8_t> raw(sizeof sample);
    std::memcpy(raw.data(), &sample, sizeof sample);
    return raw;
}

// Texts of the largest float are often rounded up.
constexpr double kRounded = 1 + 1e-6;

std::optional<std::vector<std::uint8_t>> toFloat(double number) {
    constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
    if (!std::isfinite(number) || std::abs(number) <= kMost) return bytes(static_cast<float>(number));
    if (std::abs(number) > kMost * kRounded) return std::nullopt;
    return bytes(static_cast<float>(std::copysign(kMost, number)));
}

template <class Sample>
std::optional<std::vector<std::uint8_t>> whole(double number) {
    bool const fits = number >= static_cast<double>(std::numeric_limits<Sample>::lowest()) &&
                      number <= static_cast<double>(std::numeric_limits<Sample>::max());
    if (!fits || number != std::floor(number)) return std::nullopt;
    return bytes(static_cast<Sample>(number));
}

} // namespace

std::optional<double> nodatasample::parse(std::string const& text) {
    constexpr auto kBlanks = " \t\r\n";
    size_t const first = text.find_first_not_of(std::string(kBlanks) + "+");
    if (first == std::string::npos) return std::nullopt;
    size_t const end = text.find_last_not_of(std::string(kBlanks) + '\0') + 1;
    if (end <= first) return std::nullopt;
    double number = 0;
    auto const parsed = std::from_chars(text.data() + first, text.data() + end, number);
    if (parsed.ptr != text.data() + end || parsed.ec != std::errc()) return std::nullopt;
    return number;
}

std::optional<std::vector<std::uint8_t>> nodatasample::bytesOf(double number, SampleType type) {
    switch (type) {
    case SampleType::Unsigned8:
        return whole<std::uint8_t>(number);
    case SampleType::Signed8:
        return whole<std::int8_t>(number);
    case SampleType::Unsigned16:
        return whole<std::uint16_t>(number);
    case SampleType::Signed16:
        return whole<std::int16_t>(number);
    case SampleType::Unsigned32:
        return whole<std::uint32_t>(number);
    case SampleType::Signed32:
        return whole<std::int32_t>(number);
    case SampleType::Float32:
        return toFloat(number);
    case SampleType::Float64:
        return bytes(number);
    }
    return std::nullopt;
}

std::optional<double> nodatasample::valueOf(double number, SampleType type) {
    auto const bytes = bytesOf(number, type);
    if (!bytes) return std::nullopt;
    if (type != SampleType::Float32) return number;
    float nearest = 0;
    std::memcpy(&nearest, bytes->data(), sizeof nearest);
    return static_cast<double>(nearest);
}
