#include "apps/velmora/view/AnnotationLayer.h"

#include "host/PlainText.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

namespace {

constexpr std::int64_t kTileSide = 256;
constexpr size_t kKeptTiles = 128;             // 32 MB
constexpr std::chrono::milliseconds kPaint{6}; // of a frame's time, for tiles
constexpr size_t kMostParts = 12000;           // what draws them has indices of 16 bits, four per part
constexpr double kCursorPixels = 4;            // how far it may be from a line

// The tile that a pixel lies in.
std::int64_t tileOf(std::int64_t pixel) {
    return pixel >= 0 ? pixel / kTileSide : -((kTileSide - 1 - pixel) / kTileSide);
}

std::int64_t endOf(std::int64_t start, size_t length) {
    return start + static_cast<std::int64_t>(length);
}

} // namespace

bool AnnotationLayer::Key::operator==(Key const& other) const {
    return zoom == other.zoom && position == other.position && !(lineWidth < other.lineWidth) &&
           !(other.lineWidth < lineWidth);
}

bool AnnotationLayer::advance() {
    if (painter_ || file_.isPending()) return false;
    std::unique_ptr<geojson::Content> const content = file_.take();
    if (!content) return false;
    if (content->withoutGeometry > 0)
        note_ = "'" + std::filesystem::path(file_.path()).filename().string() + "' has " +
                counted(content->withoutGeometry, "feature") + " without a geometry, which cannot be shown";
    painter_ =
        std::make_unique<AnnotationPainter>(std::make_shared<Annotations const>(std::move(content->annotations)));
    return true;
}

std::string AnnotationLayer::state() const {
    if (!painter_) return "annotations: loading";
    return counted(painter_->annotations().shapes().size(), "annotation") + (isOn_ ? "" : ", off (a)");
}

std::vector<AnnotationLayer::Placed> AnnotationLayer::draw(Camera const& camera, StackPosition const& position,
                                                           std::optional<Place> const& cursor, double lineWidth) {
    std::vector<Placed> placed;
    text_.clear();
    complete_ = true;
    if (!painter_ || !isOn_) return placed;
    begin({camera.zoom(), position, lineWidth});
    View const view = camera.view();
    std::vector<TileIndex> shown;
    for (std::int64_t row = tileOf(view.y); row * kTileSide < endOf(view.y, view.height); ++row)
        for (std::int64_t column = tileOf(view.x); column * kTileSide < endOf(view.x, view.width); ++column)
            shown.emplace_back(column, row);
    complete_ = paintMissing(shown);
    dropUnseen(shown);
    if (complete_) before_.reset();
    place(before_ ? *before_ : *tiles_, camera, Part::Blocks, placed);
    if (placed.size() > kMostParts) {
        placed.clear();
        place(before_ ? *before_ : *tiles_, camera, Part::Tiles, placed);
    }
    // What passes below the cursor while the picture moves is not looked for.
    bool const isMoved = drawn_ != view;
    drawn_ = view;
    if (isMoved)
        complete_ = false;
    else
        highlight(camera, position, cursor, lineWidth, placed);
    return placed;
}

void AnnotationLayer::begin(Key const& key) {
    if (tiles_ && tiles_->key == key) return;
    auto next = std::make_unique<TileSet>();
    next->key = key;
    // Without one before, what there is already of the last one is better than nothing.
    if (!before_) before_ = std::move(tiles_);
    tiles_ = std::move(next);
}

// As many as a frame has time for; whether there are all.
bool AnnotationLayer::paintMissing(std::vector<TileIndex> const& shown) {
    auto const start = Clock::now();
    for (TileIndex const& index : shown) {
        if (tiles_->tiles.count(index) != 0) continue;
        if (Clock::now() - start > kPaint) return false;
        View view;
        view.zoom = tiles_->key.zoom;
        view.x = index.first * kTileSide;
        view.y = index.second * kTileSide;
        view.width = view.height = static_cast<size_t>(kTileSide);
        StrokeCanvas const& canvas = painter_->paint(view, tiles_->key.position, tiles_->key.lineWidth);
        std::vector<Region> drawn = drawnBlocks(canvas);
        Tile& tile = tiles_->tiles[index];
        if (!drawn.empty()) tile.texture.set(canvas.rgba(), {view.width, view.height}, OverlayTexture::Filter::Nearest);
        tile.drawn = std::move(drawn);
    }
    return true;
}

