#include "apps/velmora/view/Panels.h"

#include "apps/velmora/view/Lettering.h"
#include "apps/velmora/view/ScaleBar.h"
#include "host/view/LevelTile.h"

#include <imgui.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr ImGuiWindowFlags kPanelFlags = ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize |
                                         ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoFocusOnAppearing |
                                         ImGuiWindowFlags_NoNav | ImGuiWindowFlags_NoMove;
// Words only: the picture below is dragged through them.
constexpr ImGuiWindowFlags kWordFlags = kPanelFlags | ImGuiWindowFlags_NoInputs;
constexpr float kMargin = 8;
constexpr ImU32 kShadow = IM_COL32(0, 0, 0, 160);
constexpr ImU32 kTileColour = IM_COL32(255, 210, 0, 255);

constexpr auto kTyped = "Ctrl+click: type it";
constexpr float kOverviewHeight = 240; // with its frame and the margins

struct Help {
    char const* key;
    char const* does;
};

constexpr std::array<Help, 17> kHelp{{{"drag, arrows", "move"},
                                      {"wheel, two fingers", "zoom about the cursor"},
                                      {"+ or i, -", "zoom in, out"},
                                      {"1, f", "actual size (1:1), the whole picture"},
                                      {"b", "smooth (bilinear) below 1:1"},
                                      {"e, g, c", "sharpen, gamma, equalise (CLAHE)"},
                                      {"Page Up, Page Down", "the slice or page before, after"},
                                      {", .", "the time before, after"},
                                      {"r", "ruler: drag to measure"},
                                      {"a", "annotations on, off"},
                                      {"o", "open another picture"},
                                      {"s", "save the view as PNG"},
                                      {"Ctrl+C", "copy the pixel under the cursor"},
                                      {"p", "what the file says"},
                                      {"d, m", "tiles and figures, where the store has detail"},
                                      {"l, ?", "light or dark, this help"},
                                      {"Escape, q", "leave a panel or quit, quit"}}};
constexpr auto kMoreHelp = "A click in the small picture goes there.\n"
                           "A picture that is dropped on the window is opened,\n"
                           "GeoJSON is shown as annotations.";

// Of lines on a panel.
ImU32 lineColour() {
    return ImGui::GetColorU32(ImGuiCol_Text);
}

// Of what was drawn last, while the cursor is over it.
void tip(char const* text) {
    if (ImGui::IsItemHovered()) ImGui::SetTooltip("%s", text);
}

ImVec2 toImGui(double x, double y) {
    return {static_cast<float>(x), static_cast<float>(y)};
}

ImTextureID textureOf(OverlayTexture const& texture) {
    return reinterpret_cast<ImTextureID>(static_cast<std::uintptr_t>(texture.name()));
}

// corner: 0 at the left or top, 1 at the right or bottom.
void placeNext(double cornerX, double cornerY) {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    auto const x = static_cast<float>(cornerX);
    auto const y = static_cast<float>(cornerY);
    ImGui::SetNextWindowPos({kMargin + x * (size.x - 2 * kMargin), kMargin + y * (size.y - 2 * kMargin)},
                            ImGuiCond_Always, {x, y});
    ImGui::SetNextWindowBgAlpha(0.7F);
}

// Where panels at the left end, so that those at the right have room.
float leftHalf() {
    return ImGui::GetIO().DisplaySize.x / 2 - 3 * kMargin;
}

double megabytes(size_t bytes) {
    return static_cast<double>(bytes) / 1e6;
}

