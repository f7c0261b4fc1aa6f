#pragma once

#include "apps/velmora/view/AnnotationLayer.h"
#include "apps/velmora/view/Controls.h"
#include "apps/velmora/view/OverlayTexture.h"
#include "apps/velmora/view/Overview.h"
#include "apps/velmora/view/Panels.h"
#include "apps/velmora/view/Redraw.h"
#include "apps/velmora/view/Ruler.h"
#include "apps/velmora/view/StepSwitches.h"
#include "apps/velmora/view/ViewerOptions.h"
#include "host/image/SmallPicture.h"
#include "host/view/Camera.h"
#include "host/view/PictureView.h"
#include "host/view/PixelProbe.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A picture in a window: what is shown of it, how, and what is said about it. Operations that change what is to be
/// seen say what has to be drawn anew; whoever draws remembers it. GL thread only.
class PictureScene {
public:
    PictureScene(std::shared_ptr<RenderBackendInstance> const& instance, PictureSource const& source,
                 ViewerOptions const& options, Size const& frame);

    Camera& camera() { return camera_; }
    Ruler& ruler() { return ruler_; }
    /// As PictureView::setBackground().
    void setBackground(std::array<std::uint8_t, 3> const& colour);
    Redraw command(Controls::Command command);
    /// Shows a file's annotations instead of those before. What cannot be read is told in the window.
    void annotate(std::string const& path);

    /// Whether another view is wanted than the one that advance() was called for last.
    bool isMoved() const { return picture_.view() != wantedView(); }
    /// Tells the picture what is wanted now, and takes in what its threads have finished.
    Redraw advance();
    /// Whether all that the view shows is loaded, but for what is damaged.
    bool complete() const;
    /// Whether the view has places where the store is damaged, striped.
    bool hasHoles() const { return picture_.hasHoles(); }
    /// Waits a little for a thread of the picture's.
    void wait();

    /// Draws the picture into the host's surface, which is as large as the camera's frame: as it is now where it is
    /// due, else as it was drawn last.
    void present(Redraw due);
    /// Brings up to date what the overlay shows beside the picture. The view is complete.
    Redraw advanceExtras();
    bool extrasComplete() const {
        return overview_.complete() && !maskIsMissing() && !answerIsDue_ && !annotationsAreDue();
    }
    /// Draws what lies over the picture, with Dear ImGui.
    Redraw drawOverlay(std::optional<Place> const& cursor, double frameMilliseconds);
    /// The pixel under the cursor, and what it has; empty: there is none.
    std::string pixelText(std::optional<Place> const& cursor) { return cursor ? pixelTextAt(*cursor) : ""; }

private:
    // What keys switch on and off, each for itself.
    struct Toggles {
        bool smooth = false;
        bool tiles = false;
        bool mask = false;
        bool help = false;
        bool properties = false;
    };

    void readProperties();
    void readFile(std::string const& path);
    void readStore(std::string const& path);
    void addSlideImage(std::string const& name, SmallPicture const& image);
    void enhance();
    Redraw toggleStep(Controls::Command command);
    void setTone(enhancement::Gamma const& tone);
    void setAutomaticTone();
    void setChannels(std::vector<ChannelDisplay> const& channels);
    Redraw moveBy(int slices, int times);
    void moveTo(StackPosition const& position);
    bool isDeep() const { return picture_.info().bits == 16; }
    View wantedView() const;
    bool maskIsMissing() const { return toggles_.mask && maskView_ != picture_.view(); }
    void updateMask();
    bool annotationsAreDue() const { return annotations_ && !annotations_->isRead(); }
    Redraw takeAnnotations();
    Redraw drawAnnotations(std::optional<Place> const& cursor);
    void tellOfDamage();
    Damages damages() const;
    std::string damageText() const;
    PictureView::Statistics statistics() const;
    std::array<std::uint8_t, 3> colourAt(Place const& cursor) const;
    std::string pixelTextAt(Place const& cursor);
    std::vector<size_t> probedBands() const;
    std::string switchesText() const;

    PictureSource source_;
    Toggles toggles_;
    PictureView picture_;
    Camera camera_;
    StepSwitches switches_;
    Ruler ruler_;
    Overview overview_;
    std::unique_ptr<PixelProbe> probe_;            // null: the picture is a store
    bool answerIsDue_ = false;                     // what the probe was asked for is to be drawn
    std::unique_ptr<AnnotationLayer> annotations_; // null: there are none
    bool annotationsAreAskedFor_ = false;          // by the command line
    OverlayTexture mask_;
    std::optional<View> maskView_; // that mask_ is of
    std::string name_;             // as a person may see it, like all that follows
    std::string interpretation_;
    std::vector<ImageProperty> properties_; // empty: they were not asked for yet
    std::vector<panels::SlideImage> slideImages_;
    std::string message_;
    bool toldOfDamage_ = false;
};
