#include "apps/velmora/shared/ProgressBar.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace {

// A container may have no /dev/pts. tests/expected-skips.txt lists the skip for that case only.
constexpr auto kNoTerminal = "no pseudo terminal can be opened";

// A terminal that keeps its output.
class PseudoTerminal {
public:
    PseudoTerminal() {
        master_ = posix_openpt(O_RDWR | O_NOCTTY);
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) return;
        stream_ = std::fopen(ptsname(master_), "w");
    }
    ~PseudoTerminal() {
        if (stream_ != nullptr) std::fclose(stream_);
        if (master_ >= 0) close(master_);
    }
    PseudoTerminal(PseudoTerminal const&) = delete;
    PseudoTerminal& operator=(PseudoTerminal const&) = delete;

    std::FILE* stream() const { return stream_; }

    // The output up to `end`, or that of two seconds: the terminal delivers it with a delay.
    std::string writtenUpTo(std::string const& end) const {
        std::string text;
        pollfd descriptor{master_, POLLIN, 0};
        while (text.size() < end.size() || text.compare(text.size() - end.size(), end.size(), end) != 0) {
            std::array<char, 4096> buffer{};
            if (poll(&descriptor, 1, 2000) <= 0) break;
            ssize_t const count = ::read(master_, buffer.data(), buffer.size());
            if (count <= 0) break;
            text.append(buffer.data(), static_cast<size_t>(count));
        }
        return text;
    }

private:
    int master_ = -1;
    std::FILE* stream_ = nullptr;
};

} // namespace

TEST(ProgressBarTest, LineShowsTheShareDone) {
    EXPECT_EQ(ProgressBar::line("a.png", 0, 8), "a.png  [------------------------]   0%");
    EXPECT_EQ(ProgressBar::line("a.png", 2, 8), "a.png  [######------------------]  25%");
    EXPECT_EQ(ProgressBar::line("a.png", 8, 8), "a.png  [########################] 100%");
}

TEST(ProgressBarTest, LineSurvivesNoWorkAndTooMuch) {
    EXPECT_EQ(ProgressBar::line("a", 0, 0), "a  [------------------------]   0%");
    EXPECT_EQ(ProgressBar::line("a", 9, 8), "a  [########################] 100%");
}

TEST(ProgressBarTest, RateIsInMillionsOfPixelsPerSecond) {
    EXPECT_EQ(ProgressBar::rate(25000000, 2), "  12.5 Mpixel/s");
    EXPECT_EQ(ProgressBar::rate(0, 2), "");
    EXPECT_EQ(ProgressBar::rate(25000000, 0), "");
}

TEST(ProgressBarTest, ALineWithPixelsPerStepSaysTheRate) {
    PseudoTerminal const terminal;
    if (terminal.stream() == nullptr) GTEST_SKIP() << kNoTerminal;
    ProgressBar bar("a.vlm", terminal.stream(), 1000000);
    bar.update(2, 2);
    EXPECT_NE(terminal.writtenUpTo(" Mpixel/s").find("] 100%  "), std::string::npos);
}

TEST(ProgressBarTest, TerminalSeesTheBarAndAWipedLineAtTheEnd) {
    PseudoTerminal const terminal;
    if (terminal.stream() == nullptr) GTEST_SKIP() << kNoTerminal;
    {
        ProgressBar bar("a.png", terminal.stream());
        bar.update(1, 2);
        bar.update(2, 2);
    }
    std::string const full = ProgressBar::line("a.png", 2, 2);
    std::string const wiped = "\r\x1b[K";
    std::string const text = terminal.writtenUpTo(full + wiped);
    EXPECT_EQ(text.rfind(wiped + ProgressBar::line("a.png", 1, 2), 0), 0u) << text;
    ASSERT_GE(text.size(), full.size() + wiped.size());
    EXPECT_EQ(text.substr(text.size() - full.size() - wiped.size()), full + wiped);
}

TEST(ProgressBarTest, ATitleIsShownAndNotObeyed) {
    PseudoTerminal const terminal;
    if (terminal.stream() == nullptr) GTEST_SKIP() << kNoTerminal;
    ProgressBar bar("a\x1b[2J.png", terminal.stream());
    bar.update(2, 2);
    EXPECT_NE(terminal.writtenUpTo("100%").find("a\\x1b[2J.png  ["), std::string::npos);
}

TEST(ProgressBarTest, AFileSeesNothing) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    {
        ProgressBar bar("a.png", file);
        bar.update(1, 2);
    }
    std::fflush(file);
    EXPECT_EQ(std::ftell(file), 0);
    std::fclose(file);
}

TEST(ProgressBarTest, TheTimeLeftIsInProportion) {
    EXPECT_EQ(ProgressBar::timeLeft(10, 0.5), "0:10 left");
    EXPECT_EQ(ProgressBar::timeLeft(30, 0.25), "1:30 left");
    EXPECT_EQ(ProgressBar::timeLeft(3600, 0.5), "60:00 left");
    EXPECT_EQ(ProgressBar::timeLeft(1, 0.999), "0:00 left");
    EXPECT_EQ(ProgressBar::timeLeft(5, 0), "") << "nothing is known yet";
    EXPECT_EQ(ProgressBar::timeLeft(5, 1), "");
    EXPECT_EQ(ProgressBar::timeLeft(5, std::nan("")), "");
}
