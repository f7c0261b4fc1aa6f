#include "apps/velmora/view/PictureScene.h"

#include "apps/velmora/shared/PictureFiles.h"
#include "apps/velmora/shared/PictureText.h"
#include "apps/velmora/view/Lettering.h"
#include "apps/velmora/view/PixelText.h"
#include "gles3renderbackend/Gl.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/image/SlideImages.h"
#include "host/store/TileStore.h"
#include "host/view/PercentilePoints.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

constexpr std::chrono::milliseconds kTurn{8};
constexpr size_t kMessageCharacters = 400;
constexpr size_t kProbedBands = 8;
constexpr size_t kSlideImageSide = 600;

// What the keys add where the command line asks for nothing of the kind.
constexpr enhancement::Sharpen kSharpen{2.0};
constexpr enhancement::Equalise kEqualise{4.0};
constexpr enhancement::Gamma kGamma{1.6, 200, 3000};
constexpr enhancement::Gamma kDeepGamma{1.0, 0, enhancement::kLargestCode};

// With the profile that colours were converted from.
std::string interpretationOf(PictureSource const& source, PictureInfo const& info) {
    std::string const text = printableText(info.interpretation);
    if (!source.pyramid || source.pyramid->facts().image.followedProfile.empty()) return text;
    return text + ", " + printableText(source.pyramid->facts().image.followedProfile) + " converted to sRGB";
}

// As a person may see them.
std::vector<ImageProperty> readable(std::vector<ImageProperty> lines) {
    constexpr size_t kCharacters = 300;
    for (ImageProperty& line : lines)
        line = {printableText(line.name), printableText(onOneLine(line.value), kCharacters)};
    return lines;
}

} // namespace

PictureScene::PictureScene(std::shared_ptr<RenderBackendInstance> const& instance, PictureSource const& source,
                           ViewerOptions const& options, Size const& frame)
    : source_(source),
      toggles_{options.smooth},
      picture_(instance, source, options.picture),
      camera_(picture_.info(), frame),
      switches_(options.steps),
      overview_(instance, source, options.picture),
      probe_(source.pyramid ? std::make_unique<PixelProbe>(*source.pyramid) : nullptr),
      name_(printableText(picture_.info().sourceName)),
      interpretation_(interpretationOf(source, picture_.info())) {
    if (options.start) {
        options.start->apply(camera_);
        std::string const note = camera_.zoom().noteFor(options.start->zoom);
        if (!note.empty()) std::printf("%s\n", note.c_str());
    }
    // What the command line asks for and cannot be done ends the program; a key is only told so.
    enhance();
    if (options.annotations.empty()) return;
    annotate(options.annotations);
    annotationsAreAskedFor_ = true;
}

Redraw PictureScene::command(Controls::Command command) {
    switch (command) {
    case Controls::Command::Help:
        toggles_.help = !toggles_.help;
        return Redraw::Overlay;
    case Controls::Command::Tiles:
        toggles_.tiles = !toggles_.tiles;
        return Redraw::Overlay;
    case Controls::Command::Mask:
        toggles_.mask = !toggles_.mask;
        return Redraw::Overlay;
    case Controls::Command::Annotations:
        if (annotations_) annotations_->toggle();
        return Redraw::Overlay;
    case Controls::Command::Smooth:
        toggles_.smooth = !toggles_.smooth;
        return Redraw::Picture;
    case Controls::Command::Sharpen:
    case Controls::Command::Gamma:
    case Controls::Command::Equalise:
        return toggleStep(command);
    case Controls::Command::NextSlice:
        return moveBy(1, 0);
    case Controls::Command::PreviousSlice:
        return moveBy(-1, 0);
    case Controls::Command::NextTime:
        return moveBy(0, 1);
    case Controls::Command::PreviousTime:
        return moveBy(0, -1);
    case Controls::Command::Properties:
        toggles_.properties = !toggles_.properties;
        readProperties();
        return Redraw::Overlay;
    case Controls::Command::Ruler:
        ruler_.toggle();
        return Redraw::Overlay;
    case Controls::Command::None:
    case Controls::Command::Quit:
    case Controls::Command::Leave:
    case Controls::Command::Open:
    case Controls::Command::Save:
    case Controls::Command::Copy:
    case Controls::Command::Theme:
        return Redraw::Nothing;
    }
    return Redraw::Nothing;
}

