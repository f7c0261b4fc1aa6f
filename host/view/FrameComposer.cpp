#include "host/view/FrameComposer.h"

#include <algorithm>

namespace {

using Layout = SampleLayout;

// Pixels of a frame that are scaled at once, and room for the samples that they read: kPiece * 63 / 32, up to 63 before
// them, where corners are aligned, and one on each side. SwiftShader has 16 fractional bits per texture coordinate,
// which tell 1/64 of a sample apart up to a width of 1024.
constexpr size_t kPiece = 384;
constexpr size_t kCanvas = 840;

// Of holes: so many pixels wide along both axes.
constexpr size_t kStripe = 8;
constexpr std::array<unsigned char, 4> kDarkStripe = {0, 0, 0, 255};
constexpr std::array<unsigned char, 4> kLightStripe = {255, 0, 255, 255};

// Corners of what is scaled lie on multiples of `samples`. Weighing reads one sample before and one behind.
Interval samplesRead(Zoom const& zoom, bool smooth, Interval const& samples, size_t end) {
    size_t const before = smooth ? std::min<size_t>(samples.start, 1) : 0;
    size_t const start = (samples.start - before) / zoom.samples() * zoom.samples();
    return {start, std::min(samples.start + samples.length + (smooth ? 1 : 0), end) - start};
}

} // namespace

FrameComposer::FrameComposer(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, ShownTiles& tiles,
                             PictureInfo const& info)
    : instance_(std::move(instance)), targets_(targets), tiles_(tiles), info_(info) {}

OwnedTarget FrameComposer::draw(View const& view, std::array<std::uint8_t, 3> const& background,
                                std::vector<Region> const& holes) {
    background_ = {background[0], background[1], background[2], 255};
    OwnedTarget frame = targets_.target(Layout::kRgba8, {view.width, view.height});
    instance_->clear(frame.id(), background_);
    Region const all = view.pixelsOf(info_);
    for (size_t y = all.y; y < all.y + all.height; y += kPiece) {
        for (size_t x = all.x; x < all.x + all.width; x += kPiece)
            drawPiece(view, {x, y, std::min(kPiece, all.x + all.width - x), std::min(kPiece, all.y + all.height - y)},
                      frame);
    }
    for (Region const& hole : holes)
        stripe(view, common(hole, all), frame);
    return frame;
}

// Nothing that a picture would be taken for. The stripes belong to the picture's pixels, and move with them.
void FrameComposer::stripe(View const& view, Region const& pixels, OwnedTarget const& frame) {
    std::vector<unsigned char> texels;
    for (size_t y = pixels.y; y < pixels.y + pixels.height; y += kPiece) {
        for (size_t x = pixels.x; x < pixels.x + pixels.width; x += kPiece) {
            size_t const width = std::min(kPiece, pixels.x + pixels.width - x);
            size_t const height = std::min(kPiece, pixels.y + pixels.height - y);
            texels.clear();
            for (size_t i = 0; i < width * height; ++i) {
                bool const dark = (x + i % width + y + i / width) / kStripe % 2 == 0;
                texels.insert(texels.end(), dark ? kDarkStripe.begin() : kLightStripe.begin(),
                              dark ? kDarkStripe.end() : kLightStripe.end());
            }
            targets_.draw(frame, Layout::kRgba8, {width, height}, texels,
                          {static_cast<size_t>(static_cast<std::int64_t>(x) - view.x),
                           static_cast<size_t>(static_cast<std::int64_t>(y) - view.y), width, height});
        }
    }
}

