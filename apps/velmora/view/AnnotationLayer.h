#pragma once

#include "apps/velmora/view/OverlayTexture.h"
#include "host/annotations/AnnotationFile.h"
#include "host/annotations/AnnotationPainter.h"
#include "host/view/Camera.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A file's annotations over a picture: read while the picture is shown already, named under the cursor. GL thread
/// only.
///
/// They are drawn in tiles of the zoom, which stay as long as it does: a movement draws those that come into sight. At
/// another zoom the tiles of the one before are stretched until all are there, which may take a few frames.
class AnnotationLayer {
public:
    explicit AnnotationLayer(std::string const& path) : file_(path) {}

    /// Takes in what has been read; whether this was the moment. Throws what geojson::read throws.
    bool advance();
    /// Until it is read, for at most so long.
    void wait(std::chrono::milliseconds time) const { file_.wait(time); }
    bool isRead() const { return painter_ != nullptr; }
    /// On what is not shown; empty: all is.
    std::string const& note() const { return note_; }

    void toggle() { isOn_ = !isOn_; }
    /// "1024 annotations", or why there are none.
    std::string state() const;

    /// A part of a texture, 0 to 1 along its sides, and where it lies in the frame, in its pixels.
    struct Placed {
        OverlayTexture const* texture = nullptr;
        Place from;
        Place to;
        Place textureFrom{0, 0};
        Place textureTo{1, 1};
    };
    /// What is to be drawn, one over the other. lineWidth: in pixels of the frame. What the cursor is over is wider.
    std::vector<Placed> draw(Camera const& camera, StackPosition const& position, std::optional<Place> const& cursor,
                             double lineWidth);
    /// Whether draw() had all that there is to draw.
    bool complete() const { return complete_; }
    /// The name of what the cursor is over; empty: there is none.
    std::string const& textUnderCursor() const { return text_; }

private:
    using Clock = std::chrono::steady_clock;
    using TileIndex = std::pair<std::int64_t, std::int64_t>; // column, row

    // All that the tiles of a set have in common.
    struct Key {
        Zoom zoom;
        StackPosition position;
        double lineWidth = 0;

        bool operator==(Key const& other) const;
    };
    struct Tile {
        OverlayTexture texture;
        std::vector<Region> drawn; // blocks of it that anything is drawn on, joined in rows
    };
    struct TileSet {
        Key key;
        std::map<TileIndex, Tile> tiles;
    };

    void begin(Key const& key);
    bool paintMissing(std::vector<TileIndex> const& shown);
    static std::vector<Region> drawnBlocks(StrokeCanvas const& canvas);
    void dropUnseen(std::vector<TileIndex> const& shown);
    enum class Part { Blocks, Tiles };
    static void place(TileSet const& set, Camera const& camera, Part part, std::vector<Placed>& placed);
    void highlight(Camera const& camera, StackPosition const& position, std::optional<Place> const& cursor,
                   double lineWidth, std::vector<Placed>& placed);

    AnnotationFile file_;
    std::unique_ptr<AnnotationPainter> painter_; // null: nothing has been read yet
    std::string note_;
    bool isOn_ = true;
    bool complete_ = false;
    std::unique_ptr<TileSet> tiles_;  // of the view's zoom; null: nothing has been drawn yet
    std::unique_ptr<TileSet> before_; // the last complete one of another zoom, as long as tiles_ is not; or null
    std::optional<View> drawn_;       // last
    OverlayTexture highlighted_;
    std::string text_;
};
