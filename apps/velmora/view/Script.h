#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What a person would do to the viewer, as a text: a line a deed, # starts a comment. docs/VIEWER.md lists the deeds.
class Script {
public:
    enum class Deed { Key, Wheel, Drag, Resize, Minimise, Restore, Wait, Sleep, Screenshot, Quit };

    struct Line {
        Deed deed;
        std::vector<int> numbers;
        std::string text; ///< a key's name as SDL has it, or a file's name
    };

    /// Throws HostError (usage), which names `name` and the line.
    static std::vector<Line> parse(std::string const& text, std::string const& name);
    /// Reads a file. Throws HostError: usage, missing file.
    static std::vector<Line> read(std::string const& path);
};