void drawStatus(panels::Model const& model) {
    placeNext(0, 0);
    ImGui::Begin("status", nullptr, kWordFlags);
    ImGui::PushTextWrapPos(leftHalf());
    drawText(model.name);
    needLetters(model.interpretation);
    if (model.channels != nullptr && !model.channels->empty())
        ImGui::Text("%zu x %zu, %s", model.info->width, model.info->height, model.interpretation.c_str());
    else
        ImGui::Text("%zu x %zu, %s, %zu bits", model.info->width, model.info->height, model.interpretation.c_str(),
                    model.info->bits);
    ImGui::Text("zoom %.4g %%, level %zu", 100 * model.camera->zoom().value(), model.camera->zoom().level());
    ImGui::TextUnformatted(model.pixel.empty() ? "-" : model.pixel.c_str());
    if (!model.damage.empty()) ImGui::TextUnformatted(model.damage.c_str());
    if (!model.annotations.empty()) ImGui::TextUnformatted(model.annotations.c_str());
    if (!model.switches.empty()) ImGui::TextUnformatted(model.switches.c_str());
    if (!model.complete) ImGui::TextUnformatted("loading");
    if (model.figures) {
        ImGui::Separator();
        ImGui::Text("frame %.1f ms", model.frameMilliseconds);
        ImGui::Text("GPU %zu tiles, %.0f MB", model.statistics.tilesOnGpu, megabytes(model.statistics.gpuBytes));
        ImGui::Text("host %.0f MB, %zu waiting", megabytes(model.statistics.hostBytes), model.statistics.waiting);
    }
    if (!model.message.empty()) {
        ImGui::PushTextWrapPos(std::min(360 * Lettering::scale(), leftHalf()));
        drawText(model.message);
        ImGui::PopTextWrapPos();
    }
    ImGui::PopTextWrapPos();
    ImGui::End();
}

void drawScaleBar(panels::Model const& model) {
    ScaleBar const bar = scaleBar(160.0 * static_cast<double>(Lettering::scale()), model.camera->zoom().value(),
                                  model.info->micronsPerPixelX);
    if (bar.pixels <= 0) return;
    placeNext(0, 1);
    ImGui::Begin("scale", nullptr, kWordFlags);
    ImGui::TextUnformatted(bar.text.c_str());
    ImVec2 const from = ImGui::GetCursorScreenPos();
    ImGui::Dummy(toImGui(bar.pixels, 8));
    ImDrawList& list = *ImGui::GetWindowDrawList();
    auto const width = static_cast<float>(bar.pixels);
    list.AddLine({from.x, from.y + 4}, {from.x + width, from.y + 4}, lineColour());
    for (float const x : {from.x, from.x + width - 1})
        list.AddLine({x, from.y}, {x, from.y + 8}, lineColour());
    ImGui::End();
}

// The rectangle of the view in the small picture, and where in the picture the user points to in it.
std::optional<Place> drawOverview(panels::Model const& model) {
    if (model.overview->empty()) return std::nullopt;
    placeNext(1, 1);
    ImGui::Begin("overview", nullptr, kPanelFlags);
    ImVec2 const from = ImGui::GetCursorScreenPos();
    ImVec2 const size =
        toImGui(static_cast<double>(model.overview->size().width), static_cast<double>(model.overview->size().height));
    ImGui::InvisibleButton("map", size);
    tip("a click goes there");
    bool const held = ImGui::IsItemActive();
    ImDrawList& list = *ImGui::GetWindowDrawList();
    ImVec2 const end{from.x + size.x, from.y + size.y};
    list.AddImage(textureOf(*model.overview), from, end);

    double const scaleX = static_cast<double>(size.x) / static_cast<double>(model.info->width);
    double const scaleY = static_cast<double>(size.y) / static_cast<double>(model.info->height);
    View const view = model.camera->view();
    Place const upper = model.camera->pictureAt({0, 0});
    Place const lower = model.camera->pictureAt({static_cast<double>(view.width), static_cast<double>(view.height)});
    auto const inMap = [&](Place const& place) {
        ImVec2 const at = toImGui(place.x * scaleX, place.y * scaleY);
        return ImVec2{std::clamp(from.x + at.x, from.x, end.x), std::clamp(from.y + at.y, from.y, end.y)};
    };
    list.AddRect(inMap(upper), inMap(lower), IM_COL32(255, 80, 60, 255), 0, 0, 2);
    ImGui::End();
    if (!held) return std::nullopt;
    ImVec2 const mouse = ImGui::GetIO().MousePos;
    return Place{static_cast<double>(mouse.x - from.x) / scaleX, static_cast<double>(mouse.y - from.y) / scaleY};
}

