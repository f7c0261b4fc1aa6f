#pragma once

#include "apps/velmora/view/Controls.h"
#include "apps/velmora/view/OverlayTexture.h"
#include "apps/velmora/view/Panels.h"
#include "apps/velmora/view/StepSwitches.h"
#include "apps/velmora/view/ViewerOptions.h"
#include "host/view/Camera.h"
#include "host/view/PictureView.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// A store in a window: what is shown of it, how, and what is said about it. GL thread only.
class StoreScene {
public:
    StoreScene(std::shared_ptr<RenderBackendInstance> const& instance, std::string const& store,
               ViewerOptions const& options, Size const& frame);

    Camera& camera() { return camera_; }
    void command(Controls::Command command);

    /// Tells the picture what is wanted now, and takes in what its threads have finished. Whether something new can be
    /// seen.
    bool advance();
    /// Whether the view is shown as it is wanted, but for what is damaged.
    bool complete() const;
    /// Whether it shows places where the store is damaged, striped.
    bool hasHoles() { return picture_.hasHoles(); }
    /// Waits a little for a thread of the picture's.
    void wait();

    /// Draws the picture into the host's surface, which is as large as the camera's frame.
    void present();
    /// Brings up to date what the overlay shows beside the picture, where the view is complete. Whether something was
    /// not; the view is then to be drawn again.
    bool updateExtras();
    /// Draws what lies over it, with Dear ImGui. Whether that has changed the picture.
    bool drawOverlay(std::optional<Place> const& cursor, double frameMilliseconds);

private:
    void enhance();
    void setTone(enhancement::Gamma const& tone);
    void setAutomaticTone();
    bool isDeep() const { return picture_.info().bits == 16; }
    View wantedView() const;
    void updateOverview();
    void updateMask();
    void tellOfDamage();
    std::string damageText() const;
    std::array<std::uint8_t, 3> colourAt(Place const& cursor) const;
    std::string switchesText() const;

    std::string store_;
    bool smooth_;
    PictureView picture_;
    Camera camera_;
    StepSwitches switches_;
    std::optional<View> shown_; // what picture_ was told last
    bool drawn_ = false;        // whether its last frame is of that, with all that was there
    OverlayTexture overview_;
    bool overviewFits_ = false; // whether overview_ has the enhancements
    OverlayTexture mask_;
    bool maskFits_ = false; // whether mask_ is of the view
    bool tilesOn_ = false;
    bool maskOn_ = false;
    bool helpOn_ = false;
    std::string name_; // as a person may see it, like all that follows
    std::string interpretation_;
    std::string message_;
    bool toldOfDamage_ = false;
};
