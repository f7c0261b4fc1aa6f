#include "reference/Clahe.h"

#include "reference/Integers.h"

#include <algorithm>

namespace reference {

namespace {

size_t componentZero(int x, int y, int width) {
    return 4 * (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x));
}

struct ClippedOnce {
    Histogram histogram{};
    std::uint32_t excess = 0;
};

ClippedOnce clippedAndSharedEvenly(Histogram histogram, std::uint32_t limit) {
    std::uint32_t excess = 0;
    for (std::uint32_t const count : histogram)
        excess += count > limit ? count - limit : 0;

    std::uint32_t const increment = excess / 256;
    std::uint32_t const upper = limit - increment;
    for (std::uint32_t& count : histogram) {
        if (count > limit) {
            count = limit;
        } else if (count > upper) {
            excess -= limit - count;
            count = limit;
        } else {
            excess -= increment;
            count += increment;
        }
    }
    return {histogram, excess};
}

void spreadByLoop(Histogram& histogram, std::uint32_t limit, std::uint32_t excess) {
    bool reduced = true;
    while (excess > 0 && reduced) {
        std::uint32_t const before = excess;
        for (size_t start = 0; start < 256 && excess > 0; ++start) {
            size_t const step = std::max(std::uint32_t{1}, 256 / excess);
            for (size_t bin = start; bin < 256 && excess > 0; bin += step) {
                if (histogram[bin] >= limit) continue;
                ++histogram[bin];
                --excess;
            }
        }
        reduced = excess < before;
    }
}

Histogram regionHistogram(std::vector<std::int16_t> const& samples, int width, int left, int top) {
    Histogram histogram{};
    for (int y = top; y < top + kClaheRegion; ++y) {
        for (int x = left; x < left + kClaheRegion; ++x)
            ++histogram[claheBin(samples[componentZero(x, y, width)])];
    }
    return histogram;
}

// The place of pixel position p between the centres of two regions: the cell's first region, the offset into the cell,
// and the cell's size. The half cell at the start has region -1 and on its other side the nearest region inside.
struct CellPosition {
    int region;
    int inside;
    int size;
};

CellPosition cellPosition(int p) {
    int const half = kClaheRegion / 2;
    if (p < half) return {-1, p, half};
    return {(p - half) / kClaheRegion, (p - half) % kClaheRegion, kClaheRegion};
}

} // namespace

size_t claheBin(std::int16_t sample) {
    return clampToByte(sample);
}

std::uint32_t claheLimit(std::uint32_t pixels, double clip) {
    double const limit = pixels * clip / 256;
    // A limit above the pixel count cuts nothing.
    if (limit > pixels) return pixels;
    return std::max(std::uint32_t{1}, static_cast<std::uint32_t>(limit));
}

Histogram clippedHistogram(Histogram histogram, std::uint32_t limit) {
    ClippedOnce clipped = clippedAndSharedEvenly(histogram, limit);
    std::uint32_t room = 0;
    for (std::uint32_t const count : clipped.histogram)
        room += limit > count ? limit - count : 0;
    if (room <= clipped.excess) {
        clipped.histogram.fill(limit);
        return clipped.histogram;
    }
    spreadByLoop(clipped.histogram, limit, clipped.excess);
    return clipped.histogram;
}

Histogram clippedHistogramByLoop(Histogram histogram, std::uint32_t limit) {
    ClippedOnce clipped = clippedAndSharedEvenly(histogram, limit);
    spreadByLoop(clipped.histogram, limit, clipped.excess);
    return clipped.histogram;
}

Histogram claheMapping(Histogram const& clipped) {
    double const scale = 255.0 / kClaheRegionPixels;
    Histogram mapping{};
    std::uint32_t sum = 0;
    for (size_t bin = 0; bin < 256; ++bin) {
        sum += clipped[bin];
        mapping[bin] = std::min(std::uint32_t{255}, static_cast<std::uint32_t>(sum * scale));
    }
    return mapping;
}

Histogram const& ClaheTables::clampedAt(int row, int column) const {
    int const r = std::clamp(row, 0, rows - 1);
    int const c = std::clamp(column, 0, columns - 1);
    return mappings.at(static_cast<size_t>(r) * static_cast<size_t>(columns) + static_cast<size_t>(c));
}

ClaheTables claheTables(std::vector<std::int16_t> const& samples, int width, int height, double clip) {
    ClaheTables tables;
    tables.rows = (height + kClaheRegion - 1) / kClaheRegion;
    tables.columns = (width + kClaheRegion - 1) / kClaheRegion;
    std::uint32_t const limit = claheLimit(kClaheRegionPixels, clip);
    for (int row = 0; row < tables.rows; ++row) {
        for (int column = 0; column < tables.columns; ++column) {
            int const left = column * kClaheRegion;
            int const top = row * kClaheRegion;
            if (left + kClaheRegion > width) {
                tables.mappings.push_back(tables.mappings.back());
            } else if (top + kClaheRegion > height) {
                tables.mappings.push_back(tables.clampedAt(row - 1, column));
            } else {
                tables.mappings.push_back(
                    claheMapping(clippedHistogram(regionHistogram(samples, width, left, top), limit)));
            }
        }
    }
    return tables;
}

std::int16_t claheInterpolated(ClaheTables const& tables, int x, int y, size_t bin) {
    CellPosition const across = cellPosition(x);
    CellPosition const down = cellPosition(y);
    std::int64_t const upperLeft = tables.clampedAt(down.region, across.region)[bin];
    std::int64_t const upperRight = tables.clampedAt(down.region, across.region + 1)[bin];
    std::int64_t const lowerLeft = tables.clampedAt(down.region + 1, across.region)[bin];
    std::int64_t const lowerRight = tables.clampedAt(down.region + 1, across.region + 1)[bin];

    std::int64_t const upper = upperLeft * (across.size - across.inside) + upperRight * across.inside;
    std::int64_t const lower = lowerLeft * (across.size - across.inside) + lowerRight * across.inside;
    std::int64_t const sum = upper * (down.size - down.inside) + lower * down.inside;
    // The double division cannot round across a half here: the divisor is at most 1600. So whole numbers give the same.
    std::int64_t const area = std::int64_t{across.size} * down.size;
    return static_cast<std::int16_t>(roundDivAwayFromZero(sum, area));
}

std::vector<std::int16_t> clahe(std::vector<std::int16_t> samples, int width, int height, double clip, int x0, int y0) {
    if (width <= kClaheRegion || height <= kClaheRegion) return samples;
    auto const singleClip = static_cast<double>(static_cast<float>(clip));
    ClaheTables const tables = claheTables(samples, width, height, std::max(singleClip, 1.0));
    for (int y = y0; y < height; ++y) {
        for (int x = x0; x < width; ++x) {
            std::int16_t& sample = samples[componentZero(x, y, width)];
            sample = claheInterpolated(tables, x, y, claheBin(sample));
        }
    }
    return samples;
}

} // namespace reference