void drawTone(panels::Model const& model, panels::UserEdits& edits) {
    if (!model.tone) return;
    placeNext(1, 0);
    ImGui::Begin("tone", nullptr, kPanelFlags);
    constexpr auto kLargestCode = static_cast<int>(enhancement::kLargestCode);
    auto black = static_cast<int>(model.tone->black);
    auto white = static_cast<int>(model.tone->white);
    auto gamma = static_cast<float>(model.tone->gamma);
    ImGui::PushItemWidth(200 * Lettering::scale());
    bool changed = ImGui::InputInt("black", &black, 1, 100);
    changed |= ImGui::InputInt("white", &white, 1, 100);
    changed |= ImGui::SliderFloat("gamma", &gamma, 0.2F, 5, "%.2f", ImGuiSliderFlags_AlwaysClamp);
    ImGui::PopItemWidth();
    tip(kTyped);
    edits.automaticTone = ImGui::Button("auto");
    tip("from the 1st to the 99th percentile of a coarse level");
    ImGui::SameLine();
    ImGui::TextUnformatted(model.toneOn ? "on (g)" : "off (g)");
    ImGui::End();
    if (!changed) return;
    black = std::clamp(black, 0, kLargestCode - 1);
    white = std::clamp(white, 1, kLargestCode);
    enhancement::Gamma tone;
    tone.gamma = static_cast<double>(gamma);
    tone.black = static_cast<std::uint64_t>(black);
    tone.white = static_cast<std::uint64_t>(std::max(white, black + 1));
    edits.tone = tone;
}

// A step of a range's ends: 1 in a range of many whole numbers, else a part of it.
double stepOf(Tone const& tone) {
    double const range = tone.high - tone.low;
    return range > 100 ? 1 : range / 100;
}

// Where a sample lies between both ends of what a histogram shows, 0 to 1.
double shareOf(double sample, SampleRange const& shown) {
    return (sample - shown.low) / (shown.high - shown.low);
}

void drawBars(Histogram const& histogram, SampleRange const& shown, ImVec2 const& from, ImVec2 const& size,
              ImU32 colour) {
    ImDrawList& list = *ImGui::GetWindowDrawList();
    auto const highest = static_cast<double>(*std::max_element(histogram.counts.begin(), histogram.counts.end()));
    double const binWidth = (histogram.high - histogram.low) / static_cast<double>(Histogram::kBins);
    for (size_t bin = 0; bin < Histogram::kBins; ++bin) {
        if (histogram.counts[bin] == 0) continue;
        double const left = histogram.low + static_cast<double>(bin) * binWidth;
        auto const x0 = from.x + static_cast<float>(shareOf(left, shown)) * size.x;
        auto const x1 = from.x + static_cast<float>(shareOf(left + binWidth, shown)) * size.x;
        // Logarithms: a background that most samples have would leave nothing else to be seen.
        auto const height =
            static_cast<float>(std::log1p(static_cast<double>(histogram.counts[bin])) / std::log1p(highest)) * size.y;
        list.AddRectFilled({x0, from.y + size.y - height}, {std::max(x1, x0 + 1), from.y + size.y}, colour);
    }
}

// Moves the end of the range that is nearer to where the drag began.
bool dragEnds(Tone& tone, SampleRange const& shown, ImVec2 const& from, ImVec2 const& size) {
    ImGuiStorage& storage = *ImGui::GetStateStorage();
    ImGuiID const held = ImGui::GetID("held end");
    double const sample =
        shown.low + static_cast<double>((ImGui::GetIO().MousePos.x - from.x) / size.x) * (shown.high - shown.low);
    if (ImGui::IsItemActivated())
        storage.SetInt(held, std::abs(sample - tone.low) <= std::abs(sample - tone.high) ? 0 : 1);
    if (!ImGui::IsItemActive() || ImGui::GetIO().MouseDelta.x == 0) return false;
    double const least = (shown.high - shown.low) / static_cast<double>(size.x);
    double const inside = std::clamp(sample, shown.low, shown.high);
    if (storage.GetInt(held) == 0)
        tone.low = std::min(inside, tone.high - least);
    else
        tone.high = std::max(inside, tone.low + least);
    return true;
}

// The samples of the channel, and both ends of its range, which can be dragged.
bool editHistogram(Histogram const& histogram, ImU32 colour, Tone& tone) {
    SampleRange const shown = {std::min(histogram.low, tone.low), std::max(histogram.high, tone.high)};
    ImVec2 const size = {ImGui::CalcItemWidth(), 48 * Lettering::scale()};
    ImVec2 const from = ImGui::GetCursorScreenPos();
    ImGui::InvisibleButton("histogram", size);
    tip("samples of a coarse level; drag an end of the range");
    bool const moved = dragEnds(tone, shown, from, size);
    ImDrawList& list = *ImGui::GetWindowDrawList();
    ImVec2 const to = {from.x + size.x, from.y + size.y};
    list.AddRectFilled(from, to, kShadow);
    drawBars(histogram, shown, from, size, colour);
    for (double const end : {tone.low, tone.high}) {
        float const x = from.x + static_cast<float>(shareOf(end, shown)) * size.x;
        list.AddLine({x, from.y}, {x, to.y}, kTileColour, 2);
    }
    return moved;
}

