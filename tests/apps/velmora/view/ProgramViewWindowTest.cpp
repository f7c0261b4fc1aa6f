// The viewer in a window of an X server, compared with what the server shows of it. Runs below xvfb-run.
#include "tests/apps/velmora/view/ViewerFixture.h"
#include "tests/apps/velmora/view/XwdImage.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

class ProgramViewWindowTest : public ViewerFixture {
protected:
    Process::Environment environment() const {
        return {{"SDL_VIDEODRIVER", "x11"}, {"XDG_CACHE_HOME", path("cache")}, {"XDG_STATE_HOME", path("state")}};
    }

    // What the program and what the X server say that the window shows at the end of a script.
    struct Shown {
        testimages::Pixels screenshot;
        testimages::Pixels window;
    };

    Shown after(std::string const& text, std::vector<std::string> arguments) const {
        std::string const file = path("shown.png");
        arguments.insert(arguments.begin(), "view");
        arguments.insert(arguments.end(),
                         {"--force", "--script", script(text + "wait\nscreenshot " + file + "\nsleep 600000\n")});
        Process process(arguments, environment());
        while (process.running() && !std::filesystem::exists(file))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (!process.running()) {
            ADD_FAILURE() << process.wait().err;
            return {};
        }
        std::string const command = "xwd -silent -name 'velmora - a.vlm' -out '" + path("window.xwd") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command; // NOLINT(cert-env33-c): our own words
        process.signal(SIGTERM);
        EXPECT_EQ(process.wait().exitCode, 130);
        return {testimages::readByVips(file), readXwd(path("window.xwd"))};
    }
};

} // namespace

TEST_F(ProgramViewWindowTest, AScreenshotIsWhatTheWindowShows) {
    Shown const shown = after("key d\nkey ?\n", {makeStore("a.vlm", 900, 700), "--size", "640x480"});
    EXPECT_EQ(shown.window.width, 640u);
    expectPixels(shown.window, shown.screenshot);
}

TEST_F(ProgramViewWindowTest, AResizedWindowShowsThePicturesOwnPixels) {
    std::vector<std::string> const arguments{
        makeStore("a.vlm", 900, 700), "--bare", "--size", "640x480", "--at", "450,350,1"};
    Shown const larger = after("wait\nresize 800 600\n", arguments);
    expectPixels(larger.window, expected(50, 50, 800, 600));
    expectPixels(larger.screenshot, larger.window);
    std::filesystem::remove(path("shown.png"));
    Shown const smaller = after("wait\nresize 301 131\n", arguments);
    expectPixels(smaller.window, expected(300, 285, 301, 131));
    expectPixels(smaller.screenshot, smaller.window);
    std::filesystem::remove(path("shown.png"));
    Shown const least = after("wait\nresize 100 50\n", arguments);
    EXPECT_EQ(least.window.width, 160u);
    EXPECT_EQ(least.window.height, 120u);
}
