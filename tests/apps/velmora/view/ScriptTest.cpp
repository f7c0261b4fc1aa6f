#include "apps/velmora/view/Script.h"

#include "apps/velmora/view/ScriptPlayer.h"
#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

// SDL's queue without a display.
class ScriptTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(SDL_Init(SDL_INIT_EVENTS), 0) << SDL_GetError(); }
    void TearDown() override { SDL_Quit(); }

    // Types of what a turn pushes.
    std::vector<Uint32> turn(ScriptPlayer& player, bool complete = true) {
        ScriptPlayer::Host host;
        host.complete = complete;
        host.resize = [this](int width, int height) { done_ += std::to_string(width) + "x" + std::to_string(height); };
        host.screenshot = [this](std::string const& file) { done_ += file; };
        player.turn(host);
        std::vector<Uint32> types;
        SDL_Event event{};
        while (SDL_PollEvent(&event) == 1) {
            types.push_back(event.type);
            last_ = event;
        }
        return types;
    }

    static ScriptPlayer player(std::string const& text) { return ScriptPlayer(Script::parse(text, "s")); }

    std::string done_;
    SDL_Event last_{};
};

void expectRefused(std::string const& text, std::vector<std::string> const& words) {
    try {
        Script::parse(text, "walk.txt");
        ADD_FAILURE() << text;
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::Usage);
        for (std::string const& word : words)
            EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << word << " in " << error.what();
    }
}

} // namespace

TEST_F(ScriptTest, ALineIsAnAction) {
    auto const lines =
        Script::parse("# a walk\n\nkey f # the whole\n  wheel 10 20 -3\r\nscreenshot a b.png \nwait\n", "s");
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].action, Script::Action::Key);
    EXPECT_EQ(lines[0].text, "f");
    EXPECT_EQ(lines[1].numbers, (std::vector{10, 20, -3}));
    EXPECT_EQ(lines[2].text, "a b.png") << "names may have blanks";
    EXPECT_EQ(lines[3].action, Script::Action::Wait);
}

TEST_F(ScriptTest, WhatCannotBeReadIsNamed) {
    TemporaryFolder const folder;
    auto const expectUnread = [](std::string const& path, HostError::Kind kind, std::string const& word) {
        try {
            Script::read(path);
            ADD_FAILURE() << path;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), kind);
            EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << error.what();
        }
    };
    expectUnread(folder.path("none.txt"), HostError::Kind::MissingFile, "no such file");
    expectUnread(folder.path(), HostError::Kind::MissingFile, "it is a folder");
    expectUnread("/proc/self/mem", HostError::Kind::MissingFile, "Input/output error");
    expectUnread("/dev/zero", HostError::Kind::Usage, "more than a million bytes");
    writeFile(folder.path("a.txt"), "wait\n#" + std::string(500'000, 'x') + "\nquit");
    EXPECT_EQ(Script::read(folder.path("a.txt")).size(), 2u);
    writeFile(folder.path("a.txt"), "");
    EXPECT_TRUE(Script::read(folder.path("a.txt")).empty());
}

TEST_F(ScriptTest, WhatIsWrongIsNamedWithItsLine) {
    expectRefused("wait\n\ndance 3\n", {"walk.txt, line 3", "'dance'"});
    expectRefused("wheel 1 2\n", {"line 1", "3 whole numbers"});
    expectRefused("wheel 1 2 3 4\n", {"3 whole numbers"});
    expectRefused("drag 1 2 3 x\n", {"4 whole numbers"});
    expectRefused("sleep 1.5\n", {"1 whole numbers"});
    expectRefused("sleep -1\n", {"line 1", "sleep", "-1", "0 to 3600000"});
    expectRefused("wait 3\n", {"0 whole numbers"});
    expectRefused("key\n", {"a name"});
    expectRefused("key nosuchkey\n", {"'nosuchkey' is no key"});
}

TEST_F(ScriptTest, NumbersThatNoWindowNeedsAreRefusedWithTheirLine) {
    expectRefused("wait\nwheel 1 2 200000000\n", {"walk.txt, line 2", "wheel", "200000000", "-1000 to 1000"});
    expectRefused("wheel 1 2 -1001\n", {"-1001"});
    expectRefused("wheel 1 2 99999999999999999999\n", {"line 1", "99999999999999999999", "-1000 to 1000"});
    expectRefused("drag -2147483648 0 2147483647 0\n", {"drag", "-2147483648", "-100000 to 100000"});
    expectRefused("drag 0 0 0 100001\n", {"100001"});
    expectRefused("resize 0 10\n", {"resize", "1 to 16384"});
    expectRefused("resize 10 16385\n", {"16385"});
    expectRefused("sleep 3600001\n", {"3600001"});
    auto const lines = Script::parse("wheel -100000 100000 -1000\nresize 16384 1\nsleep 3600000\n", "s");
    EXPECT_EQ(lines[0].numbers, (std::vector{-100000, 100000, -1000}));
    EXPECT_EQ(lines[1].numbers, (std::vector{16384, 1}));
    EXPECT_EQ(lines[2].numbers, (std::vector{3600000}));
}

TEST_F(ScriptTest, AMissingFileIsAnError) {
    try {
        Script::read("/nowhere/walk.txt");
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::MissingFile);
    }
    TemporaryFolder const folder;
    writeFile(folder.path("walk.txt"), "quit");
    EXPECT_EQ(Script::read(folder.path("walk.txt")).front().action, Script::Action::Quit);
    writeFile(folder.path("empty.txt"), "");
    EXPECT_TRUE(Script::read(folder.path("empty.txt")).empty());
}