Redraw PictureScene::toggleStep(Controls::Command command) {
    StepSwitches const before = switches_;
    if (command == Controls::Command::Sharpen) switches_.toggle(kSharpen);
    if (command == Controls::Command::Gamma) switches_.toggle(isDeep() ? kDeepGamma : kGamma);
    if (command == Controls::Command::Equalise) switches_.toggle(kEqualise);
    try {
        enhance();
    } catch (HostError const& error) {
        switches_ = before;
        enhance();
        message_ = printableText(error.what(), kMessageCharacters);
    }
    return Redraw::Picture;
}

void PictureScene::annotate(std::string const& path) {
    annotations_ = std::make_unique<AnnotationLayer>(path);
    annotationsAreAskedFor_ = false;
}

Redraw PictureScene::takeAnnotations() {
    if (!annotations_) return Redraw::Nothing;
    try {
        if (!annotations_->advance()) return Redraw::Nothing;
        if (!annotations_->note().empty()) {
            message_ = printableText(annotations_->note(), kMessageCharacters);
            picturefiles::tell("note: " + annotations_->note());
        }
    } catch (HostError const& error) {
        if (annotationsAreAskedFor_) throw;
        annotations_.reset();
        message_ = printableText(error.what(), kMessageCharacters);
    }
    return Redraw::Overlay;
}

void PictureScene::setBackground(std::array<std::uint8_t, 3> const& colour) {
    picture_.setBackground(colour);
    overview_.setBackground(colour);
}

// Once they are asked for.
void PictureScene::readProperties() {
    if (!properties_.empty()) return;
    try {
        std::string const path = source_.pyramid ? source_.pyramid->path() : source_.store;
        TileStore::isStore(path) ? readStore(path) : readFile(path);
    } catch (HostError const& error) {
        message_ = printableText(error.what(), kMessageCharacters);
    }
}

void PictureScene::readFile(std::string const& path) {
    properties_ = readable(picturetext::linesOf(source_.pyramid->facts()));
    InputFile file(path);
    for (std::string const& name : slideimages::names(file))
        addSlideImage(name, slideimages::read(file, name));
}

void PictureScene::readStore(std::string const& path) {
    TileStore store(path);
    properties_ = readable(picturetext::linesOf(store));
    for (size_t i = 0; i < store.metadata().size(); ++i) {
        MetadataItem const& item = store.metadata()[i];
        if (item.kind != picturemetadata::kImage) continue;
        if (auto const image = smallpicture::fromPng(store.metadataBytes(i))) addSlideImage(item.name, *image);
    }
}

void PictureScene::addSlideImage(std::string const& name, SmallPicture const& image) {
    SmallPicture const shown = smallpicture::shrunk(image, kSlideImageSide);
    slideImages_.push_back({printableText(name), std::make_unique<OverlayTexture>()});
    slideImages_.back().texture->set(shown.samples, shown.size);
}

void PictureScene::enhance() {
    picture_.enhance(switches_.steps());
    overview_.enhance(switches_.steps());
    message_.clear();
}

void PictureScene::setTone(enhancement::Gamma const& tone) {
    switches_.set(tone);
    enhance();
}

void PictureScene::setAutomaticTone() {
    PercentilePoints points;
    try {
        TileStore store(source_.store);
        points = percentilePoints(store);
    } catch (HostError const& error) {
        message_ = printableText(error.what(), kMessageCharacters);
        return;
    }
    enhancement::Gamma tone = switches_.last<enhancement::Gamma>().value_or(kDeepGamma);
    tone.white = std::min(points.white, enhancement::kLargestCode);
    tone.black = std::min(points.black, tone.white - 1);
    setTone(tone);
}

void PictureScene::setChannels(std::vector<ChannelDisplay> const& channels) {
    picture_.display(channels);
    overview_.display(channels);
    // What is on the GPU is shown at once.
    picture_.advance(kTurn);
}

// Not beyond the ends.
Redraw PictureScene::moveBy(int slices, int times) {
    ImageStack const stack = picture_.stack();
    auto const moved = [](size_t from, int by, size_t extent) {
        auto const to = static_cast<std::int64_t>(from) + by;
        return static_cast<size_t>(std::clamp<std::int64_t>(to, 0, static_cast<std::int64_t>(extent) - 1));
    };
    StackPosition const before = picture_.position();
    StackPosition const now = {moved(before.slice, slices, stack.slices), moved(before.time, times, stack.times)};
    if (now == before) return Redraw::Nothing;
    moveTo(now);
    return Redraw::Picture;
}

