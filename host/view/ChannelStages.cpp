#include "host/view/ChannelStages.h"

#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/view/CoarsestSamples.h"

#include <string>
#include <utility>

namespace {

std::shared_ptr<ChannelCoding const> codingOf(ImageFacts const& facts, std::vector<ChannelDisplay> const& shown,
                                              StackPosition const& position, std::uint64_t number) {
    auto coding = std::make_shared<ChannelCoding>();
    coding->number = number;
    coding->position = position;
    for (ChannelDisplay const& channel : shown)
        coding->channels.push_back({channel.band, channelset::codesOf(facts, channel)});
    return coding;
}

void requireAlong(char const* option, size_t wanted, size_t extent) {
    if (wanted < extent) return;
    throw HostError(HostError::Kind::Usage,
                    std::string(option) + " is " +
                        (extent == 1 ? "0: the picture has no others" : "0 to " + std::to_string(extent - 1)));
}

StackPosition requirePosition(StackPosition const& position, ImageStack const& stack) {
    requireAlong("--z", position.slice, stack.slices);
    requireAlong("--t", position.time, stack.times);
    return position;
}

} // namespace

struct ChannelStages::Opened {
    ImageFacts facts;
    PictureInfo info;
    StackPosition position;
    ChannelOpening opening;
    std::shared_ptr<CurrentCoding> coding = std::make_shared<CurrentCoding>();

    Opened(Pyramid const& pyramid, DisplayRequest const& request)
        : facts(pyramid.facts().image),
          info(plainInfoOf(pyramid)),
          position(requirePosition(request.position, pyramid.facts().stack)),
          opening(facts, request, coarsestsamples::of(pyramid, info.levels, position)) {
        info.bands = opening.bands;
        info.interpretation = counted(facts.layout.bands, "band") + " of " + toText(facts.layout.type);
    }
};

ChannelStages::ChannelStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                             Pyramid const& pyramid, DisplayRequest const& request, size_t threads)
    : ChannelStages(instance, targets, pyramid, Opened(pyramid, request), threads) {}

ChannelStages::ChannelStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                             Pyramid const& pyramid, Opened opened, size_t threads)
    : FileStages(instance, targets, std::make_unique<MixedTiles>(instance, targets, opened.info), pyramid, opened.info,
                 threads,
                 [&] { return std::make_unique<ChannelReader>(pyramid.reader(), opened.info, opened.coding); }),
      facts_(std::move(opened.facts)),
      stack_(pyramid.facts().stack),
      position_(opened.position),
      coding_(std::move(opened.coding)),
      opening_(std::move(opened.opening)),
      mixed_(static_cast<MixedTiles&>(tiles())) {
    show(opening_.channels, opened.position);
}

ShownChannels ChannelStages::showingOf(Pyramid const& pyramid, DisplayRequest const& request) {
    Opened opened(pyramid, request);
    return {opened.info, std::move(opened.opening.channels)};
}

// Nothing below the tables throws: codes, tables and channels belong together at any time.
bool ChannelStages::show(std::vector<ChannelDisplay> const& channels, StackPosition const& position) {
    ChannelSet next(facts_, channels, channels_);
    auto tables = next.tables();
    bool const sameCodes = coding_->get() && position == position_ && next.hasCodesOf(channels_, facts_.layout.type);
    if (!sameCodes) {
        auto const before = coding_->get();
        coding_->set(codingOf(facts_, next.shown(), position, before ? before->number + 1 : 0));
        mixed_.forgetCodes();
    }
    mixed_.show(std::move(tables));
    channels_ = std::move(next);
    position_ = position;
    return !sameCodes;
}

// What was read for other channels is read once more.
std::unique_ptr<LoadedTile> ChannelStages::takeLoaded() {
    while (auto tile = loader().take()) {
        if (tile->failure || tile->coding == coding_->get()->number) return tile;
    }
    return nullptr;
}
