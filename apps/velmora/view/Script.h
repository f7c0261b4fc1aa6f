#pragma once

#include <SDL.h>

#include <cstddef>
#include <string>
#include <vector>

/// A viewer script: one action per line, # starts a comment. docs/VIEWER.md lists the actions.
class Script {
public:
    enum class Action { Key, Type, Wheel, Drag, Drop, Resize, Minimise, Restore, Wait, Sleep, Screenshot, Quit };

    /// A key, and whether Ctrl is held with it.
    struct Key {
        SDL_Keycode code = SDLK_UNKNOWN;
        bool isControlHeld = false;
    };

    struct Line {
        Action action;
        std::vector<int> numbers;
        std::string text; ///< a key's name as SDL has it, after Ctrl+ or not; what is typed; a file's name
    };

    /// Throws HostError (usage), which names `name` and the line.
    static std::vector<Line> parse(std::string const& text, std::string const& name);
    /// A key by SDL's name, after "Ctrl+" or not; SDLK_UNKNOWN: it is none.
    static Key keyOf(std::string const& name);
    /// Reads a file. Throws HostError: usage, missing file.
    static std::vector<Line> read(std::string const& path);
};
