#include "apps/velmora/view/StoreScene.h"

#include "gles3renderbackend/Gl.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/store/TileStore.h"
#include "host/view/PercentilePoints.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <tuple>

namespace {

constexpr std::chrono::milliseconds kTurn{8};
constexpr std::size_t kOverviewSide = 200;
constexpr std::uint64_t kLargestCode = 65535;
constexpr std::size_t kMessageCharacters = 400;

// What the keys add where the command line asks for nothing of the kind.
constexpr enhancement::Sharpen kSharpen{2.0};
constexpr enhancement::Equalise kEqualise{4.0};
constexpr enhancement::Gamma kGamma{1.6, 200, 3000};
constexpr enhancement::Gamma kDeepGamma{1.0, 0, kLargestCode};

} // namespace

StoreScene::StoreScene(std::shared_ptr<RenderBackendInstance> const& instance, std::string const& store,
                       ViewerOptions const& options, Size const& frame)
    : store_(store),
      smooth_(options.smooth),
      picture_(instance, store, options.picture),
      camera_(picture_.info(), frame),
      switches_(options.steps),
      name_(printableText(picture_.info().sourceName)),
      interpretation_(printableText(picture_.info().interpretation)) {
    if (options.start) {
        camera_.magnifyTo(options.start->zoom, camera_.middle());
        camera_.lookAt({options.start->x, options.start->y});
        std::string const note = camera_.zoom().noteFor(options.start->zoom);
        if (!note.empty()) std::printf("%s\n", note.c_str());
    }
    // What the command line asks for and cannot be done ends the program; a key is only told so.
    picture_.enhance(switches_.steps());
}

void StoreScene::command(Controls::Command command) {
    StepSwitches const before = switches_;
    switch (command) {
    case Controls::Command::Help:
        helpOn_ = !helpOn_;
        return;
    case Controls::Command::Tiles:
        tilesOn_ = !tilesOn_;
        return;
    case Controls::Command::Mask:
        maskOn_ = !maskOn_;
        return;
    case Controls::Command::Smooth:
        smooth_ = !smooth_;
        return;
    case Controls::Command::Sharpen:
        switches_.toggle(kSharpen);
        break;
    case Controls::Command::Gamma:
        switches_.toggle(isDeep() ? kDeepGamma : kGamma);
        break;
    case Controls::Command::Equalise:
        switches_.toggle(kEqualise);
        break;
    case Controls::Command::None:
    case Controls::Command::Quit:
        return;
    }
    try {
        enhance();
    } catch (HostError const& error) {
        message_ = printableText(error.what(), kMessageCharacters);
        switches_ = before;
        picture_.enhance(switches_.steps());
    }
}

void StoreScene::enhance() {
    picture_.enhance(switches_.steps());
    message_.clear();
    overviewFits_ = false;
    drawn_ = false;
}

void StoreScene::setTone(enhancement::Gamma const& tone) {
    switches_.set(tone);
    enhance();
}

void StoreScene::setAutomaticTone() {
    PercentilePoints points;
    try {
        TileStore store(store_);
        points = percentilePoints(store);
    } catch (HostError const& error) {
        message_ = printableText(error.what(), kMessageCharacters);
        return;
    }
    enhancement::Gamma tone = switches_.last<enhancement::Gamma>().value_or(kDeepGamma);
    tone.white = std::min(points.white, kLargestCode);
    tone.black = std::min(points.black, tone.white - 1);
    setTone(tone);
}

View StoreScene::wantedView() const {
    View view = camera_.view();
    view.smooth = smooth_;
    return view;
}

bool StoreScene::advance() {
    View const wanted = wantedView();
    bool changed = !drawn_;
    if (!shown_ || *shown_ != wanted) {
        picture_.show(wanted);
        shown_ = wanted;
        maskFits_ = false;
        changed = true;
    }
    changed |= picture_.advance(kTurn);
    tellOfDamage();
    if (changed) drawn_ = false;
    return changed;
}

// Once, where a script or a person finds it also when the window is gone.
void StoreScene::tellOfDamage() {
    Damages const& damage = picture_.damages();
    if (toldOfDamage_ || damage.first().empty()) return;
    toldOfDamage_ = true;
    std::fprintf(stderr, "velmora: %s; what cannot be shown is striped\n",
                 printableText(damage.first(), kMessageCharacters).c_str());
}

