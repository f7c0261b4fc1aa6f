#include "apps/velmora/view/Viewer.h"

#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "apps/velmora/view/Panels.h"
#include "gles3renderbackend/Gl.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/annotations/GeoJson.h"
#include "host/channels/HostFilters.h"
#include "host/output/PngWriter.h"
#include "host/store/TileStore.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace {

// Redraw interval during an import, which needs the processor.
constexpr std::chrono::milliseconds kImportTurn{100};
// SDL_WaitEvent is not woken by signals: they are polled for at this interval.
constexpr std::chrono::milliseconds kIdleTurn{200};
constexpr size_t kMessageCharacters = 600;
constexpr auto kFirstHint = "Drag to move, turn the wheel to zoom; ? shows all keys";

std::string titleOf(std::string const& image) {
    return "velmora - " + printableText(picturefiles::nameOf(image));
}

// A name in the current folder that no file has: "slide-view.png", "slide-view-2.png".
std::string freeNameFor(std::string const& image) {
    std::string const stem = image.empty() ? "velmora" : std::filesystem::path(image).stem().string();
    std::error_code unknown;
    for (size_t number = 1;; ++number) {
        std::string const name = stem + "-view" + (number == 1 ? "" : "-" + std::to_string(number)) + ".png";
        if (!std::filesystem::exists(std::filesystem::symlink_status(name, unknown))) return name;
    }
}

// A field takes all keys but the one that leaves.
Controls::Command commandWhileTyping(SDL_KeyboardEvent const& event) {
    return event.keysym.sym == SDLK_ESCAPE ? Controls::Command::Leave : Controls::Command::None;
}

bool isOfHands(SDL_Event const& event) {
    return event.type == SDL_KEYDOWN || event.type == SDL_MOUSEBUTTONDOWN || event.type == SDL_MOUSEWHEEL ||
           event.type == SDL_FINGERDOWN;
}

// Another picture in the window of the first: what was asked for of that one's parts and samples is not for this one.
ViewerOptions forAnother(ViewerOptions options, std::string const& image) {
    ImageSelection selection;
    selection.followsProfile = options.selection.followsProfile;
    selection.isUpright = options.selection.isUpright;
    options.image = image;
    options.annotations.clear();
    options.selection = selection;
    options.display = {};
    options.start.reset();
    options.sources = picturefiles::sourcesOf(image);
    return options;
}

} // namespace

Viewer::Viewer(ViewerOptions const& options)
    : options_(options),
      window_(titleOf(options.image), options.window),
      backend_(hostfilters::registry(), RenderBackend::RGBA32, options.bandBytes),
      instance_(backend_.createInstance(window_)),
      script_(options.script) {
    overlay_.setTheme(options.isLight);
    if (options_.screenshot.empty() && picturefiles::recentFiles().areNew()) hint_ = kFirstHint;
    openImage();
}

void Viewer::setTheme(bool isLight) {
    options_.setTheme(isLight);
    overlay_.setTheme(isLight);
    if (scene_) scene_->setBackground(options_.picture.background);
    due_.raise(Redraw::Picture);
}

// The picture of the options, or its store, or what makes one.
void Viewer::openImage() {
    if (auto const source = picturefiles::shownAtOnce(options_.image, options_.selection, options_.shownAs()))
        open(*source);
    else
        openStoreOf(options_.image);
}

// Its store in the cache, or what makes one.
void Viewer::openStoreOf(std::string const& image) {
    std::string const store = picturefiles::cachedStore(image, options_.selection);
    if (auto const source = picturefiles::usableStore(store))
        open(picturefiles::displayed(*source, options_.madeStoreShownAs()));
    else
        startImport(store);
}

void Viewer::startImport(std::string const& store) {
    ImportOptions options = picturefiles::cacheOptions(options_.image);
    options.jobs = options_.importJobs;
    import_ = std::make_unique<Import>(picturefiles::openerOf(options_.image, options_.selection), store, options);
}

void Viewer::open(PictureSource const& source) {
    scene_ = std::make_unique<PictureScene>(instance_, source, options_, frame());
    if (import_ && import_->camera) scene_->camera() = *import_->camera;
    import_.reset();
    before_.reset();
    window_.setTitle(titleOf(options_.image));
    due_.raise(Redraw::Picture);
    if (TileStore::isStore(options_.image))
        for (std::string const& note : picturefiles::notesOf(source, options_.selection))
            tell("note: " + note);
    bool const isLookedAt = options_.screenshot.empty() && !options_.image.empty();
    if (isLookedAt) picturefiles::recentFiles().add(options_.image);
}

// A picture, or annotations of the one that is shown.
void Viewer::openChosen(std::string const& path) {
    try {
        if (!geojson::looksLikeOne(path)) return openFile(path);
    } catch (HostError const& error) {
        return tell(error.what());
    }
    message_.clear();
    options_.annotations = path;
    if (import_) return tell("annotations are shown once the picture is imported");
    scene_->annotate(path);
    due_.raise(Redraw::Overlay);
}

