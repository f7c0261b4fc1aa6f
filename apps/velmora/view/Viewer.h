#pragma once

#include "apps/velmora/view/Controls.h"
#include "apps/velmora/view/ImportJob.h"
#include "apps/velmora/view/OpenPanel.h"
#include "apps/velmora/view/Overlay.h"
#include "apps/velmora/view/PictureScene.h"
#include "apps/velmora/view/Redraw.h"
#include "apps/velmora/view/ScriptPlayer.h"
#include "apps/velmora/view/ViewerOptions.h"
#include "apps/velmora/view/ViewerReport.h"
#include "apps/velmora/view/Window.h"
#include "gles3renderbackend/Gles3RenderBackend.h"

#include <memory>
#include <optional>
#include <string>

/// The window that pans and zooms through a picture; where it needs a store that is not there it makes it first, and
/// shows the picture as it grows. Another picture can be opened in the window; where that fails the one before stays.
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

    // A picture on its way into a store.
    struct Import {
        Import(PictureOpener const& open, std::string const& to, ImportOptions const& options)
            : store(to), job(open, to, options) {}

        std::string store;
        ImportJob job;
        Clock::time_point start = Clock::now();
        OverlayTexture preview;
        size_t seen = 0;              // version of the preview
        std::optional<Camera> camera; // once it is known how large the picture is
        Size covered;                 // pixels of the picture that the preview covers
        bool showsKeys = false;
    };

    void openImage();
    void openChosen(std::string const& path);
    void openFile(std::string const& path);
    void openStoreOf(std::string const& image);
    void startImport(std::string const& store);
    void open(PictureSource const& source);

    void turn();
    void finishImport();
    void takeEvents();
    void handle(SDL_Event const& event);
    bool perform(Controls::Command command);
    void leave();
    void setTheme(bool isLight);
    void openPanel();
    void copyPixel();
    void saveView();
    void tell(std::string const& text);
    void waitForEvents() const;
    std::chrono::milliseconds idleTime() const;
    void playScript();
    void follow(Size const& size);
    bool isTooSoon() const;
    void followImport(Size const& size);
    void drawFrame(Size const& size, Redraw due);
    void draw(Size const& size, Redraw due);
    void drawImport(Size const& size);
    void takePreview(Size const& size);
    Camera startCamera(Size const& picture, Size const& frame) const;
    void drawProgress(Size const& size);
    void drawOwnPanels();
    Camera* shownCamera();
    void screenshot(std::string const& name);
    void write(OutputFile const& output);
    /// Empty while the window is minimised.
    Size frame() const { return window_.pixels(); }
    bool visible() const { return frame().width > 0 && frame().height > 0; }
    bool pictureComplete() const { return scene_->complete() && due_.due() != Redraw::Picture; }
    bool settled() const;

    ViewerOptions options_;
    std::optional<ViewerOptions> before_; // of the picture before, while another one is imported
    ViewerReport report_;
    Window window_;
    Gles3RenderBackend backend_;
    std::shared_ptr<RenderBackendInstance> instance_;
    Overlay overlay_;
    std::unique_ptr<Import> import_;      // until there is a store; it is what is shown,
    std::unique_ptr<PictureScene> scene_; // and else the scene: one of both is there
    OpenPanel openPanel_;
    std::string message_;               // as a person may see it
    std::string hint_;                  // shown where there is no message, until a hand does something
    std::optional<std::string> chosen_; // the file that is opened next
    DueRedraw due_;
    bool isMoved_ = false; // since the last frame
    Controls controls_;
    ScriptPlayer script_;
    Clock::time_point lastFrame_ = Clock::now();
    double frameMilliseconds_ = 0; // from the start of the last picture's draw until swap() returned
    bool quit_ = false;
    std::string damagedScreenshot_; // the first that shows a place where the store is damaged
};
