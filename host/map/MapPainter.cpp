#include "host/map/MapPainter.h"

#include "host/map/MapLabels.h"
#include "host/map/Terrain.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace {

using Colour = std::array<std::int64_t, 3>;

constexpr unsigned kFullBits = 8;
constexpr std::int64_t kFull = 1 << kFullBits; // shares of a colour are 0 to kFull
constexpr std::int64_t kLowest = -1200;
constexpr std::int64_t kHighest = 2400;

constexpr std::int64_t kContourMetres = 20;
constexpr std::int64_t kIndexContourMetres = 100;
constexpr std::int64_t kCrossPixels = 256;
constexpr std::int64_t kGridPixels = 1024;
constexpr std::int64_t kSheetPixels = 4096;
constexpr std::int64_t kFramePixels = 6;
constexpr std::int64_t kWoodCell = 16;

constexpr Colour kInk{52, 38, 28};
constexpr Colour kContourInk{112, 72, 40};
constexpr Colour kDepthInk{214, 236, 245};
constexpr Colour kCoastInk{24, 74, 110};
constexpr Colour kShadow{30, 36, 66};
constexpr Colour kSun{255, 250, 226};
constexpr Colour kPaper{250, 246, 232};
constexpr Colour kTreeLight{104, 142, 70};
constexpr Colour kTreeDark{42, 82, 46};

struct Stop {
    std::int64_t metres;
    Colour colour;
};

constexpr std::array<Stop, 14> kStops{{{kLowest, {16, 48, 92}},
                                       {-600, {28, 78, 130}},
                                       {-250, {52, 116, 166}},
                                       {-80, {96, 160, 196}},
                                       {-12, {150, 204, 216}},
                                       {0, {186, 226, 222}},
                                       {1, {232, 220, 176}},
                                       {14, {196, 206, 140}},
                                       {120, {150, 184, 112}},
                                       {380, {192, 198, 124}},
                                       {750, {216, 188, 120}},
                                       {1150, {178, 134, 96}},
                                       {1600, {170, 156, 148}},
                                       {kHighest, {255, 255, 255}}}};

void blend(Colour& under, Colour const& over, std::int64_t share) {
    for (size_t i = 0; i < under.size(); ++i)
        under[i] += floorShift((over[i] - under[i]) * share, kFullBits);
}

std::int64_t modulo(std::int64_t value, std::int64_t divisor) {
    return (value % divisor + divisor) % divisor;
}

// Slopes are height differences over two pixels.
struct Slope {
    std::int64_t x;
    std::int64_t y;

    // The length of (x, y) per pixel, within 12 %, without a square root.
    std::int64_t steepness() const {
        auto const [low, high] = std::minmax({std::abs(x), std::abs(y)});
        return (high + low * 3 / 8) / 2;
    }
};

// Light from the upper left, with cool shadows and warm lit slopes. Saturates softly, so that cliffs keep their
// structure.
void shade(Colour& colour, Slope slope, bool land) {
    constexpr unsigned kFineBits = 6; // so that the division has 32 bits
    constexpr std::int32_t kKnee = 3 * Terrain::kMetre >> kFineBits;
    auto const facing = static_cast<std::int32_t>(floorShift(slope.x + slope.y, kFineBits));
    std::int32_t const share = (facing * (land ? 190 : 80)) / (kKnee + std::abs(facing));
    if (share < 0) blend(colour, kShadow, -share);
    if (share > 0) blend(colour, kSun, share * 5 / 8);
}

// The share of a pixel that a line of the given width covers, if the pixel's height differs by `distance` from the
// line's.
std::int64_t lineShare(std::int64_t distance, std::int64_t steepness, std::int64_t widthShare) {
    if (distance >= 2 * steepness) return 0;
    return std::clamp(kFull / 2 + widthShare / 2 - distance * kFull / std::max<std::int64_t>(steepness, 1),
                      std::int64_t{0}, std::min(kFull, widthShare));
}

