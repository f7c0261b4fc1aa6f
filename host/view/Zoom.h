#pragma once

#include <cstddef>
#include <string>

/// A magnification, as a level of the wavelet and a ratio between its samples and the pixels that show them:
///
///     1 and more    level 0, a whole number of pixels per sample
///     less than 1   level k of half as many samples each, q samples in 32 pixels, q from 32 to 63
///
/// Pixel centres stay at least 1/64 of a sample off every border between samples, so which sample is nearest never
/// depends on a GPU's rounding.
class Zoom {
public:
    static constexpr size_t kLargest = 32;
    static constexpr size_t kSteps = 32; ///< of a halving

    /// 1:1.
    Zoom() = default;
    /// The magnification nearest to `pixels` screen pixels per picture pixel, of the levels 0 to `levels`. The smallest
    /// is a little more than 0.5 / 2^levels.
    static Zoom nearest(double pixels, size_t levels);

    size_t level() const { return level_; }
    /// So many pixels show so many samples of the level.
    size_t pixels() const { return pixels_; }
    size_t samples() const { return samples_; }
    /// Screen pixels per picture pixel.
    double value() const;
    /// "zoom 0.744186, the nearest step to 0.75"; empty where that is what was asked for, to six digits.
    std::string noteFor(double asked) const;
    /// Whether every sample of the level is one pixel.
    bool isWhole() const { return pixels_ == samples_; }

    /// Pixels that show the first so many samples of the level: those whose sampleAt() is less.
    size_t pixelsOf(size_t samples) const { return (2 * samples * pixels_ + samples_ - 1) / (2 * samples_); }
    /// The sample that a pixel shows.
    size_t sampleAt(size_t pixel) const { return (2 * pixel + 1) * samples_ / (2 * pixels_); }

    bool operator==(Zoom const& other) const {
        return level_ == other.level_ && pixels_ * other.samples_ == other.pixels_ * samples_;
    }
    bool operator!=(Zoom const& other) const { return !(*this == other); }

private:
    Zoom(size_t level, size_t pixels, size_t samples) : level_(level), pixels_(pixels), samples_(samples) {}

    size_t level_ = 0;
    size_t pixels_ = 1;
    size_t samples_ = 1;
};
