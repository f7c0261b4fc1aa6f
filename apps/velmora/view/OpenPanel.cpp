#include "apps/velmora/view/OpenPanel.h"

#include "apps/velmora/view/Lettering.h"
#include "host/PlainText.h"

#include <imgui.h>

#include <algorithm>
#include <cctype>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr size_t kMostEntries = 20000; // of a folder
constexpr size_t kShownCharacters = 160;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

void OpenPanel::open(fs::path const& folder, std::vector<std::string> recent) {
    recent_ = std::move(recent);
    isOpen_ = true;
    isNew_ = true;
    enter(folder);
}

// Folders first, by name; what is hidden is left out.
void OpenPanel::enter(fs::path const& folder) {
    std::error_code failed;
    fs::path const entered = fs::absolute(folder, failed).lexically_normal();
    std::vector<Entry> found;
    fs::directory_iterator entry(entered, failed);
    for (fs::directory_iterator const end; !failed && entry != end && found.size() < kMostEntries;
         entry.increment(failed)) {
        std::error_code unknown;
        std::string const name = entry->path().filename().string();
        bool const isFolder = entry->is_directory(unknown);
        if (name.front() == '.' || (!isFolder && !entry->is_regular_file(unknown))) continue;
        found.push_back({name, printableText(isFolder ? name + "/" : name, kShownCharacters), isFolder});
    }
    failure_ = failed ? "the folder cannot be read: " + failed.message() : "";
    std::sort(found.begin(), found.end(), [](Entry const& a, Entry const& b) {
        if (a.isFolder != b.isFolder) return a.isFolder;
        return std::pair(lowered(a.name), a.name) < std::pair(lowered(b.name), b.name);
    });
    folder_ = entered;
    entries_ = std::move(found);
    std::string const text = folder_.string();
    path_ = {};
    text.copy(path_.data(), path_.size() - 1);
}

// A folder is entered, a file taken.
std::optional<std::string> OpenPanel::take(fs::path const& path) {
    std::error_code unknown;
    if (fs::is_directory(path, unknown)) {
        enter(path);
        return std::nullopt;
    }
    close();
    return path.string();
}

std::optional<std::string> OpenPanel::draw() {
    if (!isOpen_) return std::nullopt;
    ImVec2 const window = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({window.x / 2, window.y / 2}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::SetNextWindowSize({window.x * 0.7F, window.y * 0.8F}, ImGuiCond_Always);
    ImGui::SetNextWindowBgAlpha(0.95F);
    bool isShown = true;
    ImGui::Begin("Open a picture", &isShown,
                 ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                     ImGuiWindowFlags_NoSavedSettings);
    auto chosen = drawRecent();
    if (auto const typed = drawPath()) chosen = typed;
    if (auto const clicked = drawEntries()) chosen = clicked;
    ImGui::End();
    if (!isShown) close();
    return chosen;
}

std::optional<std::string> OpenPanel::drawRecent() {
    std::optional<std::string> chosen;
    if (recent_.empty()) return chosen;
    ImGui::TextUnformatted("opened last");
    ImGui::PushID("recent");
    for (size_t i = 0; i < recent_.size(); ++i) {
        ImGui::PushID(static_cast<int>(i));
        std::string const shown = printableText(recent_[i], kShownCharacters);
        needLetters(shown);
        if (ImGui::Selectable(shown.c_str())) chosen = take(recent_[i]);
        ImGui::PopID();
    }
    ImGui::PopID();
    ImGui::Separator();
    return chosen;
}

std::optional<std::string> OpenPanel::drawPath() {
    ImGui::PushItemWidth(-1);
    if (isNew_) ImGui::SetKeyboardFocusHere();
    isNew_ = false;
    needLetters(path_.data());
    bool const entered = ImGui::InputText("##path", path_.data(), path_.size(),
                                          ImGuiInputTextFlags_EnterReturnsTrue | ImGuiInputTextFlags_AutoSelectAll);
    ImGui::PopItemWidth();
    return entered && path_.front() != 0 ? take(path_.data()) : std::nullopt;
}

std::optional<std::string> OpenPanel::drawEntries() {
    std::optional<fs::path> clicked;
    ImGui::BeginChild("entries");
    if (!failure_.empty()) ImGui::TextUnformatted(failure_.c_str());
    if (folder_.has_relative_path() && ImGui::Selectable("../")) clicked = folder_.parent_path();
    for (size_t i = 0; i < entries_.size(); ++i) {
        ImGui::PushID(static_cast<int>(i));
        needLetters(entries_[i].shown);
        if (ImGui::Selectable(entries_[i].shown.c_str())) clicked = folder_ / entries_[i].name;
        ImGui::PopID();
    }
    ImGui::EndChild();
    return clicked ? take(*clicked) : std::nullopt;
}