void Viewer::openFile(std::string const& path) {
    ViewerOptions const now = options_;
    ViewerOptions const shown = before_ ? *before_ : options_;
    message_.clear();
    try {
        options_ = forAnother(options_, path);
        auto const notes =
            imageinput::notesOf(options_.image, options_.selection, options_.colours(), options_.display);
        openImage();
        if (import_) before_ = shown;
        for (std::string const& note : notes)
            tell(note);
    } catch (Interrupted const&) {
        throw;
    } catch (std::exception const& error) {
        options_ = now;
        tell(error.what());
    }
}

// In the window, or where it has no words over the picture on the terminal.
void Viewer::tell(std::string const& text) {
    if (options_.bare || !options_.screenshot.empty()) return picturefiles::tell(text);
    message_ = printableText(message_.empty() ? text : message_ + "; " + text, kMessageCharacters);
    due_.raise(Redraw::Overlay);
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
    if (auto const chosen = std::exchange(chosen_, std::nullopt)) openChosen(*chosen);
    finishImport();
    // Nothing can be seen of a minimised window.
    if (visible()) follow(frame());
    playScript();
    if (!options_.screenshot.empty() && settled()) {
        screenshot(options_.screenshot);
        quit_ = true;
    }
}

// A picture that was opened in the window of another one leaves that one where it cannot be imported.
void Viewer::finishImport() {
    try {
        if (!import_ || !import_->job.done()) return;
        std::string const store = import_->store;
        open(picturefiles::displayed(picturefiles::keptStore(store, options_.cacheBytes), options_.madeStoreShownAs()));
    } catch (HostError const& error) {
        if (!scene_) throw;
        import_.reset();
        bool const isLight = options_.isLight;
        if (before_) options_ = *before_;
        before_.reset();
        options_.setTheme(isLight);
        window_.setTitle(titleOf(options_.image));
        due_.raise(Redraw::Picture);
        tell(error.what());
    }
}

void Viewer::playScript() {
    ScriptPlayer::Host host;
    host.complete = settled() || (!visible() && !import_);
    host.resize = [this](int width, int height) {
        window_.resize({static_cast<size_t>(width), static_cast<size_t>(height)});
    };
    host.screenshot = [this](std::string const& file) { screenshot(file); };
    script_.turn(host);
}

void Viewer::follow(Size const& size) {
    if (import_) return followImport(size);
    scene_->camera().resize(size);
    isMoved_ = isMoved_ || scene_->isMoved();
    due_.raise(scene_->advance());
    Redraw const due = due_.next(pictureComplete());
    if (due != Redraw::Nothing && !isTooSoon())
        drawFrame(size, due);
    else if (!scene_->complete())
        scene_->wait();
    else if (!options_.bare)
        due_.raise(scene_->advanceExtras());
}

// Whether the frame may wait: nothing has moved, and more of the picture is made meanwhile.
bool Viewer::isTooSoon() const {
    if (isMoved_ || scene_->complete()) return false;
    std::chrono::duration<double, std::milli> const sinceLast = Clock::now() - lastFrame_;
    return sinceLast.count() < pauseAfterFrame(frameMilliseconds_);
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
    return !import_ && visible() && due_.settled() && scene_->complete() && (options_.bare || scene_->extrasComplete());
}

void Viewer::drawFrame(Size const& size, Redraw due) {
    auto const start = Clock::now();
    due_.lower();
    isMoved_ = false;
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
    drawOwnPanels();
    overlay_.end();
    if (overlay_.lacksLetters()) due_.raise(Redraw::Overlay);
}

void Viewer::drawOwnPanels() {
    panels::drawMessage(message_.empty() ? hint_ : message_, import_ != nullptr);
    if (auto const chosen = openPanel_.draw()) chosen_ = chosen;
}

// From its first rows on a picture can be moved, as its store can be afterwards.
void Viewer::takePreview(Size const& size) {
    ImportPreview::Image const image = import_->job.picture().takeNew(import_->seen);
    if (!image.rgba.empty()) {
        import_->preview.set(image.rgba, {image.width, image.height});
        import_->covered = {image.width * image.distance, image.height * image.distance};
        if (!import_->camera) import_->camera = startCamera(image.picture, size);
    }
    if (import_->camera) import_->camera->resize(size);
}

// As that of the store will be.
Camera Viewer::startCamera(Size const& picture, Size const& frame) const {
    PictureInfo info;
    info.width = picture.width;
    info.height = picture.height;
    info.levels =
        storegeometry::autoLevels(info.width, info.height, picturefiles::cacheOptions(options_.image).tileSize);
    Camera camera(info, frame);
    if (options_.start) options_.start->apply(camera);
    return camera;
}

