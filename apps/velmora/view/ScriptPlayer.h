#pragma once

#include "apps/velmora/view/Script.h"

#include <SDL.h>

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

/// Plays a script to the viewer: what a hand or a window manager would do goes into SDL's queue as events, at most one
/// movement per turn of the viewer, so that each is seen.
class ScriptPlayer {
public:
    explicit ScriptPlayer(std::vector<Script::Line> const& lines);

    struct Host {
        bool complete = false; ///< whether all is shown that was asked for
        std::function<void(int width, int height)> resize;
        std::function<void(std::string const& file)> screenshot;
    };

    /// Does what comes next, unless it has to wait.
    void turn(Host const& host);
    /// Whether there is more to come.
    bool active() const { return !steps_.empty(); }

private:
    // What happens in one turn.
    struct ScriptStep {
        Script::Line line;
        std::vector<SDL_Event> events; // nothing else of the line where there are some
    };

    void add(Script::Line const& line);
    void addEvents(std::vector<SDL_Event> events);
    void addKey(std::string const& name);
    void addDrag(std::vector<int> const& numbers);
    bool isReady(ScriptStep const& step, bool complete);
    static void perform(Script::Line const& line, Host const& host);

    std::deque<ScriptStep> steps_;
    std::optional<std::chrono::steady_clock::time_point> asleepSince_;
};
