#include "host/pyramid/LevelMeans.h"

#include "host/image/NodataSample.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

// A mean of whole numbers, halves up.
template <class Sample>
Sample meanOf(std::int64_t sum, std::int64_t count) {
    std::int64_t quotient = sum / count;
    std::int64_t rest = sum % count;
    if (rest < 0) {
        rest += count;
        --quotient;
    }
    return static_cast<Sample>(quotient + (rest >= count - rest ? 1 : 0));
}

template <class Sample>
Sample meanOf(double sum, double count) {
    if constexpr (std::is_floating_point_v<Sample>)
        return static_cast<Sample>(sum / count);
    else
        return static_cast<Sample>(std::floor(sum / count + 0.5));
}

template <class Sample>
class MeansOf final : public LevelMeans {
public:
    MeansOf(SampleFormat const& layout, bool weighed, std::optional<double> nodata)
        : bands_(layout.bands), colours_(weighed ? layout.colours : 0) {
        if (!nodata) return;
        if (auto const bytes = nodatasample::bytesOf(*nodata, layout.type)) {
            Sample sample{};
            std::memcpy(&sample, bytes->data(), sizeof sample);
            nodata_ = sample;
        }
    }

    void start(size_t pixels) override {
        sums_.assign(pixels * bands_, {});
        weighed_.assign(pixels * colours_, {});
    }

    void add(std::uint8_t const* row, std::vector<Interval> const& columns) override {
        if (std::is_integral_v<Sample> && !nodata_ && colours_ == 0) return addAll(row, columns);
        for (size_t i = 0; i < columns.size(); ++i) {
            std::uint8_t const* next = row + columns[i].start * bands_ * sizeof(Sample);
            for (size_t column = 0; column < columns[i].length; ++column, next += bands_ * sizeof(Sample))
                addPixel(next, i);
        }
    }

    void finish(std::uint8_t* samples) override {
        for (size_t i = 0; i < sums_.size(); ++i, samples += sizeof(Sample)) {
            Sample const mean = meanAt(i / bands_, i % bands_);
            std::memcpy(samples, &mean, sizeof mean);
        }
    }

private:
    // Sums of products of two samples of 16 bits are whole numbers.
    using Total = std::conditional_t<std::is_floating_point_v<Sample>, double, std::int64_t>;
    using Weight = std::conditional_t<sizeof(Sample) <= 2, std::int64_t, double>;

    struct Sum {
        Total sum{};
        std::int64_t count = 0;
    };
    struct WeighedSum {
        Weight sum{};
        Weight weights{};
    };

    static Sample at(std::uint8_t const* pixel, size_t band) {
        Sample sample{};
        std::memcpy(&sample, pixel + band * sizeof sample, sizeof sample);
        return sample;
    }

    static bool isNumber(Sample sample) {
        if constexpr (std::is_floating_point_v<Sample>) return !std::isnan(sample);
        return true;
    }

    bool counts(Sample sample) const { return isNumber(sample) && (!nodata_ || sample != *nodata_); }

    // Where all samples count alike.
    void addAll(std::uint8_t const* row, std::vector<Interval> const& columns) {
        for (size_t i = 0; i < columns.size(); ++i) {
            Sum* const sums = &sums_[i * bands_];
            std::uint8_t const* next = row + columns[i].start * bands_ * sizeof(Sample);
            for (size_t column = 0; column < columns[i].length; ++column, next += bands_ * sizeof(Sample))
                for (size_t band = 0; band < bands_; ++band)
                    sums[band].sum += static_cast<Total>(at(next, band));
            for (size_t band = 0; band < bands_; ++band)
                sums[band].count += static_cast<std::int64_t>(columns[i].length);
        }
    }

    void addPixel(std::uint8_t const* pixel, size_t i) {
        for (size_t band = 0; band < bands_; ++band) {
            Sample const sample = at(pixel, band);
            // Alpha is no measured value.
            bool const isAlpha = colours_ > 0 && band == colours_;
            if (!(isAlpha ? isNumber(sample) : counts(sample))) continue;
            Sum& sum = sums_[i * bands_ + band];
            sum.sum += static_cast<Total>(sample);
            ++sum.count;
        }
        if (colours_ > 0) addWeighed(pixel, i);
    }

    void addWeighed(std::uint8_t const* pixel, size_t i) {
        Sample const alpha = at(pixel, colours_);
        if (!(alpha > 0)) return;
        for (size_t band = 0; band < colours_; ++band) {
            Sample const sample = at(pixel, band);
            if (!counts(sample)) continue;
            WeighedSum& sum = weighed_[i * colours_ + band];
            sum.sum += static_cast<Weight>(sample) * static_cast<Weight>(alpha);
            sum.weights += static_cast<Weight>(alpha);
        }
    }

    Sample meanAt(size_t pixel, size_t band) const {
        if (band < colours_) {
            WeighedSum const& weighed = weighed_[pixel * colours_ + band];
            if (weighed.weights > 0) return meanOf<Sample>(weighed.sum, weighed.weights);
        }
        Sum const& plain = sums_[pixel * bands_ + band];
        if (plain.count > 0) return meanOf<Sample>(plain.sum, static_cast<Total>(plain.count));
        // Without nodata every whole number counts.
        return nodata_.value_or(std::numeric_limits<Sample>::quiet_NaN());
    }

    size_t bands_;
    size_t colours_; // that alpha weighs
    std::optional<Sample> nodata_;
    std::vector<Sum> sums_;
    std::vector<WeighedSum> weighed_;
};

} // namespace

std::unique_ptr<LevelMeans> LevelMeans::of(SampleFormat const& layout, bool weighed, std::optional<double> nodata) {
    switch (layout.type) {
    case SampleType::Unsigned8:
        return std::make_unique<MeansOf<std::uint8_t>>(layout, weighed, nodata);
    case SampleType::Signed8:
        return std::make_unique<MeansOf<std::int8_t>>(layout, weighed, nodata);
    case SampleType::Unsigned16:
        return std::make_unique<MeansOf<std::uint16_t>>(layout, weighed, nodata);
    case SampleType::Signed16:
        return std::make_unique<MeansOf<std::int16_t>>(layout, weighed, nodata);
    case SampleType::Unsigned32:
        return std::make_unique<MeansOf<std::uint32_t>>(layout, weighed, nodata);
    case SampleType::Signed32:
        return std::make_unique<MeansOf<std::int32_t>>(layout, weighed, nodata);
    case SampleType::Float32:
        return std::make_unique<MeansOf<float>>(layout, weighed, nodata);
    case SampleType::Float64:
        return std::make_unique<MeansOf<double>>(layout, weighed, nodata);
    }
    return nullptr;
}
