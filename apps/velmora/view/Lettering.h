#pragma once

#include "apps/velmora/view/SystemFonts.h"

#include <imgui.h>

#include <map>
#include <string>

/// The letters of the panels: DejaVu Sans, rasterised for the size at which they are shown, so that they are sharp on
/// any screen. Letters beyond those of western Europe are added once a text has them; those that it lacks are the
/// system's, each by itself, as scripts need it whose letters have one shape. For Dear ImGui's only context, on the GL
/// thread.
class Lettering {
public:
    /// Units of the window system that a line of letters is high.
    static constexpr float kUnits = 15;

    Lettering();
    Lettering(Lettering const&) = delete;
    Lettering& operator=(Lettering const&) = delete;

    /// Before a frame: makes letters of this size, with all that were asked for. Whether they are others than before.
    bool prepare(double pixelsPerUnit);
    /// Asks for the letters of a text in UTF-8, from the next frame on.
    void need(std::string const& text);
    /// Whether a text has been drawn without some of its letters.
    bool isDue() const { return isDue_; }

    /// Pixels of the frame per unit, as of the last frame.
    static float scale();

private:
    void build(ImVector<ImWchar> const& ranges);
    bool findOthers();

    ImFontGlyphRangesBuilder needed_;
    SystemFonts fonts_;
    std::map<SystemFonts::Face, ImVector<ImWchar>> others_; // pairs of equal letters, and 0
    float pixels_ = 0;                                      // 0: none were made
    bool isDue_ = false;
};

/// Draws a text that may have any letters.
void drawText(std::string const& text);
/// Asks for the letters of a text that is drawn otherwise.
void needLetters(std::string const& text);