TEST_F(ScriptTest, KeysAreSdlsOwnNames) {
    for (auto const& [name, code] : std::vector<std::pair<std::string, SDL_Keycode>>{
             {"f", SDLK_f}, {"?", SDLK_QUESTION}, {"+", SDLK_PLUS}, {"Left", SDLK_LEFT}, {"Escape", SDLK_ESCAPE}}) {
        ScriptPlayer one = player("key " + name);
        EXPECT_EQ(turn(one), (std::vector<Uint32>{SDL_KEYDOWN, SDL_KEYUP}));
        EXPECT_EQ(last_.key.keysym.sym, code) << name;
    }
}

TEST_F(ScriptTest, CtrlIsHeldWhileAKeyIsPressed) {
    ScriptPlayer one = player("key Ctrl+A");
    EXPECT_EQ(turn(one), (std::vector<Uint32>{SDL_KEYDOWN, SDL_KEYDOWN}));
    EXPECT_EQ(last_.key.keysym.sym, SDLK_a);
    EXPECT_EQ(last_.key.keysym.mod, KMOD_LCTRL);
    EXPECT_EQ(turn(one), (std::vector<Uint32>{SDL_KEYUP, SDL_KEYUP}));
    EXPECT_EQ(last_.key.keysym.sym, SDLK_LCTRL);
    EXPECT_EQ(last_.key.keysym.mod, KMOD_NONE);
    expectRefused("key Ctrl+nosuchkey\n", {"'Ctrl+nosuchkey' is no key"});
    expectRefused("key Ctrl+\n", {"is no key"});
}

TEST_F(ScriptTest, TextIsTyped) {
    ScriptPlayer one = player("type /a b.tif");
    EXPECT_EQ(turn(one), (std::vector<Uint32>{SDL_TEXTINPUT}));
    EXPECT_STREQ(last_.text.text, "/a b.tif");
    // As much as an event holds.
    std::string const most(SDL_TEXTINPUTEVENT_TEXT_SIZE - 1, 'x');
    ScriptPlayer two = player("type " + most);
    turn(two);
    EXPECT_EQ(last_.text.text, most);
    expectRefused("type " + most + "x\n", {"line 1", "at most 31 bytes"});
    expectRefused("type\n", {"a name"});
}

TEST_F(ScriptTest, AFileIsDropped) {
    ScriptPlayer one = player("drop a b.tif");
    EXPECT_EQ(turn(one), (std::vector<Uint32>{SDL_DROPFILE}));
    EXPECT_STREQ(last_.drop.file, "a b.tif");
    SDL_free(last_.drop.file);
}

TEST_F(ScriptTest, EveryMovementHasItsTurn) {
    ScriptPlayer wheel = player("wheel 10 20 -2");
    EXPECT_EQ(turn(wheel), (std::vector<Uint32>{SDL_MOUSEMOTION}));
    EXPECT_EQ(last_.motion.y, 20);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(wheel.active());
        EXPECT_EQ(turn(wheel), (std::vector<Uint32>{SDL_MOUSEWHEEL}));
        EXPECT_EQ(last_.wheel.y, -1);
    }
    EXPECT_FALSE(wheel.active());
    EXPECT_TRUE(turn(wheel).empty());
}

TEST_F(ScriptTest, ADragEndsWhereItShould) {
    ScriptPlayer drag = player("drag 10 20 31 -5");
    std::vector<Uint32> types;
    SDL_Event lastMotion{};
    while (drag.active()) {
        auto const more = turn(drag);
        ASSERT_EQ(more.size(), 1u);
        types.push_back(more.front());
        if (more.front() == SDL_MOUSEMOTION) lastMotion = last_;
    }
    ASSERT_GT(types.size(), 4u);
    EXPECT_EQ(types[0], static_cast<Uint32>(SDL_MOUSEMOTION));
    EXPECT_EQ(types[1], static_cast<Uint32>(SDL_MOUSEBUTTONDOWN));
    EXPECT_EQ(types.back(), static_cast<Uint32>(SDL_MOUSEBUTTONUP));
    EXPECT_EQ(lastMotion.motion.x, 31);
    EXPECT_EQ(lastMotion.motion.y, -5);
}

TEST_F(ScriptTest, WaitingLastsUntilThePictureIsComplete) {
    ScriptPlayer waiting = player("wait\nquit");
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(turn(waiting, false).empty());
        EXPECT_TRUE(waiting.active());
    }
    turn(waiting, true);
    EXPECT_EQ(turn(waiting), (std::vector<Uint32>{SDL_QUIT}));
}

TEST_F(ScriptTest, SleepingLastsItsTime) {
    ScriptPlayer sleeping = player("sleep 40\nquit");
    auto const start = std::chrono::steady_clock::now();
    while (turn(sleeping).empty())
        SDL_Delay(1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
}

TEST_F(ScriptTest, TheWindowIsResizedMinimisedAndPhotographed) {
    ScriptPlayer window = player("resize 300 200\nminimise\nrestore\nscreenshot a.png");
    EXPECT_TRUE(turn(window).empty());
    EXPECT_EQ(done_, "300x200");
    EXPECT_EQ(turn(window), (std::vector<Uint32>{SDL_WINDOWEVENT}));
    EXPECT_EQ(last_.window.event, SDL_WINDOWEVENT_MINIMIZED);
    turn(window);
    EXPECT_EQ(last_.window.event, SDL_WINDOWEVENT_RESTORED);
    turn(window);
    EXPECT_EQ(done_, "300x200a.png");
}
