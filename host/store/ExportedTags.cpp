#include "host/store/ExportedTags.h"

#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::uint16_t kByte = 1; // types of values
constexpr std::uint16_t kText = 2;
constexpr std::uint16_t kFraction = 5;
constexpr std::uint16_t kUndefined = 7;

std::uint32_t numberAt(std::vector<std::uint8_t> const& bytes, size_t offset, size_t count) {
    std::uint32_t number = 0;
    for (size_t i = 0; i < count; ++i)
        number |= std::uint32_t{bytes.at(offset + i)} << (8 * i);
    return number;
}

std::optional<TiffTag> tagOf(MetadataItem const& item) {
    if (item.bytes.size() < 2) return std::nullopt;
    TiffTag tag;
    tag.type = static_cast<std::uint16_t>(numberAt(item.bytes, 0, 2));
    tag.values.assign(item.bytes.begin() + 2, item.bytes.end());
    size_t const each = tifftags::bytesOf(tag.type);
    if (each == 0 || tag.values.size() % each != 0) return std::nullopt;
    try {
        tag.path = tifftags::pathOf(item.name);
    } catch (std::invalid_argument const&) {
        return std::nullopt;
    }
    if (tifftags::isOfFile(tag.path)) return std::nullopt;
    return tag;
}

TiffTag const* find(std::vector<TiffTag> const& tags, std::uint16_t number) {
    auto const found = std::find_if(tags.begin(), tags.end(),
                                    [=](TiffTag const& tag) { return tag.path.size() == 1 && tag.number() == number; });
    return found == tags.end() ? nullptr : &*found;
}

// In pixels per unit; 0: unknown.
double densityOf(TiffTag const* tag) {
    if (tag == nullptr || tag->type != kFraction || tag->values.size() != 8) return 0;
    std::uint32_t const divisor = numberAt(tag->values, 4, 4);
    return divisor == 0 ? 0 : double{1} * numberAt(tag->values, 0, 4) / divisor;
}

// Of a pixel by the tags, in micrometres; 0: unknown.
double micronsOf(std::vector<TiffTag> const& tags, std::uint16_t density) {
    constexpr double kMicronsPerInch = 25400;
    constexpr double kMicronsPerCentimetre = 10000;
    TiffTag const* const unit = find(tags, TIFFTAG_RESOLUTIONUNIT);
    bool const perCentimetre =
        unit != nullptr && unit->values.size() == 2 && numberAt(unit->values, 0, 2) == RESUNIT_CENTIMETER;
    double const pixels = densityOf(find(tags, density));
    return pixels > 0 ? (perCentimetre ? kMicronsPerCentimetre : kMicronsPerInch) / pixels : 0;
}

bool isNear(double microns, double stated) {
    return std::abs(microns - stated) <= 1e-4 * stated;
}

// A text that a tag can hold ends in a zero byte.
std::vector<std::uint8_t> withZero(std::vector<std::uint8_t> bytes) {
    bytes.push_back(0);
    return bytes;
}

void addBlock(std::vector<TiffTag>& tags, std::vector<MetadataItem> const& metadata, char const* kind,
              std::uint16_t number, std::uint16_t type) {
    auto const* const item = picturemetadata::find(metadata, kind);
    if (item == nullptr || item->bytes.empty() || find(tags, number) != nullptr) return;
    tags.push_back({{number}, type, type == kText ? withZero(item->bytes) : item->bytes});
}

} // namespace

std::vector<TiffTag> exportedTags(std::vector<MetadataItem> const& metadata, StoreInfo const& info) {
    std::vector<TiffTag> tags;
    for (MetadataItem const& item : metadata)
        if (item.kind == picturemetadata::kTag)
            if (auto tag = tagOf(item)) tags.push_back(std::move(*tag));
    bool const isStated = info.micronsPerPixelX > 0 && info.micronsPerPixelY > 0;
    bool const says = isNear(micronsOf(tags, TIFFTAG_XRESOLUTION), info.micronsPerPixelX) &&
                      isNear(micronsOf(tags, TIFFTAG_YRESOLUTION), info.micronsPerPixelY);
    if (isStated && !says) {
        auto const isOfResolution = [](TiffTag const& tag) {
            return tag.path.size() == 1 &&
                   (tag.number() == TIFFTAG_XRESOLUTION || tag.number() == TIFFTAG_YRESOLUTION ||
                    tag.number() == TIFFTAG_RESOLUTIONUNIT);
        };
        tags.erase(std::remove_if(tags.begin(), tags.end(), isOfResolution), tags.end());
    }
    addBlock(tags, metadata, picturemetadata::kProfile, TIFFTAG_ICCPROFILE, kUndefined);
    addBlock(tags, metadata, picturemetadata::kXmp, TIFFTAG_XMLPACKET, kByte);
    addBlock(tags, metadata, picturemetadata::kIptc, TIFFTAG_RICHTIFFIPTC, kUndefined);
    // EXIF's are tags already.
    if (picturemetadata::find(metadata, picturemetadata::kExif) == nullptr)
        addBlock(tags, metadata, picturemetadata::kProperties, TIFFTAG_IMAGEDESCRIPTION, kText);
    return tags;
}