std::int64_t distanceToLevel(std::int64_t height, std::int64_t interval) {
    std::int64_t const above = modulo(height, interval);
    return std::min(above, interval - above);
}

void drawContours(Colour& colour, std::int64_t height, std::int64_t steepness) {
    constexpr std::int64_t kCoastWidth = kFull * 2;
    blend(colour, kCoastInk, lineShare(std::abs(height), steepness, kCoastWidth));
    if (height < 0) {
        std::int64_t const isobath = distanceToLevel(height, kIndexContourMetres * Terrain::kMetre);
        if (height < -kIndexContourMetres / 2 * Terrain::kMetre)
            blend(colour, kDepthInk, lineShare(isobath, steepness, kFull) * 5 / 16);
        return;
    }
    std::int64_t const index = distanceToLevel(height, kIndexContourMetres * Terrain::kMetre);
    std::int64_t const minor = distanceToLevel(height, kContourMetres * Terrain::kMetre);
    if (height > kContourMetres / 2 * Terrain::kMetre) {
        // Lines fade where they would merge.
        bool const dense = steepness * 5 > kContourMetres * Terrain::kMetre;
        if (!dense) blend(colour, kContourInk, lineShare(minor, steepness, kFull) * 7 / 16);
        blend(colour, kContourInk, lineShare(index, steepness, kFull * 7 / 4) * 10 / 16);
    }
}

// One crown with its shadow in each cell of a grid that is shifted every other row.
void drawTree(Colour& colour, std::int64_t x, std::int64_t y, std::uint32_t randomStart) {
    std::int64_t const row = y / kWoodCell;
    std::int64_t const shifted = x + (row % 2) * kWoodCell / 2;
    std::uint32_t const hash = latticeHash(shifted / kWoodCell, row, randomStart);
    std::int64_t const dx = shifted % kWoodCell - 6 - static_cast<std::int64_t>(hash & 3u);
    std::int64_t const dy = y % kWoodCell - 6 - static_cast<std::int64_t>(hash >> 2 & 3u);
    std::int64_t const radiusSquared = 10 + static_cast<std::int64_t>(hash >> 4 & 7u);
    std::int64_t const shadow = (dx - 2) * (dx - 2) + (dy - 2) * (dy - 2);
    if (shadow <= radiusSquared) blend(colour, kTreeDark, 110);
    if (dx * dx + dy * dy > radiusSquared) return;
    colour = kTreeLight;
    blend(colour, kTreeDark, std::clamp<std::int64_t>(110 + (dx + dy) * 24, 0, kFull));
}

void drawWood(Colour& colour, std::int64_t x, std::int64_t y, std::int64_t height, std::int64_t moisture) {
    std::int64_t const treeLine = 900 * Terrain::kMetre;
    if (height < 12 * Terrain::kMetre || height > treeLine || moisture < 0) return;
    blend(colour, kTreeDark, std::min<std::int64_t>(moisture / (TerrainNoise::kOne / 512), 56));
    if (moisture < TerrainNoise::kOne / 24) return;
    drawTree(colour, x, y, 401);
    if (moisture > TerrainNoise::kOne / 8) drawTree(colour, x + kWoodCell / 2, y + kWoodCell / 2, 402);
}

bool onLine(std::int64_t value, std::int64_t spacing, std::int64_t halfWidth) {
    return modulo(value + halfWidth, spacing) <= 2 * halfWidth;
}

void drawGrid(Colour& colour, std::int64_t x, std::int64_t y) {
    constexpr std::int64_t kCrossArm = 6;
    if (onLine(x, kSheetPixels, 3) || onLine(y, kSheetPixels, 3)) {
        blend(colour, kPaper, 150);
    } else if (onLine(x, kGridPixels, 0) || onLine(y, kGridPixels, 0)) {
        blend(colour, kInk, 110);
    } else if ((onLine(x, kCrossPixels, 0) && onLine(y, kCrossPixels, kCrossArm)) ||
               (onLine(y, kCrossPixels, 0) && onLine(x, kCrossPixels, kCrossArm))) {
        blend(colour, kInk, 170);
    }
}