// Typed, or in steps: a mouse pixel would be too coarse for 16 bits.
bool editRange(Tone& tone) {
    Tone edited = tone;
    double const step = stepOf(tone);
    bool changed = ImGui::InputDouble("black", &edited.low, step, 10 * step, "%.6g");
    changed |= ImGui::InputDouble("white", &edited.high, step, 10 * step, "%.6g");
    bool const isRange =
        std::abs(edited.low) <= Tone::kFarthest && std::abs(edited.high) <= Tone::kFarthest && edited.low < edited.high;
    if (!changed || !isRange) return false;
    tone = edited;
    return true;
}

bool editCurve(Tone& tone) {
    auto gamma = static_cast<float>(tone.gamma);
    auto curve = static_cast<int>(tone.curve);
    bool const bent = ImGui::SliderFloat("gamma", &gamma, 0.2F, 5, "%.2f", ImGuiSliderFlags_AlwaysClamp);
    tip(kTyped);
    if (bent) tone.gamma = static_cast<double>(gamma);
    bool const chosen = ImGui::Combo("curve", &curve, "linear\0log\0asinh\0");
    if (chosen) tone.curve = static_cast<Tone::Curve>(curve);
    return bent || chosen;
}

bool editColour(ChannelDisplay& channel) {
    Colour const& full = channel.colours.back();
    std::array<float, 3> colour{};
    for (size_t i = 0; i < colour.size(); ++i)
        colour[i] = static_cast<float>(full[i]) / 255;
    bool const isChosen =
        ImGui::ColorEdit3("##colour", colour.data(), ImGuiColorEditFlags_NoInputs | ImGuiColorEditFlags_NoTooltip);
    tip("colour");
    if (!isChosen) return false;
    Colour edited{};
    for (size_t i = 0; i < colour.size(); ++i)
        edited[i] = static_cast<std::uint8_t>(std::lround(255 * colour[i]));
    channel.colours = colourmap::rampTo(edited);
    return true;
}

// Of one channel. Which of them it has is not told: the list begins with what a click makes of it.
bool editColourMap(ChannelDisplay& channel) {
    bool changed = false;
    for (std::string const& name : colourmap::names()) {
        if (ImGui::SmallButton(name.c_str())) {
            channel.colours = colourmap::named(name);
            changed = true;
        }
        ImGui::SameLine();
    }
    if (ImGui::SmallButton("invert")) {
        channel.colours = colourmap::inverted(channel.colours);
        changed = true;
    }
    return changed;
}

// A slider whose numbers begin with `first`. Whether the index has changed.
bool editIndex(char const* label, char const* keys, size_t& index, size_t extent, int first) {
    if (extent <= 1) return false;
    auto shown = static_cast<int>(index) + first;
    int const last = static_cast<int>(extent) - 1 + first;
    std::string const format = "%d / " + std::to_string(last);
    bool const isMoved = ImGui::SliderInt(label, &shown, first, last, format.c_str(), ImGuiSliderFlags_AlwaysClamp);
    tip(keys);
    if (!isMoved) return false;
    index = static_cast<size_t>(shown - first);
    return true;
}

// Pages are counted from 1, as --page does, slices and times from 0, as microscopes do.
void editPosition(panels::Model const& model, panels::UserEdits& edits) {
    StackPosition position = model.position;
    int const first = model.stack.sliceNoun == "page" ? 1 : 0;
    bool moved = editIndex(model.stack.sliceNoun.c_str(), "Page Up, Page Down; Ctrl+click: type it", position.slice,
                           model.stack.slices, first);
    moved |= editIndex("t", ", and .; Ctrl+click: type it", position.time, model.stack.times, 0);
    if (moved) edits.position = position;
}

