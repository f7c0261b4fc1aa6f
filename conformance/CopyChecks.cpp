// Copies and masks: every byte as it was.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/FilterDescriptions.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/FilterParameters.h"

#include <array>
#include <vector>

namespace conformance {

namespace {

using reference::Texels;

Layout layoutOf(std::string const& name) {
    if (name == "BlitFilter1x16") return Layout::kOneChannel16;
    if (name == "BlitFilter3x16" || name == "MaskFilter3x16") return Layout::kThreeChannel16;
    if (name == "BlitFilter3x8" || name == "MaskFilter3x8") return Layout::kRgb8;
    return Layout::kRgba8;
}

// A target without alpha shows opaque pixels.
Texels shown(Texels texels, Layout layout) {
    for (std::size_t i = 3; layout == Layout::kRgb8 && i < texels.bytes.size(); i += 4)
        texels.bytes[i] = 255;
    return texels;
}

// Cells from minimum to maximum, both of them in it.
struct Rectangle {
    unsigned int minX;
    unsigned int minY;
    unsigned int maxX;
    unsigned int maxY;
};

using Shape = std::vector<Rectangle>;

std::shared_ptr<DataEnvelopes> envelopesOf(Shape const& shape, RenderBackendInstance& instance) {
    std::vector<std::vector<unsigned int>> cells;
    for (Rectangle const& rectangle : shape) {
        for (unsigned int y = rectangle.minY; y <= rectangle.maxY; ++y) {
            for (unsigned int x = rectangle.minX; x <= rectangle.maxX; ++x)
                cells.push_back({x, y});
        }
    }
    std::vector<unsigned char> const id = {1};
    instance.dataEnvelopes(id, {{{}, cells}});
    return std::const_pointer_cast<DataEnvelopes>(instance.dataEnvelopes(id));
}

// A mask drawn into a target that starts amid the image, in texels.
struct Masking {
    Texels source;
    Texels target;
    unsigned int xStart;
    unsigned int yStart;
    Shape shape;
};

// Which texel of the source a texel of the target shows.
using Place = std::array<int, 2> (*)(int x, int y);

// A rectangle of cells c0 to c1 covers the texels c0 to c1 - 1.
Texels maskedByHand(Masking const& masking, Place place) {
    Texels target = masking.target;
    for (Rectangle const& cells : masking.shape) {
        for (auto y = cells.minY - masking.yStart; y < cells.maxY - masking.yStart; ++y) {
            for (auto x = cells.minX - masking.xStart; x < cells.maxX - masking.xStart; ++x) {
                auto const column = static_cast<int>(x);
                auto const row = static_cast<int>(y);
                auto const [sourceColumn, sourceRow] = place(column, row);
                target.set(column, row, masking.source.at(sourceColumn, sourceRow));
            }
        }
    }
    return target;
}

void expectMasked(Trial& trial, Filter const& description, Layout layout, Masking const& masking, Place place) {
    FilterRunner& runner = trial.runner();
    std::size_t const from = runner.uploaded(masking.source, layout);
    std::size_t const to = runner.uploaded(masking.target, layout);
    MaskFilterParams params;
    params.envelopes = envelopesOf(masking.shape, *runner.instance());
    // After the uploads: the mask's program is current then, and takes its sampler's value.
    Filter const filter = trial.prepared(description);
    auto const width = static_cast<std::size_t>(masking.target.width);
    auto const height = static_cast<std::size_t>(masking.target.height);
    runner.instance()->maskRange(
        from, to, filter, {masking.xStart, masking.xStart + width - 1, masking.yStart, masking.yStart + height - 1},
        params);
    trial.count({runner.read(to), shown(maskedByHand(masking, place), layout)}, layout);
    runner.eraseTargets();
}

std::array<int, 2> samePlace(int x, int y) {
    return {x, y};
}

// Borders that leave half of the source's columns and rows, which then fill the target: each texel four times.
constexpr int kBorderLeft = 6;
constexpr int kBorderRight = 14;
constexpr int kBorderTop = 5;
constexpr int kBorderBottom = 7;

Filter bordered(Filter const& mask, Layout layout) {
    return {mask.name(),
            logicalWidth(layout, kBorderLeft),
            logicalWidth(layout, kBorderRight),
            kBorderTop,
            kBorderBottom,
            0,
            1,
            0,
            1,
            1,
            1,
            1,
            1,
            1,
            RenderBackend::NEAREST};
}

std::array<int, 2> insideTheBorders(int x, int y) {
    return {kBorderLeft + x / 2, kBorderTop + y / 2};
}

} // namespace

void checkBlit(Trial& trial, std::string const& name) {
    Layout const in = name == "FilterRemoveAlpha8" ? Layout::kRgba8 : layoutOf(name);
    Layout const out = name == "FilterRemoveAlpha8" ? Layout::kRgb8 : in;
    Filter const filter = trial.prepared(description::byName(name));
    Pointwise const copy = {in, out, [=](Texels const& texels) { return shown(texels, out); }};
    expectEach(trial, filter, copy,
               {reference::packOneChannel16(everySample()), randomTexels(34, 17, 1), randomTexels(2048, 3, 2)});
    expectEverywhere(trial, filter, copy);

    // The two texels of a pixel are copied one by one, also to an odd one first.
    FilterRunner& runner = trial.runner();
    Texels const texels = randomTexels(40, 9, 4);
    FilterRun run;
    run.sources = {{runner.uploaded(texels, in), logicalWidth(in, 6), 1, false}};
    run.width = logicalWidth(in, 22);
    run.height = 7;
    run.clipLeft = logicalWidth(in, 4);
    run.clipRight = logicalWidth(in, 2);
    run.clipTop = 1;
    run.clipBottom = 2;
    run.offset = {3, 3};
    Texels kept(16, 4);
    for (int y = 0; y < kept.height; ++y) {
        for (int x = 0; x < kept.width; ++x)
            kept.set(x, y, texels.at(10 + x, 2 + y));
    }
    trial.expectWithin(filter, run, kept, out);
}

void checkMask(Trial& trial, std::string const& name) {
    Layout const layout = layoutOf(name);
    Filter const mask = description::byName(name);
    Shape const shape = {{3, 2, 9, 7}, {15, 5, 30, 6}, {12, 11, 21, 19}};
    expectMasked(trial, mask, layout, {randomTexels(38, 23, 1), randomTexels(38, 23, 2), 0, 0, shape}, samePlace);
    Shape const amid = {{103, 52, 109, 57}, {115, 55, 130, 56}, {112, 61, 121, 69}};
    expectMasked(trial, mask, layout, {randomTexels(64, 40, 3), randomTexels(38, 23, 4), 101, 51, amid}, samePlace);
    constexpr int kWidth = 2 * (kBorderLeft + kBorderRight);
    constexpr int kHeight = 2 * (kBorderTop + kBorderBottom);
    expectMasked(trial, bordered(mask, layout), layout,
                 {randomTexels(kWidth, kHeight, 5), randomTexels(kWidth, kHeight, 6), 0, 0, shape}, insideTheBorders);
    for (int const length : trial.stripLengths()) {
        auto const texels = static_cast<unsigned int>(length);
        expectMasked(trial, mask, layout,
                     {randomTexels(length, 1, 7), randomTexels(length, 1, 8), 5, 3, {{6, 3, texels + 4, 4}}},
                     samePlace);
        expectMasked(trial, mask, layout,
                     {randomTexels(2, length, 9), randomTexels(2, length, 10), 3, 5, {{3, 6, 5, texels + 4}}},
                     samePlace);
    }
}

} // namespace conformance
