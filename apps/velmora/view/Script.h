#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// A viewer script: one action per line, # starts a comment. docs/VIEWER.md lists the actions.
class Script {
public:
    enum class Action { Key, Type, Wheel, Drag, Drop, Resize, Minimise, Restore, Wait, Sleep, Screenshot, Quit };

    static constexpr auto kControl = "Ctrl+"; ///< before the name of a key that is pressed with it

    struct Line {
        Action action;
        std::vector<int> numbers;
        std::string text; ///< a key's name as SDL has it, after Ctrl+ or not; what is typed; a file's name
    };

    /// Throws HostError (usage), which names `name` and the line.
    static std::vector<Line> parse(std::string const& text, std::string const& name);
    /// Reads a file. Throws HostError: usage, missing file.
    static std::vector<Line> read(std::string const& path);
};
