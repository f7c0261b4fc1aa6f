// Masks: the source's bytes under a shape.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/FilterParameters.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::Texels;

// Cells from minimum to maximum, both inclusive.
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

// The texel of the source that a texel of the target shows.
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
    TexelRunner& runner = trial.runner();
    size_t const from = runner.uploaded(masking.source, layout);
    size_t const to = runner.uploaded(masking.target, layout);
    MaskFilterParams params;
    params.envelopes = envelopesOf(masking.shape, *runner.instance());
    // After the uploads: the mask's program is current then, and takes its sampler's value.
    Filter const filter = trial.prepared(description);
    auto const width = static_cast<size_t>(masking.target.width);
    auto const height = static_cast<size_t>(masking.target.height);
    runner.instance()->maskRange(
        from, to, filter, {masking.xStart, masking.xStart + width - 1, masking.yStart, masking.yStart + height - 1},
        params);
    trial.count({runner.read(to), shown(maskedByHand(masking, place), layout)}, layout);
    runner.eraseTargets();
}

std::array<int, 2> samePlace(int x, int y) {
    return {x, y};
}

// Borders that leave half of the source's columns and rows; these fill the target: each texel four times.
constexpr int kBorderLeft = 6;
constexpr int kBorderRight = 14;
constexpr int kBorderTop = 5;
constexpr int kBorderBottom = 7;

// Borders in texels.
Filter bordered(Filter const& mask, Layout layout, int left, int right, int top, int bottom) {
    return {mask.name(),
            logicalWidth(layout, left),
            logicalWidth(layout, right),
            static_cast<size_t>(top),
            static_cast<size_t>(bottom),
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

// Executed like any other filter it copies; with borders it copies the pixels inside them.
void expectCopies(Trial& trial, std::string const& name, Layout layout) {
    Filter const mask = description::byName(name);
    Filter const filter = trial.prepared(mask);
    Pointwise const copy = {layout, layout, [=](Texels const& texels) { return shown(texels, layout); }};
    expectEach(trial, filter, copy, {reference::packOneChannel16(everySample()), randomTexels(34, 17, 1)});
    expectStrips(trial, filter, copy);
    constexpr int kRight = 2;
    constexpr int kTop = 3;
    constexpr int kBottom = 4;
    int const left = layout == Layout::kThreeChannel16 ? 6 : 5; // whole pixels
    Texels const texels = randomTexels(30, 21, 7);
    Texels const inside =
        reference::cropped(texels, left, kTop, texels.width - left - kRight, texels.height - kTop - kBottom);
    trial.expect(trial.prepared(bordered(mask, layout, left, kRight, kTop, kBottom)),
                 {trial.runner().uploaded(texels, layout)}, shown(inside, layout), layout);
}

void expectShapes(Trial& trial, Filter const& mask, Layout layout) {
    Shape const shape = {{3, 2, 9, 7}, {15, 5, 30, 6}, {12, 11, 21, 19}};
    expectMasked(trial, mask, layout, {randomTexels(38, 23, 1), randomTexels(38, 23, 2), 0, 0, shape}, samePlace);
    Shape const amid = {{103, 52, 109, 57}, {115, 55, 130, 56}, {112, 61, 121, 69}};
    expectMasked(trial, mask, layout, {randomTexels(64, 40, 3), randomTexels(38, 23, 4), 101, 51, amid}, samePlace);
    constexpr int kWidth = 2 * (kBorderLeft + kBorderRight);
    constexpr int kHeight = 2 * (kBorderTop + kBorderBottom);
    expectMasked(trial, bordered(mask, layout, kBorderLeft, kBorderRight, kBorderTop, kBorderBottom), layout,
                 {randomTexels(kWidth, kHeight, 5), randomTexels(kWidth, kHeight, 6), 0, 0, shape}, insideTheBorders);
}

void expectMaskedStrips(Trial& trial, Filter const& mask, Layout layout) {
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

std::pair<std::string const, Check> maskCheck(std::string const& name, Layout layout) {
    return {name, [=](Trial& trial) {
                Filter const mask = description::byName(name);
                expectCopies(trial, name, layout);
                expectShapes(trial, mask, layout);
                if (trial.thorough()) expectMaskedStrips(trial, mask, layout);
            }};
}

} // namespace

Checks maskChecks() {
    return {maskCheck("MaskFilter3x8", Layout::kRgb8), maskCheck("MaskFilter4x8", Layout::kRgba8),
            maskCheck("MaskFilter3x16", Layout::kThreeChannel16)};
}

} // namespace conformance
