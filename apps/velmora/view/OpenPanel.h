#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// A panel over the window in which a picture is chosen: files that were opened last, a path to type, and a folder's
/// files. With Dear ImGui, between Overlay::begin and end.
class OpenPanel {
public:
    /// Shows the panel with the folder's files.
    void open(std::filesystem::path const& folder, std::vector<std::string> recent);
    void close() { isOpen_ = false; }
    bool isOpen() const { return isOpen_; }

    /// Draws the panel, where it is open. The file that was chosen; the panel is closed then.
    std::optional<std::string> draw();

private:
    struct Entry {
        std::string name;
        std::string shown; // as a person may see it
        bool isFolder = false;
    };

    void enter(std::filesystem::path const& folder);
    std::optional<std::string> take(std::filesystem::path const& path);
    std::optional<std::string> drawRecent();
    std::optional<std::string> drawPath();
    std::optional<std::string> drawEntries();

    bool isOpen_ = false;
    bool isNew_ = false; // not drawn yet
    std::vector<std::string> recent_;
    std::filesystem::path folder_;
    std::vector<Entry> entries_;
    std::array<char, 4096> path_{}; // that is typed
    std::string failure_;           // of the folder
};