std::string coordinates(std::int64_t x, std::int64_t y) {
    return std::to_string(x) + "," + std::to_string(y);
}

// The coordinates of the crossing to the upper left, on a plate: at each crossing, large at every fourth.
void drawLabels(Colour& colour, std::int64_t x, std::int64_t y) {
    constexpr std::int64_t kSmall = 2;
    constexpr std::int64_t kLarge = 26;
    constexpr std::int64_t kPlateMargin = 5;
    constexpr std::int64_t kSmallOffset = 12;
    constexpr std::int64_t kLargeOffset = 72;
    std::int64_t const gx = x % kGridPixels;
    std::int64_t const gy = y % kGridPixels;
    if (gy >= kSmallOffset - kPlateMargin && gy < kSmallOffset + maplabels::kHeight * kSmall + kPlateMargin &&
        gx >= kSmallOffset - kPlateMargin && gx < kGridPixels / 4) {
        std::string const text = coordinates(x - gx, y - gy);
        if (gx < kSmallOffset + maplabels::width(text, kSmall) + kPlateMargin - kSmall) blend(colour, kPaper, 200);
        if (maplabels::covers(text, gx - kSmallOffset, gy - kSmallOffset, kSmall)) blend(colour, kInk, 240);
    }
    std::int64_t const sx = x % kSheetPixels;
    std::int64_t const sy = y % kSheetPixels;
    if (sy < kLargeOffset || sy >= kLargeOffset + maplabels::kHeight * kLarge) return;
    if (sx < kLargeOffset || sx >= kSheetPixels / 2) return;
    if (maplabels::covers(coordinates(x - sx, y - sy), sx - kLargeOffset, sy - kLargeOffset, kLarge))
        blend(colour, kPaper, 150);
}

} // namespace

MapPainter::MapPainter(std::int64_t side) : side_(side) {
    for (std::int64_t metres = kLowest; metres <= kHighest; ++metres) {
        auto const* const to = std::find_if(kStops.begin() + 1, kStops.end() - 1,
                                            [metres](Stop const& stop) { return metres <= stop.metres; });
        auto const* const from = to - 1;
        Colour colour = from->colour;
        blend(colour, to->colour, (metres - from->metres) * kFull / (to->metres - from->metres));
        tints_.push_back(colour);
    }
}

MapPainter::Colour const& MapPainter::tint(std::int64_t height) const {
    std::int64_t const metres = floorShift(height, Terrain::kMetreBits) - kLowest;
    return tints_[static_cast<size_t>(std::clamp<std::int64_t>(metres, 0, kHighest - kLowest))];
}

void MapPainter::paintRow(std::int64_t x, std::int64_t y, HeightRows const& heights,
                          std::vector<std::int64_t> const& moisture, std::uint8_t* rgb) const {
    for (size_t i = 0; i < moisture.size(); ++i, rgb += 3) {
        std::int64_t const px = x + static_cast<std::int64_t>(i);
        std::int64_t const height = heights.here[i + 1];
        Slope const slope{heights.here[i + 2] - heights.here[i], heights.below[i + 1] - heights.above[i + 1]};
        Colour colour = tint(height);
        drawWood(colour, px, y, height, moisture[i]);
        shade(colour, slope, height >= 0);
        drawContours(colour, height, slope.steepness());
        drawGrid(colour, px, y);
        drawLabels(colour, px, y);
        std::int64_t const edge = std::min({px, y, side_ - 1 - px, side_ - 1 - y});
        if (edge < kFramePixels) colour = kInk;
        for (size_t component = 0; component < 3; ++component)
            rgb[component] = static_cast<std::uint8_t>(colour[component]);
    }
}
