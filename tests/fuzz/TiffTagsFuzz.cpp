// An input is a TIFF file, or the EXIF block of a photograph. Its tags are read, kept as a store keeps them, and
// written into a TIFF, which has them as they were.
#include "host/HostError.h"
#include "host/output/TiffWriter.h"
#include "host/store/ExportedTags.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>

namespace {

using Bytes = std::vector<std::uint8_t>;
using fuzz::require;

// Tags of a hostile file may share their values.
constexpr size_t kMostWritten = 1 << 20;

std::vector<TiffTag> tagsOf(Bytes const& file) {
    TiffStructure const structure(TiffBytes::of(file));
    return structure.tags(structure.firstDirectory()).tags;
}

std::vector<MetadataItem> kept(std::vector<TiffTag> const& tags) {
    std::vector<MetadataItem> items;
    for (TiffTag const& tag : tags) {
        require(tag.count() * tifftags::bytesOf(tag.type) == tag.values.size(), "values are whole");
        require(tifftags::pathOf(tifftags::nameOf(tag.path)) == tag.path, "a name is read back");
        Bytes bytes{static_cast<std::uint8_t>(tag.type), static_cast<std::uint8_t>(tag.type >> 8)};
        bytes.insert(bytes.end(), tag.values.begin(), tag.values.end());
        items.push_back({picturemetadata::kTag, tifftags::nameOf(tag.path), bytes});
    }
    return items;
}

Bytes written(std::vector<TiffTag> const& tags) {
    static TemporaryFolder const kFolder;
    TiffWriter::Format format;
    format.width = format.height = format.bands = 1;
    format.tags = tags;
    OutputFile file(kFolder.path("picture.tif"));
    file.replace = true;
    TiffWriter writer(file, format);
    std::uint8_t const sample = 9;
    writer.writeRows(&sample, 1);
    writer.finish();
    std::string const bytes = readFile(file.path);
    return {bytes.begin(), bytes.end()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    std::vector<TiffTag> const tags = exportedTags(kept(tagsOf({bytes, bytes + size})), {});
    size_t all = 0;
    for (TiffTag const& tag : tags)
        all += tag.values.size();
    if (all > kMostWritten) return 0;
    std::vector<TiffTag> const back = tagsOf(written(tags));
    for (TiffTag const& tag : tags) {
        require(!tifftags::isOfFile(tag.path), "the file says itself how it is laid out");
        auto const isSame = [&](TiffTag const& other) {
            return other.path == tag.path && other.type == tag.type && other.values == tag.values;
        };
        require(std::any_of(back.begin(), back.end(), isSame), "a tag comes back as it was");
    }
    return 0;
}
