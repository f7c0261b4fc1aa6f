#include "apps/velmora/view/Lettering.h"

#include <algorithm>
#include <cmath>

// The font's file, in the program itself: PanelFont.cpp.in.
extern "C" {
extern unsigned char const velmoraPanelFont[];    // NOLINT(modernize-avoid-c-arrays): its size is the linker's
extern unsigned char const velmoraPanelFontEnd[]; // NOLINT(modernize-avoid-c-arrays)
}

namespace {

constexpr ImWchar kReplacement = 0xfffd;
constexpr unsigned kFirstBeyondLatin1 = 0x100; // Latin-1 is always needed, and all of it that has a shape is there

} // namespace

Lettering::Lettering() {
    ImGui::GetIO().UserData = this;
    needed_.AddRanges(ImGui::GetIO().Fonts->GetGlyphRangesDefault());
    needed_.AddChar(kReplacement);
}

bool Lettering::prepare(double pixelsPerUnit) {
    auto const pixels = std::round(kUnits * static_cast<float>(std::max(pixelsPerUnit, 1.0)));
    if (!isDue_ && pixels == pixels_) return false;
    ImVector<ImWchar> ranges;
    needed_.BuildRanges(&ranges);
    pixels_ = pixels;
    isDue_ = false;
    build(ranges);
    if (findOthers()) build(ranges);
    return true;
}

void Lettering::build(ImVector<ImWchar> const& ranges) {
    ImFontConfig config;
    config.FontDataOwnedByAtlas = false;
    ImFontAtlas& atlas = *ImGui::GetIO().Fonts;
    auto const add = [&](unsigned char const* bytes, size_t count, ImVector<ImWchar> const& letters) {
        // They are only read.
        atlas.AddFontFromMemoryTTF(const_cast<unsigned char*>(bytes), static_cast<int>(count), pixels_, &config,
                                   letters.Data);
    };
    auto const addOwn = [&] {
        atlas.Clear();
        config.MergeMode = false;
        config.FontNo = 0;
        add(velmoraPanelFont, static_cast<size_t>(velmoraPanelFontEnd - velmoraPanelFont), ranges);
        config.MergeMode = true;
    };
    addOwn();
    for (auto const& [face, letters] : others_) {
        config.FontNo = face.index;
        auto const& bytes = fonts_.bytes(face);
        add(bytes.data(), bytes.size(), letters);
    }
    if (atlas.Build() || others_.empty()) return;
    // A font of the system that cannot be read.
    others_.clear();
    addOwn();
    atlas.Build();
}

// Whether the system has letters that were asked for and are not there.
bool Lettering::findOthers() {
    ImFont const& font = *ImGui::GetIO().Fonts->Fonts.front();
    bool any = false;
    for (unsigned code = kFirstBeyondLatin1; code <= IM_UNICODE_CODEPOINT_MAX; ++code) {
        auto const letter = static_cast<ImWchar>(code);
        if (!needed_.GetBit(code) || font.FindGlyphNoFallback(letter) != nullptr) continue;
        auto const face = fonts_.with(letter);
        if (!face) continue;
        ImVector<ImWchar>& letters = others_[*face];
        if (!letters.empty()) letters.pop_back();
        for (ImWchar const end : {letter, letter, ImWchar{0}})
            letters.push_back(end);
        any = true;
    }
    return any;
}

void Lettering::need(std::string const& text) {
    bool const isAscii = std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
    if (isAscii) return;
    ImVector<ImU32> const before = needed_.UsedChars;
    needed_.AddText(text.c_str());
    isDue_ = isDue_ || !std::equal(before.begin(), before.end(), needed_.UsedChars.begin());
}

float Lettering::scale() {
    return ImGui::GetFontSize() / kUnits;
}

void drawText(std::string const& text) {
    needLetters(text);
    ImGui::TextUnformatted(text.c_str());
}

void needLetters(std::string const& text) {
    static_cast<Lettering*>(ImGui::GetIO().UserData)->need(text);
}
