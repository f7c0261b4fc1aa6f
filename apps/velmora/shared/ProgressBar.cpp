#include "apps/velmora/shared/ProgressBar.h"

#include "host/PlainText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unistd.h>
#include <utility>

namespace {

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
constexpr size_t kBarCharacters = 24;
constexpr auto kEraseLine = "\r\x1b[K";

} // namespace

ProgressBar::ProgressBar(std::string const& title, std::FILE* stream, size_t pixelsPerStep)
    : title_(terminalText(title)),
      stream_(stream),
      pixelsPerStep_(pixelsPerStep),
      shown_(isatty(fileno(stream)) == 1) {}

ProgressBar::~ProgressBar() {
    if (!drawn_) return;
    std::fputs(kEraseLine, stream_);
    std::fflush(stream_);
}

void ProgressBar::update(size_t done, size_t total) {
    if (!shown_) return;
    auto const now = Clock::now();
    if (drawn_ && now - lastDraw_ < kRedrawInterval && done < total) return;
    double const seconds = std::chrono::duration<double>(now - start_).count();
    std::string const left = timeLeft(seconds, static_cast<double>(done) / static_cast<double>(total));
    std::string const text = kEraseLine + line(title_, done, total) + rate(done * pixelsPerStep_, seconds) +
                             (left.empty() ? "" : "  " + left);
    std::fputs(text.c_str(), stream_);
    std::fflush(stream_);
    drawn_ = true;
    lastDraw_ = now;
}

std::string ProgressBar::line(std::string const& title, size_t done, size_t total) {
    size_t const shown = total == 0 ? 0 : std::min(done, total);
    size_t const whole = std::max<size_t>(total, 1);
    size_t const filled = kBarCharacters * shown / whole;
    std::string const percent = std::to_string(100 * shown / whole);
    return title + "  [" + std::string(filled, '#') + std::string(kBarCharacters - filled, '-') + "] " +
           std::string(percent.size() < 3 ? 3 - percent.size() : 0, ' ') + percent + "%";
}

std::string ProgressBar::timeLeft(double seconds, double share) {
    if (!(share > 0) || share >= 1) return "";
    auto const left = static_cast<size_t>(std::lround(seconds / share * (1 - share)));
    std::string const padded = std::to_string(100 + left % 60).substr(1);
    return std::to_string(left / 60) + ":" + padded + " left";
}

std::string ProgressBar::rate(size_t pixels, double seconds) {
    if (pixels == 0 || seconds <= 0) return "";
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "  %.1f Mpixel/s", static_cast<double>(pixels) / 1e6 / seconds);
    return text.data();
}
