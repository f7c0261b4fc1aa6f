// ./run without its build: a copy of the script in a folder of its own, with the built program.
#include "tests/apps/velmora/Process.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace {

class RunScriptGLTest : public testing::Test {
protected:
    void SetUp() override {
        for (std::string const folder : {"root/scripts", "root/build/run/apps/velmora", "bin", "here", "there"})
            fs::create_directories(path(folder));
        fs::path const script = VELMORA_RUN_SCRIPT;
        fs::copy_file(script, path("root/run"));
        for (std::string const helper : {"scripts/lib.sh", "scripts/usable-path"})
            fs::copy_file(script.parent_path() / helper, path("root/" + helper));
        fs::create_symlink(VELMORA_PROGRAM, path("root/build/run/apps/velmora/velmora"));
        for (std::string const tool : {"root/scripts/install-packages", "bin/cmake"})
            fs::create_symlink("/bin/true", path(tool));
        testimages::writePattern8(path("here/a.png"), "", 60, 50, 3);
        testimages::writePattern8(path("here/b.png"), "", 30, 20, 3);
    }

    std::string path(std::string const& name) const { return folder_.path(name); }

    // The exit code, without a display.
    int run(std::string const& where, std::string const& arguments) const {
        std::string const command = "cd '" + path(where) + "' && PATH='" + path("bin") +
                                    "':$PATH DISPLAY= WAYLAND_DISPLAY= ../root/run " + arguments + " >'" + path("out") +
                                    "' 2>&1";
        int const status = std::system(command.c_str()); // NOLINT(cert-env33-c): names of this test alone
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    bool shows(std::string const& view, std::string const& image) const {
        return testimages::difference(testimages::readByVips(path(view)), testimages::readByVips(path(image))).empty();
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(RunScriptGLTest, ItsOwnFileIsDrawnAnewInEveryFolder) {
    for (int i = 0; i < 2; ++i)
        for (std::string const image : {"a.png", "b.png"})
            for (std::string const folder : {"here", "there"}) {
                EXPECT_EQ(run(folder, "../here/" + image), 0) << readFile(path("out"));
                EXPECT_TRUE(shows(folder + "/view.png", "here/" + image));
            }
}

TEST_F(RunScriptGLTest, AnotherFileIsReplacedOnlyByForce) {
    writeFile(path("here/view.png"), "mine");
    EXPECT_EQ(run("here", "a.png"), 6);
    EXPECT_NE(readFile(path("out")).find("'view.png' exists already"), std::string::npos) << readFile(path("out"));
    EXPECT_EQ(readFile(path("here/view.png")), "mine");
    EXPECT_EQ(run("here", "a.png --force"), 0);
    EXPECT_TRUE(shows("here/view.png", "here/a.png"));
    EXPECT_EQ(run("here", "a.png --force"), 0) << "twice is no mistake: " << readFile(path("out"));
    // A different file with the name of the drawn one.
    writeFile(path("here/view.png"), "mine again");
    EXPECT_EQ(run("here", "a.png"), 6);
    EXPECT_EQ(readFile(path("here/view.png")), "mine again");
    EXPECT_EQ(run("here", "a.png -o b.png"), 6);
}

TEST_F(RunScriptGLTest, TheInputIsNeverReplaced) {
    EXPECT_EQ(run("here", "a.png"), 0);
    std::string const before = readFile(path("here/view.png"));
    EXPECT_EQ(run("here", "view.png -r 0,0,5,5"), 6);
    EXPECT_NE(readFile(path("out")).find("it is the input itself"), std::string::npos) << readFile(path("out"));
    EXPECT_EQ(readFile(path("here/view.png")), before);
}
