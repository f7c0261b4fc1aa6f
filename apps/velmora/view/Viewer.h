#pragma once

#include "apps/velmora/view/Controls.h"
#include "apps/velmora/view/ImportJob.h"
#include "apps/velmora/view/Overlay.h"
#include "apps/velmora/view/ScriptPlayer.h"
#include "apps/velmora/view/StoreScene.h"
#include "apps/velmora/view/ViewerOptions.h"
#include "apps/velmora/view/ViewerReport.h"
#include "apps/velmora/view/Window.h"
#include "gles3renderbackend/Gles3RenderBackend.h"

#include <memory>
#include <string>

/// The window that pans and zooms through a store; one of a picture that is none yet it makes first, and shows the
/// picture as it grows.
///
/// Each turn takes in events, then what threads have finished, and draws where something new can be seen. Where nothing
/// is under way a turn waits for events.
class Viewer {
public:
    /// Opens the window. Throws HostError.
    explicit Viewer(ViewerOptions const& options);

    /// Until the user leaves. Throws HostError, what TileStore throws, Interrupted, and VelmoraException; at the end
    /// HostError (damaged store) where a screenshot shows what is damaged.
    void run();

private:
    using Clock = std::chrono::steady_clock;

    void startImport(std::string const& store);
    void open(std::string const& store);

    void turn();
    void takeEvents();
    void handle(SDL_Event const& event);
    void waitForEvents() const;
    std::chrono::milliseconds idleTime() const;
    void playScript();
    void follow(Size const& size);
    void followImport(Size const& size);
    void draw(Size const& size);
    void note(bool newPicture);
    void drawImport(Size const& size);
    void screenshot(std::string const& name);
    bool settled() const { return settled_; }
    Size frame() const { return window_.pixels(); }

    ViewerOptions options_;
    ViewerReport report_;
    Window window_;
    Gles3RenderBackend backend_;
    std::shared_ptr<RenderBackendInstance> instance_;
    Overlay overlay_;
    OverlayTexture growing_;
    std::size_t growingSeen_ = 0;
    std::unique_ptr<ImportJob> import_;
    std::string importedStore_;
    std::unique_ptr<StoreScene> scene_;
    Controls controls_;
    ScriptPlayer script_;
    Clock::time_point lastFrame_ = Clock::now();
    double frameMilliseconds_ = 0; // that the last new picture took, until it was on the screen
    int framesToDraw_ = 0;         // the overlay takes some until it is as it stays
    bool seen_ = false;            // whether an event has come that may change what is drawn
    bool settled_ = false;         // whether all is shown that was asked for
    bool quit_ = false;
    std::string damagedScreenshot_; // the first that shows a place where the store is damaged
};
