#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A folder that exists for one test.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string path(std::string const& name) const { return (path_ / name).string(); }
    std::string path() const { return path_.string(); }
    /// Names of all entries, sorted, hidden files too.
    std::vector<std::string> names() const;

private:
    std::filesystem::path path_;
};

std::string readFile(std::string const& path);
void writeFile(std::string const& path, std::string const& content);
/// Keeps the first `share` per cent of a file.
void truncateFile(std::string const& path, unsigned share);