void FrameComposer::drawPiece(View const& view, Region const& pixels, OwnedTarget const& frame) {
    Zoom const& zoom = view.zoom;
    auto const frameX = static_cast<size_t>(static_cast<std::int64_t>(pixels.x) - view.x);
    auto const frameY = static_cast<size_t>(static_cast<std::int64_t>(pixels.y) - view.y);
    if (zoom.isWhole()) {
        gather(zoom.level(), pixels, frame, frameX, frameY);
        return;
    }
    bool const smooth = view.smooth && zoom.pixels() < zoom.samples();
    Size const level = leveltile::levelExtent(info_, zoom.level());
    Region const samples = view.samplesOf(pixels);
    Interval const x = samplesRead(zoom, smooth, {samples.x, samples.width}, level.width);
    Interval const y = samplesRead(zoom, smooth, {samples.y, samples.height}, level.height);
    Region const read = regionOf(x, y);
    OwnedTarget const& side = canvas(smooth);
    gather(zoom.level(), read, side, 0, 0);
    if (smooth) repeatEdges(side, read, level);
    targets_.drawScaled(side,
                        {zoom.pixels(),
                         zoom.samples(),
                         wholeOf(sizeOf(read)),
                         pixels.x - read.x / zoom.samples() * zoom.pixels(),
                         pixels.y - read.y / zoom.samples() * zoom.pixels(),
                         {frameX, frameY, pixels.width, pixels.height}},
                        frame);
}

OwnedTarget const& FrameComposer::canvas(bool smooth) {
    auto& canvas = smooth ? smoothCanvas_ : canvas_;
    if (!canvas) {
        instance_->clearTargets(); // one of them might fit that is larger
        canvas.emplace(targets_.target(Layout::kRgba8, {kCanvas, kCanvas},
                                       smooth ? RenderBackend::LINEAR : RenderBackend::NEAREST));
    }
    return *canvas;
}

// Beyond the picture its last sample goes on, as textures do that end there. No target is read while it is drawn into.
void FrameComposer::repeatEdges(OwnedTarget const& canvas, Region const& samples, Size const& level) {
    auto const repeat = [&](Region const& edge, size_t x, size_t y) {
        OwnedTarget const copy = targets_.target(Layout::kRgba8, {edge.width, edge.height});
        targets_.copy(Layout::kRgba8, canvas, edge, copy, 0, 0);
        targets_.copy(Layout::kRgba8, copy, wholeOf(sizeOf(edge)), canvas, x, y);
    };
    if (samples.x + samples.width == level.width) repeat({samples.width - 1, 0, 1, samples.height}, samples.width, 0);
    if (samples.y + samples.height == level.height)
        repeat({0, samples.height - 1, samples.width + 1, 1}, 0, samples.height);
}

void FrameComposer::gather(size_t level, Region const& samples, OwnedTarget const& to, size_t x, size_t y) {
    for (LevelTile const& tile : leveltile::over(level, samples)) {
        Region const shown = leveltile::shownRegion(info_, tile);
        Region const part = common(shown, samples);
        LevelTile source = tile;
        while (!tiles_.has(source) && source.level < info_.levels)
            source = leveltile::parent(source);
        OwnedTarget const* const texels = tiles_.texels(source);
        size_t const toX = x + part.x - samples.x;
        size_t const toY = y + part.y - samples.y;
        if (texels == nullptr) {
            // Whatever was drawn here before.
            instance_->clearRect(to.id(), background_, {toX, toY, part.width, part.height});
            continue;
        }
        if (source.level > level)
            enlarge(source, *texels, part, level, {toX, toY, part.width, part.height}, to);
        else
            targets_.copy(Layout::kRgba8, *texels, {part.x - shown.x, part.y - shown.y, part.width, part.height}, to,
                          toX, toY);
    }
}

// `samples` of `level` out of a coarser tile, each of whose own is 2, 4, ... of them long.
void FrameComposer::enlarge(LevelTile const& coarser, OwnedTarget const& texels, Region const& samples, size_t level,
                            Region const& area, OwnedTarget const& to) {
    size_t const length = size_t{1} << (coarser.level - level);
    Region const shown = leveltile::shownRegion(info_, coarser);
    size_t const left = samples.x / length;
    size_t const top = samples.y / length;
    Region const part = {left - shown.x, top - shown.y, (samples.x + samples.width - 1) / length + 1 - left,
                         (samples.y + samples.height - 1) / length + 1 - top};
    targets_.drawScaled(texels, {length, 1, part, samples.x - left * length, samples.y - top * length, area}, to);
}
