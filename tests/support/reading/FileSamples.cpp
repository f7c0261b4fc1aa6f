#include "tests/support/reading/FileSamples.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

using filesamples::Bytes;
using filesamples::Samples;

namespace {

Bytes bytesOf(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no file " + path);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool isWhole(double value) {
    return std::abs(value) < 4e9 && value == std::floor(value);
}

// In integer arithmetic.
double scaledWhole(std::int64_t value, std::int64_t low, std::int64_t high) {
    if (value <= low) return 0;
    if (value >= high) return 65535;
    std::int64_t const span = high - low;
    std::int64_t const nearest = (2 * 65535 * (value - low) + span) / (2 * span);
    return static_cast<double>(nearest);
}

double scaledReal(double value, double low, double high) {
    if (std::isnan(value)) return 0;
    long double const share = 65535 * (static_cast<long double>(value) - static_cast<long double>(low)) /
                              (static_cast<long double>(high) - static_cast<long double>(low));
    return static_cast<double>(std::floor(std::clamp(share, 0.0L, 65535.0L) + 0.5L));
}

template <class Better>
double extreme(Samples const& samples, double start, Better better) {
    double found = start;
    for (double const value : samples.values)
        if (std::isfinite(value) && better(value, found)) found = value;
    return found;
}

} // namespace

Samples filesamples::read(std::string const& path, size_t page) {
    Bytes const bytes = bytesOf(path);
    std::string const start(bytes.begin(),
                            bytes.begin() + static_cast<std::ptrdiff_t>(std::min<size_t>(bytes.size(), 16)));
    auto const isStart = [&](std::string const& magic, size_t at = 0) {
        return start.compare(at, magic.size(), magic) == 0;
    };
    if (isStart("SIMPLE  =")) return readFits(bytes, page);
    if (isStart("BM")) return readBmp(bytes);
    if (isStart("\xb6\xa6\xf2\x08")) return readVips(bytes);
    if (isStart("#?RADIANCE")) return readRadiance(bytes);
    if (isStart("GIF8")) return readGif(bytes, page);
    if (isStart("\x89PNG")) return readPng(path);
    if (isStart("\xff\xd8")) return readJpeg(path);
    if (isStart("II") || isStart("MM")) return readTiff(path, page);
    if (isStart("jP  ", 4)) return readJpeg2000(path, false);
    if (isStart("\xff\x4f\xff\x51")) return readJpeg2000(path, true);
    if (isStart("\xff\x0a") || isStart("JXL ", 4)) return readJpegXl(bytes, page);
    if (isStart("RIFF")) return readWebp(bytes);
    if (isStart("ftyp", 4)) return readHeif(bytes);
    if (isStart("P")) return readPnm(bytes);
    throw std::runtime_error("no reader for " + path);
}

Samples filesamples::withBands(Samples const& samples, std::vector<size_t> const& bands) {
    if (bands.empty()) return samples;
    Samples chosen{samples.width, samples.height, bands.size(), {}};
    for (size_t pixel = 0; pixel < samples.width * samples.height; ++pixel)
        for (size_t const band : bands)
            chosen.values.push_back(samples.values.at(pixel * samples.bands + band - 1));
    return chosen;
}

Samples filesamples::scaled(Samples const& samples, double low, double high) {
    Samples made = samples;
    for (double& value : made.values) {
        bool const whole = isWhole(value) && isWhole(low) && isWhole(high);
        value = whole ? scaledWhole(static_cast<std::int64_t>(value), static_cast<std::int64_t>(low),
                                    static_cast<std::int64_t>(high))
                      : scaledReal(value, low, high);
    }
    return made;
}

double filesamples::smallest(Samples const& samples) {
    return extreme(samples, std::numeric_limits<double>::infinity(), [](double a, double b) { return a < b; });
}

double filesamples::largest(Samples const& samples) {
    return extreme(samples, -std::numeric_limits<double>::infinity(), [](double a, double b) { return a > b; });
}

std::string filesamples::difference(Samples const& actual, Samples const& expected, double tolerance) {
    auto const size = [](Samples const& samples) {
        return std::to_string(samples.width) + " x " + std::to_string(samples.height) + " pixels of " +
               std::to_string(samples.bands) + " bands";
    };
    if (size(actual) != size(expected)) return size(actual) + " instead of " + size(expected);
    if (actual.values.size() != expected.values.size()) return "another number of samples";
    for (size_t i = 0; i < actual.values.size(); ++i) {
        if (std::abs(actual.values[i] - expected.values[i]) <= tolerance) continue;
        size_t const pixel = i / actual.bands;
        return "band " + std::to_string(i % actual.bands) + " at " + std::to_string(pixel % actual.width) + "," +
               std::to_string(pixel / actual.width) + ": " + std::to_string(actual.values[i]) + " instead of " +
               std::to_string(expected.values[i]);
    }
    return "";
}
