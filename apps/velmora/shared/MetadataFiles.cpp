#include "apps/velmora/shared/MetadataFiles.h"

#include "host/Failures.h"
#include "host/output/TemporaryOutput.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace {

void makeFolder(std::string const& folder) {
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed || !std::filesystem::is_directory(folder, failed))
        throw OutputFile(folder).failure(failed ? failures::reasonOf(failed.value()) : "it is no folder");
}

// Letters, digits and '-' of a name that the file chose.
std::string harmless(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return c > 127 || std::isalnum(c) == 0; }, '-');
    constexpr size_t kMostCharacters = 60;
    return name.substr(0, kMostCharacters);
}

std::string stemOf(MetadataItem const& item) {
    if (item.kind == picturemetadata::kXmp) return "metadata";
    if (item.kind == picturemetadata::kFits) return "header";
    return harmless(item.name.empty() ? item.kind : item.name);
}

std::string endingOf(MetadataItem const& item) {
    if (item.kind == picturemetadata::kProfile) return ".icc";
    if (item.kind == picturemetadata::kProperties) return ".json";
    if (item.kind == picturemetadata::kImage) return ".png";
    if (item.kind == picturemetadata::kFits) return ".txt";
    return item.kind == picturemetadata::kXmp ? ".xmp" : ".bin";
}

} // namespace

MetadataFiles::MetadataFiles(std::vector<MetadataItem> const& metadata, std::string const& folder, bool replace,
                             std::string const& source) {
    makeFolder(folder);
    for (MetadataItem const& item : metadata) {
        if (item.kind == picturemetadata::kTag) continue;
        std::string const name = nameOf(item);
        OutputFile output((std::filesystem::path(folder) / name).string());
        output.replace = replace;
        output.sources = {source};
        requireUsable(output);
        files_.push_back({name, output, item.bytes});
    }
}

// Names that differ in other characters alone, or in case, are told apart by a number.
std::string MetadataFiles::nameOf(MetadataItem const& item) const {
    auto const lower = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
        return text;
    };
    std::string name = stemOf(item) + endingOf(item);
    auto const isTaken = [&] {
        return std::any_of(files_.begin(), files_.end(),
                           [&](File const& file) { return lower(file.name) == lower(name); });
    };
    for (size_t number = 2; isTaken(); ++number)
        name = stemOf(item) + "-" + std::to_string(number) + endingOf(item);
    return name;
}

std::vector<std::string> MetadataFiles::names() const {
    std::vector<std::string> names;
    for (File const& file : files_)
        names.push_back(file.name);
    return names;
}

void MetadataFiles::write() const {
    for (File const& file : files_) {
        TemporaryOutput output(file.output);
        output.write(file.bytes.data(), file.bytes.size());
        output.finish();
    }
}
