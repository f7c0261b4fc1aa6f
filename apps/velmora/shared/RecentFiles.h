#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Pictures that were opened last, newest first: one absolute path per line of a file in a folder that only
/// its owner can open.
class RecentFiles {
public:
    static constexpr size_t kMost = 12;

    /// The file "velmora/recent" in `stateHome`, or, if that is no absolute path, in the folder .local/state of `home`.
    /// The arguments are the values of XDG_STATE_HOME and HOME. Without either there are none, and none are kept.
    RecentFiles(std::string const& stateHome, std::string const& home);

    /// Whether there is no list yet: nothing was ever opened.
    bool areNew() const;
    /// Those that are there. A file that cannot be read has none.
    std::vector<std::string> list() const;
    /// Puts a picture first. Whether it is kept: nothing depends on it, so that no failure is told.
    bool add(std::string const& picture) const;

private:
    std::vector<std::string> lines() const;

    std::filesystem::path file_; // empty: none
};
