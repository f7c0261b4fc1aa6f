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
    ImFontConfig config;
    config.FontDataOwnedByAtlas = false;
    ImFontAtlas& atlas = *ImGui::GetIO().Fonts;
    atlas.Clear();
    // It is only read.
    atlas.AddFontFromMemoryTTF(const_cast<unsigned char*>(velmoraPanelFont),
                               static_cast<int>(velmoraPanelFontEnd - velmoraPanelFont), pixels, &config, ranges.Data);
    atlas.Build();
    pixels_ = pixels;
    isDue_ = false;
    return true;
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
