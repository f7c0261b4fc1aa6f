#include "host/view/ChannelReader.h"

#include "host/image/PixelBands.h"

#include <utility>

namespace {

constexpr size_t kCodeBytes = 2;

// Writes a channel's codes into its half of each texel.
void put(std::vector<std::uint16_t> const& codes, std::uint8_t* to) {
    for (std::uint16_t const code : codes) {
        to[0] = static_cast<std::uint8_t>(code);
        to[1] = static_cast<std::uint8_t>(code >> 8U);
        to += pixelbands::kTexelBytes;
    }
}

} // namespace

void CurrentCoding::set(std::shared_ptr<ChannelCoding const> coding) {
    std::lock_guard<std::mutex> const lock(mutex_);
    coding_ = std::move(coding);
}

std::shared_ptr<ChannelCoding const> CurrentCoding::get() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return coding_;
}

ChannelReader::ChannelReader(std::unique_ptr<PyramidReader> reader, PictureInfo const& info,
                             std::shared_ptr<CurrentCoding const> coding)
    : info_(info), levels_(std::move(reader)), coding_(std::move(coding)) {}

void ChannelReader::read(LoadedTile& tile) {
    auto const coding = coding_->get();
    SampleFormat const& layout = levels_.facts().image.layout;
    Region const region = leveltile::shownRegion(info_, tile.job.tile);
    size_t const count = region.width * region.height;
    size_t const pairBytes = count * pixelbands::kTexelBytes;
    samples_.resize(count * layout.pixelBytes());
    levels_.read(tile.job.tile.level, region, samples_.data());
    tile.coding = coding->number;
    tile.pixels.assign((coding->channels.size() + 1) / 2 * pairBytes, 0);
    codes_.resize(count);
    for (size_t i = 0; i < coding->channels.size(); ++i) {
        ChannelCoding::Channel const& channel = coding->channels[i];
        channel.codes.encode(samples_.data(), layout, channel.band, count, codes_.data());
        put(codes_, &tile.pixels[i / 2 * pairBytes + i % 2 * kCodeBytes]);
    }
}