// Shows one channel of colour alone; all of them, if it is alone already.
void showAlone(std::vector<ChannelDisplay>& channels, ChannelDisplay const& one) {
    auto const isOther = [&](ChannelDisplay const& channel) {
        return channel.role == ChannelTable::Role::Added && channel.band != one.band;
    };
    bool const isAlone = one.isOn && std::none_of(channels.begin(), channels.end(), [&](ChannelDisplay const& channel) {
                             return isOther(channel) && channel.isOn;
                         });
    for (ChannelDisplay& channel : channels)
        if (isOther(channel)) channel.isOn = isAlone;
    for (ChannelDisplay& channel : channels)
        if (channel.band == one.band) channel.isOn = true;
}

bool editChannel(ChannelDisplay& channel, Histogram const& histogram, bool isAlone) {
    if (isAlone) {
        bool changed = editHistogram(histogram, lineColour(), channel.tone);
        changed |= editRange(channel.tone);
        changed |= editCurve(channel.tone);
        changed |= editColourMap(channel);
        return changed;
    }
    bool changed = ImGui::Checkbox("##on", &channel.isOn);
    tip("on, off");
    ImGui::SameLine();
    if (channel.role == ChannelTable::Role::Alpha) {
        drawText(channel.name);
        return changed;
    }
    changed |= editColour(channel);
    ImGui::SameLine();
    needLetters(channel.name);
    // Folded: a picture may have many.
    if (!ImGui::TreeNode("channel", "%s", channel.name.c_str())) return changed;
    Colour const& full = channel.colours.back();
    changed |= editHistogram(histogram, IM_COL32(full[0], full[1], full[2], 255), channel.tone);
    changed |= editRange(channel.tone);
    changed |= editCurve(channel.tone);
    ImGui::TreePop();
    return changed;
}

void drawChannels(panels::Model const& model, panels::UserEdits& edits) {
    if (model.channels == nullptr || model.channels->empty()) return;
    placeNext(1, 0);
    float const scale = Lettering::scale();
    // Above the overview; what does not fit is scrolled.
    ImVec2 const window = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowSizeConstraints({0, 0}, {window.x, std::max(window.y - kOverviewHeight, 80 * scale)});
    ImGui::Begin("channels", nullptr, kPanelFlags & ~ImGuiWindowFlags_NoScrollbar);
    ImGui::PushItemWidth(160 * scale);
    edits.automaticRanges = ImGui::Button("auto");
    tip("ranges from the 0.5th to the 99.5th percentile of a coarse level");
    auto channels = *model.channels;
    auto const colours = std::count_if(channels.begin(), channels.end(), [](ChannelDisplay const& channel) {
        return channel.role == ChannelTable::Role::Added;
    });
    bool changed = false;
    std::optional<ChannelDisplay> alone;
    editPosition(model, edits);
    for (size_t i = 0; i < channels.size(); ++i) {
        ChannelDisplay& channel = channels[i];
        bool const isColour = channel.role == ChannelTable::Role::Added;
        ImGui::PushID(static_cast<int>(channel.band));
        if (isColour && colours > 1) {
            if (ImGui::Button("solo")) alone = channel;
            tip("this channel alone; again: all");
            ImGui::SameLine();
        }
        changed |= editChannel(channel, model.histograms->at(i), isColour && colours == 1);
        ImGui::PopID();
    }
    if (alone) showAlone(channels, *alone);
    changed |= alone.has_value();
    ImGui::PopItemWidth();
    ImGui::End();
    if (changed) edits.channels = std::move(channels);
}

// Side by side, of one height, as large as the width allows.
void drawSlideImages(std::vector<panels::SlideImage> const& images, float width) {
    if (images.empty()) return;
    float const gap = ImGui::GetStyle().ItemSpacing.x;
    auto const ratioOf = [](panels::SlideImage const& image) {
        Size const& size = image.texture->size();
        return static_cast<float>(size.width) / static_cast<float>(size.height);
    };
    float ratios = 0;
    for (panels::SlideImage const& image : images)
        ratios += ratioOf(image);
    float const height =
        std::min((width - gap * static_cast<float>(images.size() - 1)) / ratios, 180 * Lettering::scale());
    for (panels::SlideImage const& image : images) {
        if (&image != &images.front()) ImGui::SameLine();
        ImGui::BeginGroup();
        ImGui::Image(textureOf(*image.texture), {height * ratioOf(image), height});
        drawText(image.name);
        ImGui::EndGroup();
    }
    ImGui::Separator();
}

