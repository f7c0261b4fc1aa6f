#pragma once

#include <stdexcept>
#include <string>

/// A failure whose cause lies with what the user asked for or with a file. what() is one line: what failed, on which
/// file, and what to do about it.
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
    };

    /// Line feeds in `text`, which messages of other libraries may hold, become "; ".
    HostError(Kind kind, std::string const& text);

    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

/// The text on one line: lines are joined by "; ", blank ends and empty lines dropped.
std::string onOneLine(std::string const& text);
