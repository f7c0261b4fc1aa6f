#include "apps/velmora/view/Viewer.h"

#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/view/Panels.h"
#include "gles3renderbackend/Gl.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/channels/HostFilters.h"
#include "host/output/PngWriter.h"
#include "host/store/TileStore.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {

// Redraw interval during an import, which needs the processor.
constexpr std::chrono::milliseconds kImportTurn{100};
// SDL_WaitEvent is not woken by signals: they are polled for at this interval.
constexpr std::chrono::milliseconds kIdleTurn{200};

} // namespace

Viewer::Viewer(ViewerOptions const& options)
    : options_(options),
      window_("velmora - " + printableText(picturefiles::nameOf(options.image)), options.window),
      backend_(hostfilters::registry(), RenderBackend::RGBA32, options.bandBytes),
      instance_(backend_.createInstance(window_)),
      script_(options.script) {
    if (auto const source = picturefiles::shownAtOnce(options_.image, options_.selection, options_.shownAs()))
        open(*source);
    else
        openStoreOf(options_.image);
}

// Its store in the cache, or what makes one.
void Viewer::openStoreOf(std::string const& image) {
    std::string const store = picturefiles::cachedStore(image, options_.selection);
    if (auto const source = picturefiles::usableStore(store))
        open(*source);
    else
        startImport(store);
}

void Viewer::startImport(std::string const& store) {
    ImportOptions options = picturefiles::cacheOptions(options_.image);
    options.jobs = options_.importJobs;
    import_ = std::make_unique<Import>(picturefiles::openerOf(options_.image, options_.selection), store, options);
}

void Viewer::open(PictureSource const& source) {
    scene_ = std::make_unique<StoreScene>(instance_, source, options_, frame());
    due_.raise(Redraw::Picture);
}

void Viewer::run() {
    while (!quit_)
        turn();
    // Hidden first: joining the import may take one strip's time.
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
    if (import_ && import_->job.done()) {
        std::string const store = import_->store;
        import_.reset();
        open(picturefiles::keptStore(store, options_.cacheBytes));
    }
    // Nothing can be seen of a minimised window.
    if (visible()) follow(frame());
    playScript();
    if (!options_.screenshot.empty() && settled()) {
        screenshot(options_.screenshot);
        quit_ = true;
    }
}

void Viewer::playScript() {
    ScriptPlayer::Host host;
    host.complete = settled() || (!visible() && scene_);
    host.resize = [this](int width, int height) {
        window_.resize({static_cast<size_t>(width), static_cast<size_t>(height)});
    };
    host.screenshot = [this](std::string const& file) { screenshot(file); };
    script_.turn(host);
}

void Viewer::follow(Size const& size) {
    if (!scene_) return followImport(size);
    if (size.width != scene_->camera().frame().width || size.height != scene_->camera().frame().height)
        scene_->camera().resize(size);
    due_.raise(scene_->advance());
    Redraw const due = due_.next(pictureComplete());
    if (due != Redraw::Nothing)
        drawFrame(size, due);
    else if (!scene_->complete())
        scene_->wait();
    else if (!options_.bare)
        due_.raise(scene_->advanceExtras());
}

void Viewer::followImport(Size const& size) {
    if (due_.due() == Redraw::Nothing && Clock::now() - lastFrame_ < kImportTurn) return;
    due_.lower();
    drawImport(size);
    window_.swap();
    report_.frame();
    if (!import_->preview.empty()) report_.firstPicture();
}

// Whether all is shown that was asked for.
bool Viewer::settled() const {
    return scene_ && visible() && due_.settled() && scene_->complete() && (options_.bare || scene_->extrasComplete());
}

void Viewer::drawFrame(Size const& size, Redraw due) {
    auto const start = Clock::now();
    due_.lower();
    draw(size, due);
    window_.swap();
    report_.frame();
    if (due == Redraw::Picture) {
        frameMilliseconds_ = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        report_.firstPicture();
    }
    if (pictureComplete()) report_.fullDetail();
}

void Viewer::draw(Size const& size, Redraw due) {
    auto const now = Clock::now();
    double const sinceLast = std::chrono::duration<double>(now - lastFrame_).count();
    lastFrame_ = now;
    scene_->present(due);
    if (options_.bare) return;
    overlay_.begin(size, window_.pixelsPerUnit(), sinceLast);
    due_.raise(scene_->drawOverlay(controls_.cursor(), frameMilliseconds_));
    overlay_.end();
}

void Viewer::drawImport(Size const& size) {
    ImportPreview::Image const image = import_->job.picture().takeNew(import_->seen);
    if (!image.rgba.empty()) import_->preview.set(image.rgba, {image.width, image.height});
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDisable(GL_SCISSOR_TEST);
    auto const& background = options_.picture.background;
    glClearColor(static_cast<float>(background[0]) / 255, static_cast<float>(background[1]) / 255,
                 static_cast<float>(background[2]) / 255, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    overlay_.begin(size, window_.pixelsPerUnit(), std::chrono::duration<double>(kImportTurn).count());
    panels::drawGrowing(import_->preview, size);
    if (!options_.bare)
        panels::drawProgress(printableText(picturefiles::nameOf(options_.image)), import_->job.share(), size);
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
    if (scene_ && visible() && !settled()) return std::chrono::milliseconds(0);
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
    Redraw const due = scene_ ? scene_->command(command) : Redraw::Nothing;
    // Over a bare picture only what moves it can be seen.
    if (!options_.bare || event.type == SDL_WINDOWEVENT)
        due_.raise(std::max(due, Redraw::Overlay));
    else if (due == Redraw::Picture)
        due_.raise(due);
}

void Viewer::screenshot(std::string const& name) {
    Size const size = frame();
    if (!visible()) throw HostError(HostError::Kind::Usage, "no screenshot of a minimised window");
    // What swap() has shown need not be readable any more.
    if (scene_)
        draw(size, due_.due());
    else
        drawImport(size);
    std::vector<std::uint8_t> const pixels = window_.readPixels();
    PngWriter png(options_.outputOf(name), size.width, size.height, 3);
    png.writeRows(pixels.data(), size.height);
    png.finish();
    if (scene_ && scene_->hasHoles() && damagedScreenshot_.empty()) damagedScreenshot_ = name;
}
