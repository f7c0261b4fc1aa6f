#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The samples of picture files, read by the library of each format or by a parser of a page, without libvips and
/// without anything of what reads files in the product: what a test compares with must not make the same mistakes.
namespace filesamples {

struct Samples {
    size_t width = 0;
    size_t height = 0;
    size_t bands = 0;
    std::vector<double> values; ///< interleaved, rows from the top
};

/// One page of a file, from 1. The format is told from the file's first bytes. Throws std::runtime_error.
Samples read(std::string const& path, size_t page = 1);

/// Bands of it, from 1, in this order; all where none are named.
Samples withBands(Samples const& samples, std::vector<size_t> const& bands);

/// 16 bits of each sample: `low` becomes 0, `high` 65535, rounded, halves up; clipped beyond; what is no number is 0.
/// Of whole numbers in whole numbers.
Samples scaled(Samples const& samples, double low, double high);

double smallest(Samples const& samples);
double largest(Samples const& samples);

/// Empty where both are the same; else the first difference in words. `tolerance`: the distance that is none.
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