// What is transparent needs not be drawn over the picture.
std::vector<Region> AnnotationLayer::drawnBlocks(StrokeCanvas const& canvas) {
    constexpr size_t kSide = StrokeCanvas::kBlockSide;
    constexpr size_t kBlocks = static_cast<size_t>(kTileSide) / kSide;
    std::vector<Region> drawn;
    for (size_t row = 0; row < kBlocks; ++row) {
        bool isBegun = false;
        for (size_t column = 0; column < kBlocks; ++column) {
            bool const isDrawn = canvas.isDrawn(column, row);
            if (isDrawn && isBegun) drawn.back().width += kSide;
            if (isDrawn && !isBegun) drawn.push_back({column * kSide, row * kSide, kSide, kSide});
            isBegun = isDrawn;
        }
    }
    return drawn;
}

void AnnotationLayer::dropUnseen(std::vector<TileIndex> const& shown) {
    auto& tiles = tiles_->tiles;
    if (tiles.size() <= std::max(kKeptTiles, shown.size())) return;
    for (auto at = tiles.begin(); at != tiles.end();)
        at = std::find(shown.begin(), shown.end(), at->first) == shown.end() ? tiles.erase(at) : std::next(at);
}

void AnnotationLayer::place(TileSet const& set, Camera const& camera, Part part, std::vector<Placed>& placed) {
    View const view = camera.view();
    // 1 at the view's own zoom, where texels lie on pixels.
    double const stretch = camera.zoom().value() / set.key.zoom.value();
    auto const inFrame = [&](TileIndex const& tile, size_t x, size_t y) {
        return Place{static_cast<double>(tile.first * kTileSide + static_cast<std::int64_t>(x)) * stretch -
                         static_cast<double>(view.x),
                     static_cast<double>(tile.second * kTileSide + static_cast<std::int64_t>(y)) * stretch -
                         static_cast<double>(view.y)};
    };
    auto const inTexture = [](size_t x, size_t y) {
        constexpr auto kSide = static_cast<double>(kTileSide);
        return Place{static_cast<double>(x) / kSide, static_cast<double>(y) / kSide};
    };
    static std::vector<Region> const kWhole{{0, 0, static_cast<size_t>(kTileSide), static_cast<size_t>(kTileSide)}};
    for (auto const& [index, tile] : set.tiles) {
        bool const isWhole = part == Part::Tiles && !tile.drawn.empty();
        for (Region const& block : isWhole ? kWhole : tile.drawn) {
            size_t const right = block.x + block.width;
            size_t const bottom = block.y + block.height;
            Place const from = inFrame(index, block.x, block.y);
            Place const to = inFrame(index, right, bottom);
            if (to.x <= 0 || to.y <= 0 || from.x >= static_cast<double>(view.width) ||
                from.y >= static_cast<double>(view.height))
                continue;
            placed.push_back({&tile.texture, from, to, inTexture(block.x, block.y), inTexture(right, bottom)});
        }
    }
}

void AnnotationLayer::highlight(Camera const& camera, StackPosition const& position, std::optional<Place> const& cursor,
                                double lineWidth, std::vector<Placed>& placed) {
    if (!cursor) return;
    auto const found = painter_->find(camera.pictureAt(*cursor), kCursorPixels / camera.zoom().value(), position);
    if (!found) return;
    Annotations const& all = painter_->annotations();
    text_ = printableText(all.text(all.shapes()[*found]));
    View const view = camera.view();
    View const part = painter_->viewOf(*found, view, 2 * lineWidth);
    if (part.isEmpty()) return;
    highlighted_.set(painter_->paintOne(*found, part, 2 * lineWidth).rgba(), {part.width, part.height},
                     OverlayTexture::Filter::Nearest);
    auto const x = static_cast<double>(part.x - view.x);
    auto const y = static_cast<double>(part.y - view.y);
    placed.push_back(
        {&highlighted_, {x, y}, {x + static_cast<double>(part.width), y + static_cast<double>(part.height)}});
}
