#include "host/filter/EnhancedRenderer.h"

#include "host/filter/EnhancementChain.h"
#include "host/filter/RegionRenderer.h"
#include "host/image/PixelBands.h"
#include "host/image/PixelSource.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr size_t kGrid = EnhancementChain::kGrid;

// The rows of a picture that are in memory: a window that only moves down, so that each row is read once.
class RowWindow {
public:
    RowWindow(PixelSource& source, size_t x, size_t width)
        : source_(source), x_(x), width_(width), rowBytes_(width * source.bands() * source.sampleBytes()) {}

    /// Moves to rows y to y + count; rows above are dropped.
    void moveTo(size_t y, size_t count) {
        size_t const end = first_ + rows_.size() / rowBytes_;
        size_t const kept = end > y ? end - y : 0;
        rows_.erase(rows_.begin(), rows_.end() - static_cast<std::ptrdiff_t>(kept * rowBytes_));
        first_ = y;
        if (kept >= count) return;
        source_.read({x_, y + kept, width_, count - kept}, fresh_);
        rows_.insert(rows_.end(), fresh_.begin(), fresh_.end());
    }

    /// The sample bytes of pixel (x, y) of the picture, followed by those of the pixels to its right.
    std::uint8_t const* at(size_t x, size_t y) const {
        return &rows_[(y - first_) * rowBytes_ + (x - x_) * rowBytes_ / width_];
    }

private:
    PixelSource& source_;
    size_t x_;
    size_t width_;
    size_t rowBytes_;
    size_t first_ = 0;
    std::vector<std::uint8_t> rows_;
    std::vector<std::uint8_t> fresh_;
};

// One run of a picture through the chain.
class Enhancing {
public:
    Enhancing(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> const& steps,
              PixelSource& source, Region const& region, size_t side)
        : source_(source),
          region_(region),
          side_(side),
          bands_(EnhancedRenderer::bandsOf(source.bands(), steps)),
          chain_(std::move(instance), steps, {source.width(), source.height()}),
          window_(source, input(region.y, 1).x, input(region.y, 1).width) {}

    /// The row below the strip that starts at row y: on the grid, unless the region ends before.
    size_t stripEnd(size_t y) const {
        size_t const rowBytes = input(y, 1).width * source_.bands() * source_.sampleBytes();
        size_t const fitting = std::clamp(RegionRenderer::kMaxStripBytes / rowBytes / kGrid * kGrid, kGrid, side_);
        return std::min((y / kGrid * kGrid) + fitting, region_.y + region_.height);
    }

    std::vector<std::uint8_t> const& strip(size_t y, size_t rows) {
        Region const read = input(y, rows);
        window_.moveTo(read.y, read.height);
        out_.resize(region_.width * rows * bands_);
        size_t const end = region_.x + region_.width;
        for (size_t x = region_.x; x < end;) {
            size_t const next = std::min(x / side_ * side_ + side_, end);
            enhance({x, y, next - x, rows});
            x = next;
        }
        return out_;
    }

private:
    Region input(size_t y, size_t rows) const { return chain_.inputFor({region_.x, y, region_.width, rows}); }

    void enhance(Region const& part) {
        Region const read = chain_.inputFor(part);
        std::vector<unsigned char> const texels =
            source_.sampleBytes() == 1 ? chain_.run8(rgba(read), part) : chain_.run15(planes(read), part);
        for (size_t row = 0; row < part.height; ++row) {
            std::uint8_t* const to = &out_[(row * region_.width + part.x - region_.x) * bands_];
            pixelbands::narrow(&texels[row * part.width * pixelbands::kTexelBytes], to, bands_, part.width);
            if (pixelbands::hasAlpha(bands_)) putAlpha(part.x, part.y + row, part.width, to);
        }
    }

    std::vector<unsigned char> rgba(Region const& read) const {
        std::vector<unsigned char> texels(read.width * read.height * pixelbands::kTexelBytes, 255);
        std::vector<std::uint8_t> row(read.width * pixelbands::kTexelBytes);
        size_t const components = pixelbands::components(source_.bands());
        for (size_t y = 0; y < read.height; ++y) {
            pixelbands::widen(window_.at(read.x, read.y + y), source_.bands(), row.data(), read.width);
            for (size_t x = 0; x < read.width; ++x)
                std::memcpy(&texels[(y * read.width + x) * pixelbands::kTexelBytes], &row[x * components], 3);
        }
        return texels;
    }

    EnhancementChain::Planes planes(Region const& read) const {
        size_t const even = read.width + read.width % 2;
        size_t const bands = source_.bands();
        EnhancementChain::Planes result;
        for (size_t channel = 0; channel < result.size(); ++channel) {
            result[channel].resize(2 * even * read.height);
            size_t const band = pixelbands::isGrey(bands) ? 0 : channel;
            for (size_t y = 0; y < read.height; ++y) {
                for (size_t x = 0; x < read.width; ++x) {
                    unsigned const code = sample16(read.x + x, read.y + y, band) >> 1U;
                    unsigned char* const to = &result[channel][2 * (y * even + x)];
                    to[0] = static_cast<unsigned char>(code & 0xFFU);
                    to[1] = static_cast<unsigned char>(code >> 8U);
                }
            }
        }
        return result;
    }

    unsigned sample16(size_t x, size_t y, size_t band) const {
        std::uint16_t sample = 0;
        std::memcpy(&sample, window_.at(x, y) + 2 * band, sizeof sample);
        return sample;
    }

    void putAlpha(size_t x, size_t y, size_t count, std::uint8_t* to) const {
        size_t const alpha = source_.bands() - 1;
        for (size_t i = 0; i < count; ++i)
            to[(i + 1) * bands_ - 1] = source_.sampleBytes() == 1
                                           ? window_.at(x + i, y)[alpha]
                                           : static_cast<std::uint8_t>(sample16(x + i, y, alpha) >> 8U);
    }

    PixelSource& source_;
    Region region_;
    size_t side_;
    size_t bands_;
    EnhancementChain chain_;
    RowWindow window_;
    std::vector<std::uint8_t> out_;
};

} // namespace

EnhancedRenderer::EnhancedRenderer(std::shared_ptr<RenderBackendInstance> instance,
                                   std::vector<enhancement::Step> steps)
    : instance_(std::move(instance)), steps_(std::move(steps)), side_(EnhancementChain::requiredPartSide(steps_)) {}

size_t EnhancedRenderer::bandsOf(size_t pictureBands, std::vector<enhancement::Step> const& steps) {
    bool const coloured = std::any_of(steps.begin(), steps.end(), [](enhancement::Step const& step) {
        return std::visit([](auto const& one) { return std::decay_t<decltype(one)>::kMayColour; }, step);
    });
    return pixelbands::isGrey(pictureBands) && coloured ? pictureBands + 2 : pictureBands;
}

void EnhancedRenderer::render(PixelSource& source, Region const& region, RowSink const& sink,
                              Progress const& progress) {
    Enhancing enhancing(instance_, steps_, source, region, side_);
    size_t const bottom = region.y + region.height;
    for (size_t y = region.y; y < bottom;) {
        progress(y - region.y, region.height);
        size_t const end = enhancing.stripEnd(y);
        sink(enhancing.strip(y, end - y).data(), end - y);
        y = end;
    }
    progress(region.height, region.height);
}
