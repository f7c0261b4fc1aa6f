#include "host/store/StoreLevels.h"

#include "host/store/ColourPlanes.h"
#include "host/store/LevelInverse.h"

#include <algorithm>
#include <utility>

namespace {

using wavelet53::Sample;

// The part of a band that the samples from an even one on are rebuilt from; a band's end has all that they take.
Interval bandPart(Interval const& samples, size_t bandLength) {
    size_t const start = samples.start / 2;
    return {start, std::min(wavelet53::bandSamples(samples.length), bandLength - start)};
}

// From the even sample before.
Interval fromEven(Interval const& samples) {
    size_t const odd = samples.start % 2;
    return {samples.start - odd, samples.length + odd};
}

// Gives the rows of parts of bands, as many as there are.
class Rows {
public:
    Rows(std::vector<Sample> samples, size_t width) : samples_(std::move(samples)), width_(width) {}

    void next(Sample* row) {
        if (given_ == samples_.size()) return;
        std::copy_n(&samples_[given_], width_, row);
        given_ += width_;
    }

private:
    std::vector<Sample> samples_;
    size_t width_;
    size_t given_ = 0;
};

} // namespace

StoreLevels::StoreLevels(TileStore& store, std::shared_ptr<SampleCache> cache)
    : store_(store), bands_(store, std::move(cache)) {}

Size StoreLevels::size(size_t level) const {
    return halved({store_.info().width, store_.info().height}, level);
}

void StoreLevels::read(size_t level, Region const& region, std::uint8_t* pixels) {
    StoreInfo row = store_.info();
    row.width = region.width;
    row.height = region.height;
    bool const hasResiduals = level == 0 && row.residualBits > 0;
    std::vector<Samples> planes;
    std::vector<Samples> residuals;
    for (size_t plane = 0; plane < row.bands; ++plane) {
        planes.push_back(low(level, plane, region));
        if (hasResiduals) residuals.push_back(part(0, Band::Residual, plane, region));
    }
    ColourPlanes colours(row);
    for (size_t y = 0; y < region.height; ++y) {
        for (size_t plane = 0; plane < row.bands; ++plane) {
            std::copy_n(&planes[plane][y * region.width], region.width, colours.plane(plane));
            if (hasResiduals) std::copy_n(&residuals[plane][y * region.width], region.width, colours.residual(plane));
        }
        colours.join(pixels);
        pixels += region.width * row.bands * row.bits / 8;
    }
}

// The low samples of a level: LL of the coarsest lies in the store, others are rebuilt.
StoreLevels::Samples StoreLevels::low(size_t level, size_t plane, Region const& region) {
    if (level == store_.info().levels) return part(level, Band::LL, plane, region);
    return rebuilt(level, plane, region);
}

StoreLevels::Samples StoreLevels::rebuilt(size_t level, size_t plane, Region const& region) {
    Size const extent = storegeometry::bandExtent(store_.info(), level + 1);
    Interval const across = fromEven({region.x, region.width});
    Interval const down = fromEven({region.y, region.height});
    Region const cut = regionOf(bandPart(across, extent.width), bandPart(down, extent.height));
    auto const rowsOf = [&](Samples samples) { return Rows(std::move(samples), cut.width); };
    Rows ll = rowsOf(low(level + 1, plane, cut));
    Rows hl = rowsOf(part(level + 1, Band::HL, plane, cut));
    Rows lh = rowsOf(part(level + 1, Band::LH, plane, cut));
    Rows hh = rowsOf(part(level + 1, Band::HH, plane, cut));
    LevelInverse inverse(
        across.length,
        [&](Sample* first, Sample* second) {
            ll.next(first);
            hl.next(second);
        },
        [&](Sample* first, Sample* second) {
            lh.next(first);
            hh.next(second);
        });
    Samples result(region.width * region.height);
    Samples row(across.length);
    for (size_t y = down.start; y < down.start + down.length; ++y) {
        inverse.next(row.data());
        if (y < region.y) continue;
        std::copy_n(&row[region.x - across.start], region.width, &result[(y - region.y) * region.width]);
    }
    return result;
}

StoreLevels::Samples StoreLevels::part(size_t level, Band band, size_t plane, Region const& region) {
    BandSamples part = bands_.part({level, band, plane, 0, 0}, region);
    if (part.value) part.samples.assign(region.width * region.height, *part.value);
    return std::move(part.samples);
}
