#pragma once

#include <algorithm>

/// What of a window has to be drawn anew; each includes those before it.
enum class Redraw { Nothing, Overlay, Picture };

/// Milliseconds from the start of a frame, whose drawing took so long, to the next one that only shows more of what is
/// loaded: the refresh of a screen at least, and so many that four fifths of the time are left to make the picture;
/// where drawing is slow half of it, so that a person sees how it goes on.
constexpr double pauseAfterFrame(double drawingMilliseconds) {
    constexpr double kRefresh = 1000.0 / 60;
    constexpr double kNoticed = 250;
    return std::max(kRefresh, std::min(5 * drawingMilliseconds, std::max(kNoticed, 2 * drawingMilliseconds)));
}

/// What is due in a window. Events and what threads have finished raise it, drawing lowers it.
///
/// Dear ImGui needs up to kSettlingFrames frames until its layout is stable: so many are drawn each time that something
/// was due.
class DueRedraw {
public:
    static constexpr int kSettlingFrames = 3;

    void raise(Redraw what) {
        if (what == Redraw::Nothing) return;
        due_ = std::max(due_, what);
        framesToSettle_ = kSettlingFrames;
    }
    /// By a frame that has all that is due.
    void lower() {
        due_ = Redraw::Nothing;
        framesToSettle_ = std::max(framesToSettle_ - 1, 0);
    }

    Redraw due() const { return due_; }
    /// What to draw now. While more of the picture is to come the overlay may settle later.
    Redraw next(bool pictureComplete) const {
        if (due_ != Redraw::Nothing) return due_;
        return pictureComplete && framesToSettle_ > 0 ? Redraw::Overlay : Redraw::Nothing;
    }
    /// Whether the window shows all that was due, and the overlay as it stays.
    bool settled() const { return due_ == Redraw::Nothing && framesToSettle_ == 0; }

private:
    Redraw due_ = Redraw::Nothing;
    int framesToSettle_ = 0;
};
