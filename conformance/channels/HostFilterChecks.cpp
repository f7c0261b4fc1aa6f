#include "conformance/channels/HostFilterChecks.h"

#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/channels/BackdropFilter.h"
#include "host/channels/ChannelMixFilter.h"
#include "reference/Backdrop.h"
#include "reference/Blit.h"
#include "reference/ChannelMix.h"

#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::ChannelEntries;
using reference::Texels;

constexpr int kSide = 256; // as many texels as codes
constexpr size_t kCodes = 65536;

// A table for the filter, and the same for the model.
struct Table {
    std::shared_ptr<ChannelTable const> table;
    ChannelEntries entries;
};

Table tableOf(ChannelTable made) {
    auto table = std::make_shared<ChannelTable const>(std::move(made));
    return {table, {table->entries(), table->role() == ChannelTable::Role::Alpha}};
}

// Samples of 16 bits, some of which are nodata, through random colours.
Table colours(std::uint32_t randomStart) {
    std::mt19937 random(randomStart);
    ColourMap map{};
    for (Colour& colour : map)
        colour = {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                  static_cast<std::uint8_t>(random())};
    return tableOf(ChannelTable(SampleCodes(SampleType::Unsigned16, 4711, {0, 65535}), map));
}

Table alpha() {
    return tableOf(ChannelTable::alpha(SampleCodes(SampleType::Unsigned16, {}, {1000, 60000, Tone::Curve::Log})));
}

Table nothing() {
    return tableOf(ChannelTable::nothing());
}

ChannelMixParams paramsOf(Table const& first, Table const& second) {
    ChannelMixParams params;
    params.first = first.table;
    params.second = second.table;
    return params;
}

// Every code of both channels, in two orders.
Texels everyCode() {
    Texels texels(kSide, kSide);
    for (size_t i = 0; i < kCodes; ++i) {
        size_t const other = (i * 40503 + 12345) % kCodes; // an odd factor reaches all
        auto const byte = [](size_t number) { return static_cast<std::uint8_t>(number % 256); };
        texels.set(static_cast<int>(i % kSide), static_cast<int>(i / kSide),
                   {byte(i), byte(i / 256), byte(other), byte(other / 256)});
    }
    return texels;
}

void expectWhole(Trial& trial, Filter const& filter, Texels const& codes, Texels const& mixture, Table const& first,
                 Table const& second) {
    std::vector<size_t> const sources = {trial.runner().uploaded(codes, Layout::kRgba8),
                                         trial.runner().uploaded(mixture, Layout::kRgba8)};
    trial.expect(filter, sources, channelMix(codes, mixture, first.entries, second.entries), Layout::kRgba8,
                 paramsOf(first, second));
}

// A part of both sources, from different places, to another one.
void expectPart(Trial& trial, Filter const& filter, Table const& first, Table const& second) {
    Texels const codes = randomTexels(61, 40, 31);
    Texels const mixture = randomTexels(70, 50, 32);
    constexpr int kWidth = 33;
    constexpr int kHeight = 17;
    Texels codesPart(kWidth, kHeight);
    Texels mixturePart(kWidth, kHeight);
    blit(codes, 5, 7, kWidth, kHeight, codesPart, 0, 0);
    blit(mixture, 30, 3, kWidth, kHeight, mixturePart, 0, 0);
    FilterRun run;
    run.sources = {{trial.runner().uploaded(codes, Layout::kRgba8), 5, 7, false},
                   {trial.runner().uploaded(mixture, Layout::kRgba8), 30, 3, false}};
    run.input = {kWidth, kHeight};
    run.offset = {11, 2};
    trial.expectWithin(filter, run, channelMix(codesPart, mixturePart, first.entries, second.entries), Layout::kRgba8,
                       paramsOf(first, second));
}

void checkChannelMix(Trial& trial) {
    Filter const filter = trial.prepared(ChannelMixFilter::description());
    std::vector<std::pair<Table, Table>> const pairs = {{colours(1), colours(2)}, {colours(3), alpha()},
                                                        {alpha(), colours(4)},    {colours(5), nothing()},
                                                        {alpha(), alpha()},       {nothing(), nothing()}};
    for (auto const& [first, second] : pairs) {
        expectWhole(trial, filter, everyCode(), Texels(kSide, kSide), first, second);
        expectWhole(trial, filter, everyCode(), randomTexels(kSide, kSide, 8), first, second);
        expectPart(trial, filter, first, second);
    }
    for (int const length : trial.stripLengths()) {
        expectWhole(trial, filter, randomTexels(length, 2, 21), randomTexels(length, 2, 22), pairs[0].first,
                    pairs[0].second);
        expectWhole(trial, filter, randomTexels(1, length, 23), randomTexels(1, length, 24), pairs[1].first,
                    pairs[1].second);
    }
}

// Every byte with every alpha.
Texels everyByteAndAlpha() {
    Texels texels(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            auto const byte = static_cast<std::uint8_t>(x);
            texels.set(x, y, {byte, static_cast<std::uint8_t>(255 - x), byte, static_cast<std::uint8_t>(y)});
        }
    }
    return texels;
}

void checkBackdrop(Trial& trial) {
    Filter const filter = trial.prepared(BackdropFilter::description());
    for (Colour const& colour : {Colour{32, 32, 32}, {0, 255, 1}, {127, 128, 254}}) {
        BackdropParams params;
        params.colour = colour;
        Pointwise const over = {Layout::kRgba8, Layout::kRgba8,
                                [=](Texels const& texels) { return reference::overBackdrop(texels, colour); }};
        expectEach(trial, filter, over, {everyByteAndAlpha()}, params);
        expectEverywhere(trial, filter, over, params);
    }
}

} // namespace

Checks hostFilterChecks() {
    return {{ChannelMixFilter::kName, checkChannelMix}, {BackdropFilter::kName, checkBackdrop}};
}

} // namespace conformance