void Viewer::drawImport(Size const& size) {
    takePreview(size);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDisable(GL_SCISSOR_TEST);
    auto const& background = options_.picture.background;
    glClearColor(static_cast<float>(background[0]) / 255, static_cast<float>(background[1]) / 255,
                 static_cast<float>(background[2]) / 255, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    overlay_.begin(size, window_.pixelsPerUnit(), std::chrono::duration<double>(kImportTurn).count());
    if (import_->camera) panels::drawGrowing(import_->preview, *import_->camera, import_->covered);
    if (!options_.bare) {
        drawProgress(size);
        drawOwnPanels();
        if (import_->showsKeys) panels::drawKeys();
    }
    overlay_.end();
    lastFrame_ = Clock::now();
}

void Viewer::drawProgress(Size const& size) {
    double const share = import_->job.share();
    std::chrono::duration<double> const elapsed = Clock::now() - import_->start;
    panels::drawProgress(printableText(picturefiles::nameOf(options_.image)), share,
                         ProgressBar::timeLeft(elapsed.count(), share), size);
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
    if (!import_ && visible() && !settled()) return std::chrono::milliseconds(0);
    if (script_.active()) return std::chrono::milliseconds(1);
    return import_ ? kImportTurn : kIdleTurn;
}

void Viewer::handle(SDL_Event const& event) {
    double const pixelsPerUnit = window_.pixelsPerUnit();
    if (isOfHands(event)) hint_.clear();
    window_.note(event);
    overlay_.handle(event, pixelsPerUnit);
    if (event.type == SDL_DROPFILE) {
        std::unique_ptr<char, decltype(&SDL_free)> const dropped(event.drop.file, &SDL_free);
        chosen_ = dropped.get();
    }
    Camera* const camera = shownCamera();
    bool const isTyped = event.type == SDL_KEYDOWN && !options_.bare && overlay_.hasKeys();
    bool hasMouse = !options_.bare && overlay_.hasMouse();
    // Nothing can be seen of a ruler over a bare picture.
    if (!import_ && !options_.bare && scene_->ruler().handle(event, *camera, pixelsPerUnit, hasMouse)) hasMouse = true;
    Controls::Command const command =
        isTyped ? commandWhileTyping(event.key) : controls_.handle(event, camera, pixelsPerUnit, hasMouse);
    if (import_ && command == Controls::Command::Help) import_->showsKeys = !import_->showsKeys;
    Redraw const due = perform(command) || import_ ? Redraw::Nothing : scene_->command(command);
    // Over a bare picture only what moves it can be seen.
    if (!options_.bare || event.type == SDL_WINDOWEVENT)
        due_.raise(std::max(due, Redraw::Overlay));
    else if (due == Redraw::Picture)
        due_.raise(due);
}

// Null where nothing of a picture is there yet.
Camera* Viewer::shownCamera() {
    if (!import_) return &scene_->camera();
    return import_->camera ? &*import_->camera : nullptr;
}

// What the window itself does, and no picture.
bool Viewer::perform(Controls::Command command) {
    switch (command) {
    case Controls::Command::Quit:
        quit_ = true;
        return true;
    case Controls::Command::Leave:
        leave();
        return true;
    case Controls::Command::Open:
        openPanel();
        return true;
    case Controls::Command::Save:
        saveView();
        return true;
    case Controls::Command::Copy:
        copyPixel();
        return true;
    case Controls::Command::Theme:
        setTheme(!options_.isLight);
        return true;
    default:
        return false;
    }
}

void Viewer::leave() {
    if (openPanel_.isOpen()) {
        openPanel_.close();
        overlay_.leaveField();
    } else if (!message_.empty()) {
        message_.clear();
    } else if (!overlay_.hasKeys()) {
        quit_ = true;
    }
}

void Viewer::openPanel() {
    if (options_.bare) return;
    std::filesystem::path const folder = std::filesystem::path(options_.image).parent_path();
    openPanel_.open(folder.empty() ? "." : folder, picturefiles::recentFiles().list());
}

void Viewer::copyPixel() {
    std::string const text = import_ ? "" : scene_->pixelText(controls_.cursor());
    message_.clear();
    if (text.empty()) return tell("no pixel is under the cursor");
    bool const isCopied = SDL_SetClipboardText(text.c_str()) == 0;
    tell(isCopied ? "copied: " + text : std::string("cannot be copied: ") + SDL_GetError());
}

// The picture alone.
void Viewer::saveView() {
    message_.clear();
    if (import_ || !visible()) return tell("there is no view to save yet");
    try {
        std::string const name = freeNameFor(options_.image);
        scene_->present(due_.due());
        write(options_.outputOf(name, false));
        tell("saved as " + std::filesystem::absolute(name).string());
        due_.raise(Redraw::Picture);
    } catch (HostError const& error) {
        tell(error.what());
    }
}

void Viewer::screenshot(std::string const& name) {
    if (!visible()) throw HostError(HostError::Kind::Usage, "no screenshot of a minimised window");
    // What swap() has shown need not be readable any more.
    if (import_)
        drawImport(frame());
    else
        draw(frame(), due_.due());
    write(options_.outputOf(name, options_.force));
}

// What has been drawn.
void Viewer::write(OutputFile const& output) {
    Size const size = frame();
    std::vector<std::uint8_t> const pixels = window_.readPixels();
    PngWriter png(output, size.width, size.height, 3);
    png.writeRows(pixels.data(), size.height);
    png.finish();
    if (!import_ && scene_->hasHoles() && damagedScreenshot_.empty()) damagedScreenshot_ = output.path;
}
