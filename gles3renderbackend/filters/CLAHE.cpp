#include "gles3renderbackend/filters/CLAHE.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr size_t kHalfRegion = CLAHE::kRegionSize / 2;
constexpr size_t kRegionPixels = CLAHE::kRegionSize * CLAHE::kRegionSize;
constexpr size_t kMaxGrey = CLAHE::kBins - 1;

// Nearly every sample is a grey value: a predictable branch costs less than two limits.
size_t bin(std::int16_t sample) {
    auto const code = static_cast<std::uint16_t>(sample);
    if (__builtin_expect(code > kMaxGrey, 0)) return sample < 0 ? 0 : kMaxGrey;
    return code;
}

// One axis of the interpolation grid: cell i covers [start, end) and lies between two regions.
struct Cell {
    size_t start;
    size_t end;
    size_t before; // index of the region at its start
    size_t after;  // index of the region at its end

    Cell(size_t index, size_t regions, size_t extent)
        : start(index == 0 ? 0 : index * CLAHE::kRegionSize - kHalfRegion),
          end(std::min(index * CLAHE::kRegionSize + kHalfRegion, extent)),
          before(index == 0 ? 0 : index - 1),
          after(std::min(index, regions - 1)) {}
};

// The mappings of a grey value on the left and the right of a cell, 16 bits each.
using Sides = std::array<std::uint16_t, 2>;
struct Corners {
    std::array<Sides, CLAHE::kBins> upper;
    std::array<Sides, CLAHE::kBins> lower;
};

// Equalises one row of a cell, `right` pixels from its left side and `below` rows from its top. The steps are loops of
// their own, so that the compiler vectorises them.
void equaliseRow(std::int16_t* pixels, size_t width, Corners const& corners, size_t right, size_t below) {
    constexpr size_t kMaxWidth = CLAHE::kRegionSize;
    std::array<Sides, kMaxWidth> upper; // NOLINT(*-member-init): all that is read is written first
    std::array<Sides, kMaxWidth> lower; // NOLINT(*-member-init)
    for (size_t x = 0; x < width; ++x) {
        size_t const grey = bin(pixels[x * CLAHE::kComponents]);
        upper[x] = corners.upper[grey];
        lower[x] = corners.lower[grey];
    }
    // No weighted sum of two greys exceeds 255 * 40.
    auto const down = static_cast<std::uint16_t>(below);
    auto const up = static_cast<std::uint16_t>(CLAHE::kRegionSize - below);
    std::array<Sides, kMaxWidth> sides; // NOLINT(*-member-init)
    for (size_t x = 0; x < width; ++x)
        for (size_t i = 0; i < sides[x].size(); ++i)
            sides[x][i] = static_cast<std::uint16_t>(upper[x][i] * up + lower[x][i] * down);
    // Rounded to the nearest: integers give exactly the results of double arithmetic. 1600 is 64 * 25; dividing in two
    // steps keeps the second one in 16 bits.
    constexpr std::int32_t kHalf = kRegionPixels / 2;
    constexpr std::uint16_t kRest = kRegionPixels / 64;
    static_assert(kRest * 64 == kRegionPixels, "divided without a rest");
    std::array<std::int16_t, kMaxWidth> out; // NOLINT(*-member-init)
    for (size_t x = 0; x < width; ++x) {
        auto const toRight = static_cast<std::int16_t>(right + x);
        auto const toLeft = static_cast<std::int16_t>(CLAHE::kRegionSize - right - x);
        std::int32_t const sum =
            static_cast<std::int16_t>(sides[x][0]) * toLeft + static_cast<std::int16_t>(sides[x][1]) * toRight;
        out[x] = static_cast<std::int16_t>(static_cast<std::uint16_t>((sum + kHalf) >> 6) / kRest);
    }
    for (size_t x = 0; x < width; ++x)
        pixels[x * CLAHE::kComponents] = out[x];
}

// Adds 1 to bins below the limit, in steps that spread the excess and with ever later starts, until nothing is left.
void spread(CLAHE::Histogram& histogram, std::uint32_t limit, size_t excess) {
    while (excess > 0) {
        for (size_t start = 0; start < histogram.size() && excess > 0; ++start) {
            size_t const step = std::max<size_t>(1, histogram.size() / excess);
            for (size_t i = start; i < histogram.size() && excess > 0; i += step) {
                if (histogram[i] >= limit) continue;
                ++histogram[i];
                --excess;
            }
        }
    }
}

} // namespace

CLAHE::CLAHE(double clipLimit) : clipLimit_(clipLimit >= 1.0 ? clipLimit : 1.0) {}

CLAHE::~CLAHE() = default;