void PictureScene::moveTo(StackPosition const& position) {
    picture_.moveTo(position);
    overview_.moveTo(position);
    picture_.advance(kTurn);
}

View PictureScene::wantedView() const {
    View view = camera_.view();
    view.smooth = toggles_.smooth;
    return view;
}

Redraw PictureScene::advance() {
    bool const moved = isMoved();
    if (moved) picture_.show(wantedView());
    bool const loaded = picture_.advance(kTurn);
    tellOfDamage();
    Redraw const annotated = takeAnnotations();
    return moved || loaded ? Redraw::Picture : annotated;
}

// Once, where a script or a person finds it also when the window is gone.
void PictureScene::tellOfDamage() {
    if (toldOfDamage_) return;
    Damages const found = damages();
    if (found.first().empty()) return;
    toldOfDamage_ = true;
    std::fprintf(stderr, "velmora: %s; what cannot be shown is striped\n",
                 printableText(found.first(), kMessageCharacters).c_str());
}

// Those of the overview too, which may have looked where the view has not.
Damages PictureScene::damages() const {
    Damages all = picture_.damages();
    if (overview_.picture() != nullptr) all.add(overview_.picture()->damages());
    return all;
}

std::string PictureScene::damageText() const {
    Damages const found = damages();
    if (found.first().empty()) return "";
    return "damaged: " + (found.count() > 0 ? std::to_string(found.count()) + " tiles so far, striped"
                                            : "the index of places with data");
}

bool PictureScene::complete() const {
    return picture_.complete() && picture_.view() == wantedView();
}

void PictureScene::wait() {
    picture_.wait(std::chrono::milliseconds(4));
}

void PictureScene::present(Redraw due) {
    if (due == Redraw::Picture) picture_.frame();
    picture_.present();
}

Redraw PictureScene::advanceExtras() {
    bool const maskDue = maskIsMissing();
    if (maskDue) updateMask();
    bool const overviewDrawn = overview_.advance(kTurn);
    tellOfDamage();
    if (annotationsAreDue()) annotations_->wait(kTurn);
    if (answerIsDue_) probe_->wait(kTurn);
    bool const isAnswered = answerIsDue_ && !probe_->isPending();
    if (isAnswered) answerIsDue_ = false;
    return maskDue || overviewDrawn || isAnswered ? Redraw::Overlay : Redraw::Nothing;
}

void PictureScene::updateMask() {
    std::vector<std::uint8_t> const mask = picture_.dataMask();
    std::vector<std::uint8_t> rgba;
    rgba.reserve(4 * mask.size());
    for (std::uint8_t const detail : mask)
        rgba.insert(rgba.end(), {255, 60, 160, static_cast<std::uint8_t>(detail / 3)});
    mask_.set(rgba, camera_.frame());
    maskView_ = picture_.view();
}

Redraw PictureScene::drawOverlay(std::optional<Place> const& cursor, double frameMilliseconds) {
    panels::Model model;
    model.info = &picture_.info();
    model.camera = &camera_;
    model.overview = &overview_.texture();
    model.name = name_;
    model.interpretation = interpretation_;
    model.message = message_;
    model.switches = switchesText();
    if (annotations_) model.annotations = annotations_->state();
    model.damage = damageText();
    model.pixel = pixelText(cursor);
    model.statistics = statistics();
    model.frameMilliseconds = frameMilliseconds;
    model.complete = picture_.complete();
    model.help = toggles_.help;
    model.figures = toggles_.tiles;
    if (toggles_.properties) {
        model.properties = &properties_;
        model.slideImages = &slideImages_;
    }
    if (isDeep()) model.tone = switches_.last<enhancement::Gamma>().value_or(kDeepGamma);
    model.toneOn = switches_.on<enhancement::Gamma>();
    model.channels = &picture_.channels();
    model.histograms = &picture_.histograms();
    model.stack = picture_.stack();
    model.position = picture_.position();

    if (toggles_.mask && !maskIsMissing()) panels::drawMask(mask_);
    Redraw const annotated = drawAnnotations(cursor);
    if (toggles_.tiles) panels::drawTiles(camera_);
    if (ruler_.line()) panels::drawRuler(camera_, *ruler_.line(), Ruler::lengthOf(*ruler_.line(), picture_.info()));
    panels::UserEdits const edits = panels::draw(model);
    if (edits.lookAt) camera_.lookAt(*edits.lookAt);
    if (edits.tone) setTone(*edits.tone);
    if (edits.automaticTone) setAutomaticTone();
    if (edits.automaticRanges) setChannels(picture_.automaticChannels());
    if (edits.channels) setChannels(*edits.channels);
    if (edits.position) moveTo(*edits.position);
    bool const isOther = edits.tone || edits.automaticTone || edits.automaticRanges || edits.channels || edits.position;
    if (isOther) return Redraw::Picture;
    return edits.lookAt ? Redraw::Overlay : annotated;
}

