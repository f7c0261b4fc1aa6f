#pragma once

#include "apps/velmora/view/AnnotationLayer.h"
#include "apps/velmora/view/OverlayTexture.h"
#include "apps/velmora/view/Ruler.h"
#include "host/display/ChannelDisplay.h"
#include "host/filter/Enhancement.h"
#include "host/image/SampleSource.h"
#include "host/view/Camera.h"
#include "host/view/PictureView.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What the viewer draws over the picture with Dear ImGui, between Overlay::begin and end.
namespace panels {

/// A picture beside that of a slide, such as its label.
struct SlideImage {
    std::string name;
    std::unique_ptr<OverlayTexture> texture;
};

/// What the panels show.
struct Model {
    PictureInfo const* info = nullptr;
    Camera const* camera = nullptr;
    OverlayTexture const* overview = nullptr; ///< the whole picture, small
    // Texts without control characters.
    std::string name;
    std::string interpretation;
    std::string message;
    std::string switches;    ///< enhancements that are on
    std::string annotations; ///< how many are shown; empty: there are none
    std::string damage;      ///< of the store; empty: none was found
    std::string pixel;       ///< under the cursor, and what it has; empty: there is none
    PictureView::Statistics statistics;
    double frameMilliseconds = 0;
    bool complete = false;
    bool help = false;
    bool figures = false;                                   ///< of the work behind the picture
    std::vector<ImageProperty> const* properties = nullptr; ///< of the file; null: they are not shown
    std::vector<SlideImage> const* slideImages = nullptr;   ///< beside them
    std::optional<enhancement::Gamma> tone;                 ///< of pictures of 16 bits
    bool toneOn = false;
    std::vector<ChannelDisplay> const* channels = nullptr; ///< that can be set; empty: none
    std::vector<Histogram> const* histograms = nullptr;    ///< of the channels
    ImageStack stack;                                      ///< in which the picture can be moved
    StackPosition position;
};

/// What the user did in the panels.
struct UserEdits {
    std::optional<Place> lookAt; ///< of the picture
    std::optional<enhancement::Gamma> tone;
    bool automaticTone = false;
    std::optional<std::vector<ChannelDisplay>> channels;
    bool automaticRanges = false; ///< of all channels
    std::optional<StackPosition> position;
};

UserEdits draw(Model const& model);

/// Borders of the tiles of the view's level, below the panels.
void drawTiles(Camera const& camera);

/// A line between two places of the picture, and its length, below the panels.
void drawRuler(Camera const& camera, Ruler::Line const& line, std::string const& length);

/// What the cursor is over, beside it, below the panels.
void drawNameAt(Place const& cursor, std::string const& name);

/// All keys.
void drawKeys();

/// What has happened, above all. isImporting: the progress of an import is below it.
void drawMessage(std::string const& text, bool isImporting);

/// A texture of the frame's size over the picture, below the panels.
void drawMask(OverlayTexture const& mask);
/// Parts of textures, below the panels.
void drawAnnotations(std::vector<AnnotationLayer::Placed> const& parts);

/// A picture that is being imported, of which a small one covers so many pixels.
void drawGrowing(OverlayTexture const& picture, Camera const& camera, Size const& covered);
/// How far the import is, 0 to 1, and the time that it still takes.
void drawProgress(std::string const& name, double share, std::string const& left, Size const& frame);

} // namespace panels
