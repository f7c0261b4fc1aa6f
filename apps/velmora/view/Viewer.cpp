#include "apps/velmora/view/Viewer.h"

#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/view/Panels.h"
#include "gles3renderbackend/Gl.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/output/PngWriter.h"
#include "host/store/TileStore.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {

constexpr int kSettlingFrames = 3;
// A picture that grows is drawn so often: the processor has the import to do.
constexpr std::chrono::milliseconds kImportTurn{100};
// Signals do not wake SDL: they are looked for so often.
constexpr std::chrono::milliseconds kIdleTurn{200};

} // namespace

Viewer::Viewer(ViewerOptions const& options)
    : options_(options),
      window_("velmora - " + printableText(picturefiles::nameOf(options.image)), options.window),
      backend_(RenderBackend::RGBA32, options.bandBytes),
      instance_(backend_.createInstance(window_)),
      script_(options.script) {
    bool const isStore = !options_.image.empty() && TileStore::isStore(options_.image);
    std::string const store = isStore ? options_.image : picturefiles::cachedStore(options_.image, options_.selection);
    if (isStore || picturefiles::isUsableStore(store))
        open(store);
    else
        startImport(store);
}

void Viewer::startImport(std::string const& store) {
    ImportOptions options = picturefiles::cacheOptions(options_.image);
    options.jobs = options_.importJobs;
    importedStore_ = store;
    import_ = std::make_unique<ImportJob>(picturefiles::openerOf(options_.image, options_.selection), store, options);
}

void Viewer::open(std::string const& store) {
    scene_ = std::make_unique<StoreScene>(instance_, store, options_, frame());
    framesToDraw_ = kSettlingFrames;
}

void Viewer::run() {
    while (!quit_)
        turn();
    // An import stops between two strips of its picture; nobody need look at that.
    window_.hide();
    import_.reset();
    if (options_.report) report_.print();
    if (!damagedScreenshot_.empty())
        throw HostError(HostError::Kind::DamagedStore,
                        "'" + damagedScreenshot_ +
                            "' has stripes where the tile store is damaged; import the picture " +
                            "again, or restore the store from a copy");
}

void Viewer::turn() {
    interruption::throwIfNoted();
    takeEvents();
    if (import_ && import_->done()) {
        import_.reset();
        open(importedStore_);
    }
    Size const size = frame();
    // Nothing can be seen of a minimised window.
    if (size.width > 0 && size.height > 0) follow(size);
    playScript();
    if (!options_.screenshot.empty() && settled()) {
        screenshot(options_.screenshot);
        quit_ = true;
    }
}

void Viewer::playScript() {
    ScriptPlayer::Host host;
    Size const size = frame();
    bool const minimised = size.width == 0 || size.height == 0;
    host.complete = settled() || (minimised && scene_);
    host.resize = [this](int width, int height) {
        window_.resize({static_cast<std::size_t>(width), static_cast<std::size_t>(height)});
    };
    host.screenshot = [this](std::string const& file) { screenshot(file); };
    script_.turn(host);
}

void Viewer::follow(Size const& size) {
    if (!scene_) return followImport(size);
    if (size.width != scene_->camera().frame().width || size.height != scene_->camera().frame().height)
        scene_->camera().resize(size);
    bool const changed = scene_->advance();
    if (changed || seen_) framesToDraw_ = kSettlingFrames;
    // As long as there is more to come the overlay may lag behind.
    if (changed || seen_ || (framesToDraw_ > 0 && scene_->complete())) {
        seen_ = false;
        --framesToDraw_;
        auto const start = Clock::now();
        draw(size);
        window_.swap();
        if (changed) frameMilliseconds_ = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        note(changed);
    } else if (!scene_->complete()) {
        scene_->wait();
    } else if (!options_.bare && scene_->updateExtras()) {
        framesToDraw_ = kSettlingFrames;
    } else {
        settled_ = true;
    }
}

void Viewer::followImport(Size const& size) {
    if (!seen_ && Clock::now() - lastFrame_ < kImportTurn) return;
    seen_ = false;
    drawImport(size);
    window_.swap();
    report_.frame();
    if (!growing_.empty()) report_.firstPicture();
}

void Viewer::note(bool newPicture) {
    report_.frame();
    if (newPicture) report_.firstPicture();
    if (scene_->complete()) report_.fullDetail();
}

void Viewer::draw(Size const& size) {
    auto const now = Clock::now();
    double const sinceLast = std::chrono::duration<double>(now - lastFrame_).count();
    lastFrame_ = now;
    scene_->present();
    if (options_.bare) return;
    overlay_.begin(size, window_.pixelsPerUnit(), sinceLast);
    if (scene_->drawOverlay(controls_.cursor(), frameMilliseconds_)) framesToDraw_ = kSettlingFrames;
    overlay_.end();
}

void Viewer::drawImport(Size const& size) {
    ImportPreview::Image const image = import_->picture().takeNew(growingSeen_);
    if (!image.rgba.empty()) growing_.set(image.rgba, {image.width, image.height});
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDisable(GL_SCISSOR_TEST);
    auto const& background = options_.picture.background;
    glClearColor(static_cast<float>(background[0]) / 255, static_cast<float>(background[1]) / 255,
                 static_cast<float>(background[2]) / 255, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    overlay_.begin(size, window_.pixelsPerUnit(), std::chrono::duration<double>(kImportTurn).count());
    panels::drawGrowing(growing_, size);
    if (!options_.bare)
        panels::drawProgress(printableText(picturefiles::nameOf(options_.image)), import_->share(), size);
    overlay_.end();
    lastFrame_ = Clock::now();
}

void Viewer::takeEvents() {
    waitForEvents();
    SDL_Event event{};
    while (SDL_PollEvent(&event) == 1)
        handle(event);
}

void Viewer::waitForEvents() const {
    auto const time = idleTime();
    if (time.count() > 0) SDL_WaitEventTimeout(nullptr, static_cast<int>(time.count()));
}

// How long nothing is to be done unless an event comes.
std::chrono::milliseconds Viewer::idleTime() const {
    Size const size = frame();
    bool const visible = size.width > 0 && size.height > 0;
    if (scene_ && visible && !settled_) return std::chrono::milliseconds(0);
    if (script_.active()) return std::chrono::milliseconds(1);
    return import_ ? kImportTurn : kIdleTurn;
}

void Viewer::handle(SDL_Event const& event) {
    double const pixelsPerUnit = window_.pixelsPerUnit();
    window_.note(event);
    overlay_.handle(event, pixelsPerUnit);
    Camera* const camera = scene_ ? &scene_->camera() : nullptr;
    Controls::Command const command =
        controls_.handle(event, camera, pixelsPerUnit, !options_.bare && overlay_.hasMouse());
    if (command == Controls::Command::Quit) quit_ = true;
    if (scene_) scene_->command(command);
    // Over a bare picture only what moves it can be seen.
    if (!options_.bare || event.type == SDL_WINDOWEVENT) seen_ = true;
    settled_ = false;
}

void Viewer::screenshot(std::string const& name) {
    Size const size = frame();
    if (size.width == 0 || size.height == 0)
        throw HostError(HostError::Kind::Usage, "no screenshot of a minimised window");
    // What swap() has shown need not be readable any more.
    if (scene_)
        draw(size);
    else
        drawImport(size);
    std::vector<std::uint8_t> const pixels = window_.readPixels();
    PngWriter png(options_.outputOf(name), size.width, size.height, 3);
    png.writeRows(pixels.data(), size.height);
    png.finish();
    if (scene_ && scene_->hasHoles() && damagedScreenshot_.empty()) damagedScreenshot_ = name;
}
