#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

/// Fonts of the system, found with fontconfig, which is asked nothing before a font is. One thread, one at a time.
class SystemFonts {
public:
    SystemFonts() = default;
    ~SystemFonts();
    SystemFonts(SystemFonts const&) = delete;
    SystemFonts& operator=(SystemFonts const&) = delete;

    /// A file of outlines; its place among those that the file holds.
    struct Face {
        std::string file;
        int index = 0;

        bool operator<(Face const& other) const {
            return file < other.file || (file == other.file && index < other.index);
        }
    };

    /// One that has the character; nothing if there is none.
    std::optional<Face> with(char32_t character);
    /// What the face's file holds; valid as long as this lives. Empty: it is no file of outlines that can be read.
    std::vector<unsigned char> const& bytes(Face const& face);

private:
    std::map<char32_t, std::optional<Face>> found_;
    std::map<std::string, std::vector<unsigned char>> files_;
};
