#include "apps/velmora/shared/RecentFiles.h"

#include "host/HostError.h"
#include "host/output/TemporaryOutput.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::streamsize kMostBytes = 64 * 1024; // of the file: a longer one is not ours

} // namespace

RecentFiles::RecentFiles(std::string const& stateHome, std::string const& home) {
    if (fs::path(stateHome).is_absolute())
        file_ = fs::path(stateHome) / "velmora" / "recent";
    else if (fs::path(home).is_absolute())
        file_ = fs::path(home) / ".local" / "state" / "velmora" / "recent";
}

std::vector<std::string> RecentFiles::lines() const {
    std::error_code failed;
    if (file_.empty() || !fs::is_regular_file(file_, failed) || fs::file_size(file_, failed) > kMostBytes) return {};
    std::vector<std::string> found;
    std::ifstream file(file_);
    for (std::string line; std::getline(file, line);)
        if (fs::path(line).is_absolute()) found.push_back(line);
    return found;
}

bool RecentFiles::areNew() const {
    std::error_code failed;
    return !file_.empty() && fs::symlink_status(file_, failed).type() == fs::file_type::not_found;
}

std::vector<std::string> RecentFiles::list() const {
    std::vector<std::string> found = lines();
    std::error_code failed;
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&](std::string const& line) { return !fs::is_regular_file(line, failed); }),
                found.end());
    return found;
}

bool RecentFiles::add(std::string const& picture) const {
    std::error_code failed;
    std::string const path = fs::absolute(picture, failed).lexically_normal().string();
    if (file_.empty() || failed || path.find('\n') != std::string::npos) return false;
    std::vector<std::string> all = lines();
    all.erase(std::remove(all.begin(), all.end(), path), all.end());
    all.insert(all.begin(), path);
    all.resize(std::min(all.size(), kMost));
    // Private: names of pictures may be those of persons.
    if (fs::create_directories(file_.parent_path(), failed))
        fs::permissions(file_.parent_path(), fs::perms::owner_all, failed);
    std::string text;
    for (std::string const& line : all)
        text += line + "\n";
    try {
        OutputFile output(file_.string());
        output.replace = true;
        TemporaryOutput temporary(output);
        temporary.write(text.data(), text.size());
        temporary.finish();
        return true;
    } catch (HostError const&) {
        return false;
    }
}
