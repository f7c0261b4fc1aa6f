#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The samples of picture files, read by each format's library or by a one-page parser, without libvips and without the
/// product's readers: the expected values must not share their mistakes.
namespace filesamples {

struct Samples {
    size_t width = 0;
    size_t height = 0;
    size_t bands = 0;
    std::vector<double> values; ///< interleaved, rows from the top
};

/// One page of a file, from 1. The file's first bytes tell the format. Throws std::runtime_error.
Samples read(std::string const& path, size_t page = 1);

/// The selected bands, from 1, in this order; all if none are named.
Samples withBands(Samples const& samples, std::vector<size_t> const& bands);

/// Samples scaled to 16 bits: `low` becomes 0, `high` 65535, rounded, halves up; clipped beyond; NaN becomes 0. Whole
/// numbers are scaled in integer arithmetic.
Samples scaled(Samples const& samples, double low, double high);

double smallest(Samples const& samples);
double largest(Samples const& samples);

/// Empty if both are equal; else the first difference in words. `tolerance`: largest permitted distance.
std::string difference(Samples const& actual, Samples const& expected, double tolerance = 0);

// The formats. Bytes are those of the whole file.
using Bytes = std::vector<std::uint8_t>;

Samples readPnm(Bytes const& bytes);
Samples readFits(Bytes const& bytes, size_t page);
Samples readBmp(Bytes const& bytes);
Samples readVips(Bytes const& bytes);
Samples readRadiance(Bytes const& bytes);
Samples readGif(Bytes const& bytes, size_t page);
Samples readPng(std::string const& path);
Samples readJpeg(std::string const& path);
Samples readTiff(std::string const& path, size_t page);
Samples readJpeg2000(std::string const& path, bool isCodestream);
Samples readJpegXl(Bytes const& bytes, size_t page);
Samples readWebp(Bytes const& bytes);
Samples readHeif(Bytes const& bytes);

} // namespace filesamples
