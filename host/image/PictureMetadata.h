#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Something that a file holds beside the samples of its picture, byte for byte.
struct MetadataItem {
    std::string kind; ///< one of pictureMetadata's
    std::string name; ///< among those of its kind
    std::vector<std::uint8_t> bytes;
};

/// What a file holds beside the samples of a picture, to be kept with them.
struct PictureMetadata {
    std::vector<MetadataItem> items;
    std::vector<std::string> leftOut; ///< what is not kept, a sentence each that says of which file
};

/// Kinds of items, and what their bytes are.
namespace picturemetadata {

constexpr auto kProfile = "profile";       ///< an ICC profile of the samples
constexpr auto kProperties = "properties"; ///< a JSON object of texts
constexpr auto kImage = "image";           ///< a PNG; the name says of what: "label"
/// A tag of a TIFF directory; the name is its number, after those of the tags that lead to its directory:
/// "34665/33434". The type of its values, 2 bytes, and the values; numbers little-endian.
constexpr auto kTag = "tag";
constexpr auto kExif = "exif"; ///< the block as it lies in the file
constexpr auto kXmp = "xmp";   ///< XML
constexpr auto kIptc = "iptc";
constexpr auto kFits = "fits"; ///< the header: cards of 80 letters
constexpr auto kBox =
    "box"; ///< the content of a box of JPEG 2000 or JPEG XL; the name is its kind: "xml ", "uuid/b14b..."

/// The first item of a kind and a name; null: there is none.
inline MetadataItem const* find(std::vector<MetadataItem> const& items, std::string const& kind,
                                std::string const& name = {}) {
    for (MetadataItem const& item : items)
        if (item.kind == kind && item.name == name) return &item;
    return nullptr;
}

} // namespace picturemetadata