void drawProperties(std::vector<ImageProperty> const& properties, std::vector<panels::SlideImage> const& images) {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    float const names = 130 * Lettering::scale();
    // Between the status and the scale bar.
    float const top = 120 * Lettering::scale();
    float const bottom = size.y - 70 * Lettering::scale();
    ImGui::SetNextWindowPos({kMargin, top}, ImGuiCond_Always);
    ImGui::SetNextWindowSizeConstraints({0, 0}, {size.x - 2 * kMargin, std::max(bottom - top, size.y / 4)});
    ImGui::SetNextWindowBgAlpha(0.85F);
    ImGui::Begin("properties", nullptr, kPanelFlags & ~ImGuiWindowFlags_NoScrollbar);
    float const end = std::max(std::min(names + 320 * Lettering::scale(), leftHalf()), names + 60);
    drawSlideImages(images, end);
    for (ImageProperty const& line : properties) {
        drawText(line.name);
        // Names of slides may be longer than the column.
        if (ImGui::GetItemRectSize().x + ImGui::GetStyle().WindowPadding.x < names)
            ImGui::SameLine(names);
        else
            ImGui::SetCursorPosX(names);
        ImGui::PushTextWrapPos(end);
        drawText(line.value);
        ImGui::PopTextWrapPos();
    }
    ImGui::End();
}

// A small window shows the picture.
bool hasRoomForPanels() {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    return size.x >= 480 * Lettering::scale() && size.y >= 360 * Lettering::scale();
}

// A label that is legible on any picture.
void drawLabel(ImDrawList& list, ImVec2 const& at, char const* text) {
    ImVec2 const size = ImGui::CalcTextSize(text);
    list.AddRectFilled({at.x - 3, at.y - 1}, {at.x + size.x + 3, at.y + size.y + 1}, kShadow);
    list.AddText(at, kTileColour, text);
}

} // namespace

panels::UserEdits panels::draw(Model const& model) {
    UserEdits edits;
    // Nothing covers anything else.
    if (model.help) {
        drawKeys();
        return edits;
    }
    if (hasRoomForPanels()) {
        drawStatus(model);
        drawScaleBar(model);
        drawTone(model, edits);
        drawChannels(model, edits);
        edits.lookAt = drawOverview(model);
    }
    if (model.properties != nullptr) drawProperties(*model.properties, *model.slideImages);
    return edits;
}

void panels::drawTiles(Camera const& camera) {
    View const view = camera.view();
    Size const whole = camera.size();
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    auto const clipped = [](std::int64_t from, size_t frame, size_t end) {
        auto const last = std::min(from + static_cast<std::int64_t>(frame), static_cast<std::int64_t>(end));
        return static_cast<size_t>(std::max<std::int64_t>(last, 0));
    };
    auto const tileAt = [&](std::int64_t pixel) {
        return view.zoom.sampleAt(static_cast<size_t>(std::max<std::int64_t>(pixel, 0))) / leveltile::kSide;
    };
    size_t const right = clipped(view.x, view.width, whole.width);
    size_t const bottom = clipped(view.y, view.height, whole.height);
    auto const inFrameX = [&](size_t pixel) { return static_cast<double>(pixel) - static_cast<double>(view.x); };
    auto const inFrameY = [&](size_t pixel) { return static_cast<double>(pixel) - static_cast<double>(view.y); };
    for (size_t row = tileAt(view.y); view.zoom.pixelsOf(row * leveltile::kSide) < bottom; ++row)
        for (size_t column = tileAt(view.x); view.zoom.pixelsOf(column * leveltile::kSide) < right; ++column) {
            auto const edge = [&](size_t tile, size_t end) {
                return std::min(view.zoom.pixelsOf(tile * leveltile::kSide), end);
            };
            ImVec2 const from = toImGui(inFrameX(edge(column, whole.width)), inFrameY(edge(row, whole.height)));
            ImVec2 const to = toImGui(inFrameX(edge(column + 1, whole.width)), inFrameY(edge(row + 1, whole.height)));
            list.AddRect(from, to, kTileColour);
            std::array<char, 64> text{};
            std::snprintf(text.data(), text.size(), "%zu: %zu,%zu", view.zoom.level(), column, row);
            drawLabel(list, {from.x + 6, from.y + 5}, text.data());
        }
}

