#include "renderbackend/FilterParameters.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace {

std::string exactKey(double gamma, std::uint64_t blackPoint, std::uint64_t whitePoint) {
    std::uint64_t gammaBits = 0;
    static_assert(sizeof gammaBits == sizeof gamma);
    std::memcpy(&gammaBits, &gamma, sizeof gamma);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%016" PRIx64 ":%" PRIu64 ":%" PRIu64, gammaBits, blackPoint, whitePoint);
    return text.data();
}

} // namespace

SingleFilterParameters::~SingleFilterParameters() = default;

GammaTableParams::GammaTableParams(std::string key, double gamma_, std::uint64_t blackPoint_, std::uint64_t whitePoint_)
    : ComparableSingleFilterParameters<std::string>(std::move(key)),
      gamma(gamma_),
      blackPoint(blackPoint_),
      whitePoint(whitePoint_) {}

GammaTableParams::GammaTableParams(double gamma_, std::uint64_t blackPoint_, std::uint64_t whitePoint_)
    : GammaTableParams(exactKey(gamma_, blackPoint_, whitePoint_), gamma_, blackPoint_, whitePoint_) {}
