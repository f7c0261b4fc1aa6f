#include "host/view/ChannelReader.h"

#include "host/view/ChannelSet.h"

#include <algorithm>
#include <numeric>
#include <utility>

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
    : info_(info),
      levels_(std::move(reader)),
      isPlain_(levels_.facts().image.layout.isPlain()),
      bandCount_(levels_.facts().image.layout.bands),
      coding_(std::move(coding)) {}

// Means of a picture with alpha need all of its bands.
void ChannelReader::take(ChannelCoding const& coding) {
    if (taken_ == coding.number) return;
    bands_.clear();
    if (isPlain_) {
        bands_.resize(bandCount_);
        std::iota(bands_.begin(), bands_.end(), size_t{0});
    }
    for (ChannelCoding::Channel const& channel : coding.channels)
        if (std::find(bands_.begin(), bands_.end(), channel.band) == bands_.end()) bands_.push_back(channel.band);
    if (!bands_.empty()) levels_.take(bands_, coding.position);
    taken_ = coding.number;
}

void ChannelReader::read(LoadedTile& tile) {
    auto const coding = coding_->get();
    Region const region = leveltile::shownRegion(info_, tile.job.tile);
    size_t const count = region.width * region.height;
    tile.coding = coding->number;
    tile.pixels = channelset::codeTexels(coding->channels.size(), count);
    if (coding->channels.empty()) return;
    take(*coding);
    SampleFormat const& layout = levels_.facts().image.layout;
    samples_.resize(count * layout.pixelBytes());
    levels_.read(tile.job.tile.level, region, samples_.data());
    codes_.resize(count);
    for (size_t i = 0; i < coding->channels.size(); ++i) {
        ChannelCoding::Channel const& channel = coding->channels[i];
        auto const band = std::find(bands_.begin(), bands_.end(), channel.band) - bands_.begin();
        channel.codes.encode(samples_.data(), layout, static_cast<size_t>(band), count, codes_.data());
        channelset::putCodes(codes_, i, tile.pixels);
    }
}