void panels::drawRuler(Camera const& camera, Ruler::Line const& line, std::string const& length) {
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    Place const from = camera.frameAt(line.from);
    Place const to = camera.frameAt(line.to);
    list.AddLine(toImGui(from.x, from.y), toImGui(to.x, to.y), kShadow, 4);
    list.AddLine(toImGui(from.x, from.y), toImGui(to.x, to.y), kTileColour, 2);
    drawLabel(list, toImGui(to.x + 10, to.y + 10), length.c_str());
}

void panels::drawNameAt(Place const& cursor, std::string const& name) {
    needLetters(name);
    drawLabel(*ImGui::GetBackgroundDrawList(), toImGui(cursor.x + 14, cursor.y + 14), name.c_str());
}

void panels::drawKeys() {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x / 2, size.y / 2}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::SetNextWindowBgAlpha(0.85F);
    // Close together where there is little room.
    ImVec2 spacing = ImGui::GetStyle().ItemSpacing;
    constexpr auto kLines = static_cast<float>(kHelp.size() + 4);
    if (kLines * ImGui::GetTextLineHeightWithSpacing() > size.y) spacing.y = 0;
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, spacing);
    ImGui::Begin("help", nullptr, kWordFlags);
    for (Help const& line : kHelp) {
        ImGui::TextUnformatted(line.key);
        ImGui::SameLine(160 * Lettering::scale());
        ImGui::TextUnformatted(line.does);
    }
    ImGui::Separator();
    ImGui::TextUnformatted(kMoreHelp);
    ImGui::End();
    ImGui::PopStyleVar();
}

void panels::drawMessage(std::string const& text, bool isImporting) {
    if (text.empty()) return;
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    // Between scale bar and overview, or above what is there.
    float const between = size.x - 2 * kOverviewHeight;
    bool const fits = between >= 300 * Lettering::scale() && !isImporting;
    float const bottom = fits ? kMargin : isImporting ? 90 * Lettering::scale() : kOverviewHeight;
    ImGui::SetNextWindowPos({size.x / 2, size.y - bottom}, ImGuiCond_Always, {0.5F, 1});
    ImGui::SetNextWindowBgAlpha(0.9F);
    ImGui::Begin("message", nullptr, kWordFlags);
    ImGui::PushTextWrapPos(fits ? between : size.x * 0.75F);
    drawText(text);
    ImGui::PopTextWrapPos();
    ImGui::End();
}

void panels::drawMask(OverlayTexture const& mask) {
    if (mask.empty()) return;
    ImGui::GetBackgroundDrawList()->AddImage(
        textureOf(mask), {0, 0},
        toImGui(static_cast<double>(mask.size().width), static_cast<double>(mask.size().height)));
}

void panels::drawAnnotations(std::vector<AnnotationLayer::Placed> const& parts) {
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    auto const at = [](Place const& place) { return toImGui(place.x, place.y); };
    for (AnnotationLayer::Placed const& part : parts)
        list.AddImage(textureOf(*part.texture), at(part.from), at(part.to), at(part.textureFrom), at(part.textureTo));
}

void panels::drawGrowing(OverlayTexture const& picture, Camera const& camera, Size const& covered) {
    if (picture.empty()) return;
    Place const from = camera.frameAt({0, 0});
    Place const to = camera.frameAt({static_cast<double>(covered.width), static_cast<double>(covered.height)});
    ImGui::GetBackgroundDrawList()->AddImage(textureOf(picture), toImGui(from.x, from.y), toImGui(to.x, to.y));
}

void panels::drawProgress(std::string const& name, double share, std::string const& left, Size const& frame) {
    ImVec2 const bottom = toImGui(static_cast<double>(frame.width) / 2, static_cast<double>(frame.height) - 8);
    ImGui::SetNextWindowPos(bottom, ImGuiCond_Always, {0.5F, 1});
    ImGui::SetNextWindowBgAlpha(0.7F);
    ImGui::Begin("progress", nullptr, kWordFlags);
    needLetters(name);
    ImGui::Text("importing %s (first time only)", name.c_str());
    ImGui::ProgressBar(static_cast<float>(share), {320 * Lettering::scale(), 0});
    ImGui::TextUnformatted(left.c_str());
    ImGui::End();
}
