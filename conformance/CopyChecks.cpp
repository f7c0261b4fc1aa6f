// Copies and masks: every byte as it was.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "host/FilterDescriptions.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/FilterParameters.h"

#include <algorithm>
#include <array>

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

constexpr std::array<Rectangle, 3> kShape = {{{3, 2, 9, 7}, {15, 5, 30, 6}, {12, 11, 21, 19}}};

std::shared_ptr<DataEnvelopes> shape(RenderBackendInstance& instance) {
    std::vector<std::vector<unsigned int>> cells;
    for (Rectangle const& rectangle : kShape) {
        for (unsigned int y = rectangle.minY; y <= rectangle.maxY; ++y) {
            for (unsigned int x = rectangle.minX; x <= rectangle.maxX; ++x)
                cells.push_back({x, y});
        }
    }
    std::vector<unsigned char> const id = {1};
    instance.dataEnvelopes(id, {{{}, cells}});
    return std::const_pointer_cast<DataEnvelopes>(instance.dataEnvelopes(id));
}

// A rectangle of cells c0 to c1 covers the texels c0 to c1 - 1.
Texels maskedByHand(Texels const& source, Texels target) {
    for (Rectangle const& cells : kShape) {
        for (auto y = static_cast<int>(cells.minY); y < static_cast<int>(cells.maxY); ++y) {
            for (auto x = static_cast<int>(cells.minX); x < static_cast<int>(cells.maxX); ++x)
                target.set(x, y, source.at(x, y));
        }
    }
    return target;
}

} // namespace

void checkBlit(Trial& trial, std::string const& name) {
    Layout const in = name == "FilterRemoveAlpha8" ? Layout::kRgba8 : layoutOf(name);
    Layout const out = name == "FilterRemoveAlpha8" ? Layout::kRgb8 : in;
    Filter const filter = trial.prepared(description::byName(name));
    FilterRunner& runner = trial.runner();
    for (Texels const& texels :
         {reference::packOneChannel16(everySample()), randomTexels(34, 17, 1), randomTexels(2048, 3, 2)})
        trial.expect(filter, {runner.uploaded(texels, in)}, shown(texels, out), out);

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
    FilterRunner& runner = trial.runner();
    constexpr int kWidth = 38;
    constexpr int kHeight = 23;
    Texels const source = randomTexels(kWidth, kHeight, 1);
    Texels const before = randomTexels(kWidth, kHeight, 2);
    std::size_t const from = runner.uploaded(source, layout);
    std::size_t const to = runner.uploaded(before, layout);
    MaskFilterParams params;
    params.envelopes = shape(*runner.instance());
    // After the uploads: the mask's program is current then, and takes its sampler's value.
    Filter const filter = trial.prepared(description::byName(name));
    runner.instance()->maskRange(from, to, filter, {0, kWidth - 1, 0, kHeight - 1}, params);
    trial.count({runner.read(to), shown(maskedByHand(source, before), layout)}, layout);
}

} // namespace conformance
