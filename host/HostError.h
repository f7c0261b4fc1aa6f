#pragma once

#include <stdexcept>
#include <string>

/// A failure that a user's request or a file causes. what() is one line: what failed, on which file, and what to do
/// about it.
class HostError : public std::runtime_error {
public:
    enum class Kind {
        MissingFile,
        UnreadableImage,
        RegionOutside,
        UnwritableOutput,
        NoGlContext,
        InexactGl,
        Usage,
        NoStore,
        DamagedStore,
        NewerStore,
        LockedStore,
        NoDisplay,
        OutOfMemory,
    };

    /// `text` may hold names and texts from files and messages of other libraries: what() is onOneLine() of it.
    HostError(Kind kind, std::string const& text);

    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

/// The text on one line, for a terminal: lines are joined by "; ", blank ends and empty lines dropped, and the rest is
/// terminalText().
std::string onOneLine(std::string const& text);