Redraw PictureScene::drawAnnotations(std::optional<Place> const& cursor) {
    if (!annotations_) return Redraw::Nothing;
    constexpr double kLineWidth = 2; // in units of the window
    double const lineWidth = kLineWidth * static_cast<double>(Lettering::scale());
    panels::drawAnnotations(annotations_->draw(camera_, picture_.position(), cursor, lineWidth));
    if (cursor && !annotations_->textUnderCursor().empty())
        panels::drawNameAt(*cursor, annotations_->textUnderCursor());
    return annotations_->complete() ? Redraw::Nothing : Redraw::Overlay;
}

// The picture's own samples: of a file always, of a store where the view has them; else the colour that is shown.
std::string PictureScene::pixelTextAt(Place const& cursor) {
    auto const pixel = camera_.pixelAt(cursor);
    if (!pixel) return "";
    if (!probe_) {
        auto const samples = picture_.samplesAt(*pixel);
        if (!samples) return pixeltext::ofColour(*pixel, colourAt(cursor));
        return pixeltext::ofSamples(*pixel, {samples->begin(), samples->end()}, SampleType::Unsigned16);
    }
    PixelProbe::Question const question = {pixel->x, pixel->y, probedBands(), picture_.position()};
    if (question.bands.empty()) return pixeltext::ofColour(*pixel, colourAt(cursor));
    if (probe_->asked() != question) probe_->ask(question);
    bool const isPending = probe_->isPending();
    auto const samples = probe_->answer();
    answerIsDue_ = isPending;
    if (samples) return pixeltext::ofSamples(*pixel, *samples, source_.pyramid->facts().image.layout.type);
    return isPending ? pixeltext::before(*pixel) : pixeltext::ofColour(*pixel, colourAt(cursor));
}

// Those that are shown; the panel has no room for more than a few.
std::vector<size_t> PictureScene::probedBands() const {
    std::vector<size_t> bands;
    for (ChannelDisplay const& channel : picture_.channels())
        if (channel.isOn && bands.size() < kProbedBands) bands.push_back(channel.band);
    if (!picture_.channels().empty()) return bands;
    for (size_t band = 0; band < source_.pyramid->facts().image.layout.bands; ++band)
        bands.push_back(band);
    return bands;
}

PictureView::Statistics PictureScene::statistics() const {
    PictureView::Statistics all = picture_.statistics();
    if (overview_.picture() == nullptr) return all;
    PictureView::Statistics const small = overview_.picture()->statistics();
    all.tilesOnGpu += small.tilesOnGpu;
    all.gpuBytes += small.gpuBytes;
    all.hostBytes += small.hostBytes;
    all.waiting += small.waiting;
    return all;
}

// From what present() has drawn.
std::array<std::uint8_t, 3> PictureScene::colourAt(Place const& cursor) const {
    std::array<std::uint8_t, 4> rgba{};
    auto const x = static_cast<GLint>(std::floor(cursor.x));
    auto const y = static_cast<GLint>(camera_.frame().height) - 1 - static_cast<GLint>(std::floor(cursor.y));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    return {rgba[0], rgba[1], rgba[2]};
}

std::string PictureScene::switchesText() const {
    std::string text;
    auto const add = [&text](bool on, char const* name) {
        if (on) text += (text.empty() ? "" : ", ") + std::string(name);
    };
    add(ruler_.isOut(), "ruler: drag");
    add(toggles_.smooth, "smooth");
    add(switches_.on<enhancement::Sharpen>(), "sharpened");
    add(switches_.on<enhancement::Gamma>(), "gamma");
    add(switches_.on<enhancement::Equalise>(), "equalised");
    add(switches_.on<enhancement::ColourMatrix>(), "matrix");
    add(switches_.on<enhancement::LinearToSrgb>(), "sRGB");
    add(switches_.on<enhancement::Truncate>(), "truncated");
    return text;
}
