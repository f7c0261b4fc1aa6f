#include "apps/velmora/Commands.h"
#include "apps/velmora/shared/ImportCache.h"
#include "apps/velmora/shared/PictureFiles.h"
#include "host/PlainText.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string>

namespace {

constexpr auto kFooter =
    R"(Stores are made by view, and by render --zoom, of images that cannot be shown without reading all of
them first. They lie in $XDG_CACHE_HOME/velmora or ~/.cache/velmora; no other program needs them.)";

// "2026-11-23 14:05", local time.
std::string toText(std::chrono::system_clock::time_point time) {
    std::time_t const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    std::array<char, 32> text{};
    localtime_r(&seconds, &local);
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local);
    return text.data();
}

std::string storesOf(std::vector<importcache::Store> const& stores) {
    return counted(stores.size(), "store") + ", " + bytesText(importcache::bytesOf(stores));
}

void show(std::filesystem::path const& folder) {
    auto const stores = importcache::stores(folder);
    std::printf("%s: %s\n", terminalText(folder.string()).c_str(), storesOf(stores).c_str());
    for (auto store = stores.rbegin(); store != stores.rend(); ++store)
        std::printf("%9s  used %s  %s\n", bytesText(store->bytes).c_str(), toText(store->used).c_str(),
                    terminalText(store->path.filename().string()).c_str());
}

void clear(std::filesystem::path const& folder) {
    auto const gone = importcache::trim(folder, 0);
    auto const left = importcache::stores(folder);
    std::printf("%s: removed %s%s\n", terminalText(folder.string()).c_str(), storesOf(gone).c_str(),
                left.empty() ? "" : ("; left " + storesOf(left) + ", which are in use or cannot be removed").c_str());
}

} // namespace

void addCacheCommand(CLI::App& program) {
    auto const all = std::make_shared<bool>(false);
    auto* const command = program.add_subcommand("cache", "Show or clear the stores that were made of images");
    command->footer(kFooter);
    command->add_flag("--clear", *all, "Remove all stores that no program shows");
    command->callback([all] { *all ? clear(picturefiles::cacheFolder()) : show(picturefiles::cacheFolder()); });
}
