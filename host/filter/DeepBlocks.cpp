#include "host/filter/DeepBlocks.h"

#include <cstring>

DeepBlocks::DeepBlocks(std::shared_ptr<RenderBackendInstance> const& instance, size_t bands)
    : targets_(instance), bands_(bands) {}

void DeepBlocks::drawBlock(Region const& block, Region const& strip, std::vector<std::uint8_t> const& pixels,
                           std::vector<std::uint8_t>& out) {
    using Layout = SampleLayout;
    size_t const even = block.width + block.width % 2; // two samples share a texel
    auto const place = [&](size_t x, size_t y, size_t band) {
        return 2 * (((block.y - strip.y + y) * strip.width + block.x - strip.x + x) * bands_ + band);
    };
    for (size_t band = 0; band < bands_; ++band) {
        plane_.assign(2 * even * block.height, 0);
        for (size_t y = 0; y < block.height; ++y) {
            for (size_t x = 0; x < block.width; ++x)
                std::memcpy(&plane_[2 * (y * even + x)], &pixels[place(x, y, band)], 2);
        }
        OwnedTarget const drawn = targets_.upload(Layout::kOneChannel16, {even, block.height}, plane_);
        std::vector<unsigned char> const samples =
            targets_.read(drawn, Layout::kOneChannel16, {0, 0, even, block.height});
        for (size_t y = 0; y < block.height; ++y) {
            for (size_t x = 0; x < block.width; ++x)
                std::memcpy(&out[place(x, y, band)], &samples[2 * (y * even + x)], 2);
        }
    }
}
