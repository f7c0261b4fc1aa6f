#include "host/view/ChannelStages.h"

#include "host/HostError.h"
#include "host/display/ChannelTable.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <string>
#include <utility>

namespace {

bool isAlpha(ChannelDisplay const& channel) {
    return channel.role == ChannelTable::Role::Alpha;
}

// Those that are on; alpha last, for it limits what the others have made.
std::vector<ChannelDisplay> shownOf(std::vector<ChannelDisplay> const& channels) {
    std::vector<ChannelDisplay> shown;
    std::copy_if(channels.begin(), channels.end(), std::back_inserter(shown),
                 [](ChannelDisplay const& channel) { return channel.isOn; });
    std::stable_partition(shown.begin(), shown.end(), [](ChannelDisplay const& channel) { return !isAlpha(channel); });
    return shown;
}

SampleCodes codesOf(ImageFacts const& facts, ChannelDisplay const& channel) {
    return {facts.layout.type, facts.nodata, channel.tone};
}

// Whether threads make the same codes for both.
bool haveSameCodes(SampleType type, std::vector<ChannelDisplay> const& before, std::vector<ChannelDisplay> const& now) {
    return std::equal(before.begin(), before.end(), now.begin(), now.end(),
                      [&](ChannelDisplay const& one, ChannelDisplay const& other) {
                          return one.band == other.band && (!SampleCodes::followTone(type) || one.tone == other.tone);
                      });
}

std::shared_ptr<ChannelCoding const> codingOf(ImageFacts const& facts, std::vector<ChannelDisplay> const& shown,
                                              StackPosition const& position, std::uint64_t number) {
    auto coding = std::make_shared<ChannelCoding>();
    coding->number = number;
    coding->position = position;
    for (ChannelDisplay const& channel : shown)
        coding->channels.push_back({channel.band, codesOf(facts, channel)});
    return coding;
}

std::shared_ptr<ChannelTable const> tableOf(ImageFacts const& facts, ChannelDisplay const& channel) {
    SampleCodes const codes = codesOf(facts, channel);
    return std::make_shared<ChannelTable const>(isAlpha(channel) ? ChannelTable::alpha(codes)
                                                                 : ChannelTable(codes, channel.colours));
}

// Those of channels that look as they did stay: they are on the GPU.
MixedTiles::Tables tablesOf(ImageFacts const& facts, std::vector<ChannelDisplay> const& shown,
                            std::vector<ChannelDisplay> const& before, MixedTiles::Tables const& tablesBefore) {
    MixedTiles::Tables tables;
    for (ChannelDisplay const& channel : shown) {
        auto const same = std::find(before.begin(), before.end(), channel);
        tables.push_back(same == before.end() ? tableOf(facts, channel)
                                              : tablesBefore[static_cast<size_t>(same - before.begin())]);
    }
    return tables;
}

// Of all bands.
std::vector<std::uint8_t> coarsestSamples(Pyramid const& pyramid, size_t level, StackPosition const& position) {
    PyramidTiles levels(pyramid.reader());
    std::vector<size_t> bands(pyramid.facts().image.layout.bands);
    std::iota(bands.begin(), bands.end(), size_t{0});
    levels.take(bands, position);
    Size const size = levels.size(level);
    std::vector<std::uint8_t> samples(size.width * size.height * levels.facts().image.layout.pixelBytes());
    levels.read(level, wholeOf(size), samples.data());
    return samples;
}

void requireAlong(char const* option, size_t wanted, size_t extent) {
    if (wanted < extent) return;
    throw HostError(HostError::Kind::Usage,
                    std::string(option) + " is " +
                        (extent == 1 ? "0: the picture has no others" : "0 to " + std::to_string(extent - 1)));
}

void requirePosition(StackPosition const& position, ImageStack const& stack) {
    requireAlong("--z", position.slice, stack.slices);
    requireAlong("--t", position.time, stack.times);
}

bool mayBeTransparent(ImageFacts const& facts, std::vector<ChannelDisplay> const& channels) {
    bool const isFloat = facts.layout.type == SampleType::Float32 || facts.layout.type == SampleType::Float64;
    return isFloat || facts.nodata || std::any_of(channels.begin(), channels.end(), isAlpha);
}

bool isGrey(std::vector<ChannelDisplay> const& channels) {
    return std::all_of(channels.begin(), channels.end(), [](ChannelDisplay const& channel) {
        return isAlpha(channel) ||
               std::all_of(channel.colours.begin(), channel.colours.end(),
                           [](Colour const& colour) { return colour[0] == colour[1] && colour[1] == colour[2]; });
    });
}

} // namespace

struct ChannelStages::Opened {
    ImageFacts facts;
    PictureInfo info;
    StackPosition position;
    std::vector<ChannelDisplay> channels;
    std::vector<Tone> automatic;
    std::vector<Histogram> histograms;
    std::shared_ptr<CurrentCoding> coding;

    Opened(Pyramid const& pyramid, DisplayRequest const& request)
        : facts(pyramid.facts().image), info(plainInfoOf(pyramid)), coding(std::make_shared<CurrentCoding>()) {
        requirePosition(request.position, pyramid.facts().stack);
        position = request.position;
        auto const samples = coarsestSamples(pyramid, info.levels, position);
        channels = displayrequest::channelsFor(request, facts, samples);
        histograms = displayrequest::histogramsOf(channels, facts, samples);
        DisplayRequest plain;
        plain.automaticRange = true;
        for (ChannelDisplay const& channel : displayrequest::channelsFor(plain, facts, samples))
            automatic.push_back(channel.tone);
        info.bands = (isGrey(channels) ? size_t{1} : size_t{3}) + (mayBeTransparent(facts, channels) ? 1 : 0);
        info.interpretation = std::to_string(facts.layout.bands) +
                              (facts.layout.bands == 1 ? " band of " : " bands of ") + toText(facts.layout.type);
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
      automatic_(std::move(opened.automatic)),
      histograms_(std::move(opened.histograms)),
      mixed_(static_cast<MixedTiles&>(tiles())) {
    show(opened.channels, opened.position);
}

ChannelStages::Showing ChannelStages::showingOf(Pyramid const& pyramid, DisplayRequest const& request) {
    Opened opened(pyramid, request);
    return {opened.info, std::move(opened.channels)};
}

std::vector<ChannelDisplay> ChannelStages::automaticChannels() const {
    auto channels = channels_;
    for (size_t i = 0; i < channels.size(); ++i) {
        channels[i].tone.low = automatic_[i].low;
        channels[i].tone.high = automatic_[i].high;
    }
    return channels;
}

// Nothing below the tables throws: codes, tables and channels belong together at any time.
bool ChannelStages::show(std::vector<ChannelDisplay> const& channels, StackPosition const& position) {
    auto kept = channels;
    auto shown = shownOf(channels);
    auto tables = tablesOf(facts_, shown, shown_, tables_);
    auto shownTables = tables;
    bool const sameCodes = coding_->get() && position == position_ && haveSameCodes(facts_.layout.type, shown_, shown);
    if (!sameCodes) {
        auto const before = coding_->get();
        coding_->set(codingOf(facts_, shown, position, before ? before->number + 1 : 0));
        mixed_.forgetCodes();
    }
    mixed_.show(std::move(shownTables));
    channels_ = std::move(kept);
    shown_ = std::move(shown);
    tables_ = std::move(tables);
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