void CLAHE::buildTables(std::int16_t const* pixels, size_t width, size_t height, size_t rowStride) {
    width_ = width;
    height_ = height;
    rowStride_ = rowStride;
    regionColumns_ = (width + kRegionSize - 1) / kRegionSize;
    regionRows_ = (height + kRegionSize - 1) / kRegionSize;
    mappings_.assign(regionColumns_ * regionRows_, Mapping{});
    for (size_t row = 0; row < regionRows_; ++row) {
        bool const partialRow = (row + 1) * kRegionSize > height;
        for (size_t column = 0; column < regionColumns_; ++column) {
            bool const partialColumn = (column + 1) * kRegionSize > width;
            Mapping& mapping = mappings_[row * regionColumns_ + column];
            if (partialColumn)
                mapping = *(&mapping - 1);
            else if (partialRow)
                mapping = *(&mapping - regionColumns_);
            else
                mapping = mappingOfRegion(pixels + (row * rowStride + column) * kRegionSize * kComponents);
        }
    }
}

CLAHE::Mapping CLAHE::mappingOfRegion(std::int16_t const* firstPixel) const {
    // Four partial histograms, so that equal neighbours need not wait for each other's increments.
    std::array<std::array<std::uint16_t, kBins>, 4> parts{};
    for (size_t y = 0; y < kRegionSize; ++y) {
        std::int16_t const* const row = firstPixel + y * rowStride_ * kComponents;
        for (size_t x = 0; x < kRegionSize; x += parts.size())
            for (size_t i = 0; i < parts.size(); ++i)
                ++parts[i][bin(row[(x + i) * kComponents])];
    }
    Histogram histogram; // NOLINT(*-member-init): all of it is written next
    for (size_t i = 0; i < kBins; ++i)
        histogram[i] = static_cast<std::uint32_t>(parts[0][i] + parts[1][i] + parts[2][i] + parts[3][i]);
    clip(histogram, kRegionPixels);

    // In double, because a full region's last entry is 254: 255 / 1600 is a hair less than the exact quotient.
    double const scale = static_cast<double>(kMaxGrey) / static_cast<double>(kRegionPixels);
    Mapping mapping{};
    std::uint32_t sum = 0;
    for (size_t i = 0; i < kBins; ++i) {
        sum += histogram[i];
        mapping[i] = static_cast<std::uint8_t>(std::min(static_cast<double>(sum) * scale, double{kMaxGrey}));
    }
    return mapping;
}

void CLAHE::clip(Histogram& histogram, size_t pixels) const {
    double const exactLimit = static_cast<double>(pixels) * clipLimit_ / static_cast<double>(kBins);
    if (exactLimit >= static_cast<double>(pixels)) return; // no bin can hold more
    auto const limit = std::max<std::uint32_t>(1, static_cast<std::uint32_t>(exactLimit));
    size_t excess = 0;
    for (std::uint32_t const count : histogram)
        excess += count > limit ? count - limit : 0;

    // First an equal share for every bin; a bin close to the limit is filled up to it.
    auto const share = static_cast<std::uint32_t>(excess / kBins);
    for (std::uint32_t& count : histogram) {
        if (count > limit) {
            count = limit;
            continue;
        }
        std::uint32_t const taken = std::min(share, limit - count);
        count += taken;
        excess -= taken;
    }

    // If the room is smaller than the excess, spreading one by one would end here too, only much later.
    size_t room = 0;
    for (std::uint32_t const count : histogram)
        room += limit - count;
    if (room <= excess)
        histogram.fill(limit);
    else
        spread(histogram, limit, excess);
}

void CLAHE::apply(std::int16_t* pixels, size_t x0, size_t y0) const {
    for (size_t cellRow = 0; cellRow <= regionRows_; ++cellRow)
        for (size_t cellColumn = 0; cellColumn <= regionColumns_; ++cellColumn)
            applyToCell(pixels, cellColumn, cellRow, x0, y0);
}

void CLAHE::applyToCell(std::int16_t* pixels, size_t cellColumn, size_t cellRow, size_t x0, size_t y0) const {
    Cell const across(cellColumn, regionColumns_, width_);
    Cell const down(cellRow, regionRows_, height_);
    size_t const xStart = std::max(across.start, x0);
    size_t const yStart = std::max(down.start, y0);
    if (xStart >= across.end || yStart >= down.end) return;

    Mapping const& upperLeft = mappings_[down.before * regionColumns_ + across.before];
    Mapping const& upperRight = mappings_[down.before * regionColumns_ + across.after];
    Mapping const& lowerLeft = mappings_[down.after * regionColumns_ + across.before];
    Mapping const& lowerRight = mappings_[down.after * regionColumns_ + across.after];
    Corners corners; // NOLINT(*-member-init): all of it is written next
    for (size_t i = 0; i < kBins; ++i) {
        corners.upper[i] = {upperLeft[i], upperRight[i]};
        corners.lower[i] = {lowerLeft[i], lowerRight[i]};
    }

    size_t const width = across.end - xStart;
    for (size_t y = yStart; y < down.end; ++y)
        equaliseRow(pixels + (y * rowStride_ + xStart) * kComponents, width, corners, xStart - across.start,
                    y - down.start);
}