std::string StoreScene::damageText() const {
    Damages const& damage = picture_.damages();
    if (damage.first().empty()) return "";
    return "damaged: " + (damage.count() > 0 ? std::to_string(damage.count()) + " tiles so far, striped"
                                             : "the index of places with data");
}

bool StoreScene::complete() const {
    return picture_.complete() && drawn_ && shown_ && *shown_ == wantedView();
}

void StoreScene::wait() {
    picture_.wait(std::chrono::milliseconds(4));
}

bool StoreScene::updateExtras() {
    if (!complete()) return false;
    bool const maskDue = maskOn_ && !maskFits_;
    if (maskDue) updateMask();
    if (!overviewFits_) {
        updateOverview();
        return true;
    }
    return maskDue;
}

void StoreScene::present() {
    if (!drawn_) picture_.frame();
    drawn_ = true;
    picture_.present();
}

// Of the coarsest levels, which are there or small: it is waited for.
void StoreScene::updateOverview() {
    Camera const whole(picture_.info(), {kOverviewSide, kOverviewSide});
    View view = whole.view();
    view.x = 0;
    view.y = 0;
    std::tie(view.width, view.height) = std::pair(whole.size().width, whole.size().height);
    picture_.show(view);
    while (!picture_.complete()) {
        picture_.advance(kTurn);
        picture_.wait(kTurn);
    }
    overview_.set(picture_.pixels(), {view.width, view.height});
    overviewFits_ = true;
    picture_.show(*shown_);
    drawn_ = false;
}

void StoreScene::updateMask() {
    std::vector<std::uint8_t> const mask = picture_.dataMask();
    std::vector<std::uint8_t> rgba;
    rgba.reserve(4 * mask.size());
    for (std::uint8_t const detail : mask)
        rgba.insert(rgba.end(), {255, 60, 160, static_cast<std::uint8_t>(detail / 3)});
    mask_.set(rgba, camera_.frame());
    maskFits_ = true;
}

bool StoreScene::drawOverlay(std::optional<Place> const& cursor, double frameMilliseconds) {
    panels::Model model;
    model.info = &picture_.info();
    model.camera = &camera_;
    model.overview = &overview_;
    model.name = name_;
    model.interpretation = interpretation_;
    model.message = message_;
    model.switches = switchesText();
    model.damage = damageText();
    model.pixel = cursor ? camera_.pixelAt(*cursor) : std::nullopt;
    if (model.pixel) model.shown = colourAt(*cursor);
    model.statistics = picture_.statistics();
    model.frameMilliseconds = frameMilliseconds;
    model.complete = picture_.complete();
    model.help = helpOn_;
    if (isDeep()) model.tone = switches_.last<enhancement::Gamma>().value_or(kDeepGamma);
    model.toneOn = switches_.on<enhancement::Gamma>();

    if (maskOn_ && maskFits_) panels::drawMask(mask_);
    if (tilesOn_) panels::drawTiles(camera_);
    panels::UserEdits const edits = panels::draw(model);
    if (edits.lookAt) camera_.lookAt(*edits.lookAt);
    if (edits.tone) setTone(*edits.tone);
    if (edits.automaticTone) setAutomaticTone();
    return edits.lookAt || edits.tone || edits.automaticTone;
}

// From what present() has drawn.
std::array<std::uint8_t, 3> StoreScene::colourAt(Place const& cursor) const {
    std::array<std::uint8_t, 4> rgba{};
    auto const x = static_cast<GLint>(std::floor(cursor.x));
    auto const y = static_cast<GLint>(camera_.frame().height) - 1 - static_cast<GLint>(std::floor(cursor.y));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    return {rgba[0], rgba[1], rgba[2]};
}

std::string StoreScene::switchesText() const {
    std::string text;
    auto const add = [&text](bool on, char const* name) {
        if (on) text += (text.empty() ? "" : ", ") + std::string(name);
    };
    add(smooth_, "smooth");
    add(switches_.on<enhancement::Sharpen>(), "sharpened");
    add(switches_.on<enhancement::Gamma>(), "gamma");
    add(switches_.on<enhancement::Equalise>(), "equalised");
    add(switches_.on<enhancement::ColourMatrix>(), "matrix");
    add(switches_.on<enhancement::LinearToSrgb>(), "sRGB");
    add(switches_.on<enhancement::Truncate>(), "truncated");
    return text;
}
