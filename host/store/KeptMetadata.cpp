#include "host/store/KeptMetadata.h"

#include "host/PlainText.h"
#include "host/image/JsonValue.h"
#include "host/image/PixelBands.h"

namespace {

constexpr auto kOrientationTag = "274";

// None of texts that are no such object: another program may have written them.
std::vector<ImageProperty> propertiesOf(std::vector<std::uint8_t> const& json) {
    std::vector<ImageProperty> properties;
    try {
        JsonValue const texts = JsonValue::parse(json);
        for (JsonValue::Member const& member : texts.members())
            if (member.value.isText()) properties.push_back({member.name, member.value.text()});
    } catch (JsonValue::Malformed const&) {
        properties.clear();
    }
    return properties;
}

// The tag's type, and its value.
int orientationOf(std::vector<std::uint8_t> const& bytes) {
    int const orientation = bytes.size() < 3 ? 1 : bytes[2];
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

std::string nameOf(MetadataItem const& item) {
    if (item.kind == picturemetadata::kExif) return "EXIF";
    if (item.kind == picturemetadata::kXmp) return "XMP";
    if (item.kind == picturemetadata::kIptc) return "IPTC";
    if (item.kind == picturemetadata::kFits) return "FITS header";
    return item.kind == picturemetadata::kBox ? "box " + item.name : item.kind;
}

} // namespace

KeptMetadata keptIn(TileStore& store) {
    StoreInfo const& info = store.info();
    KeptMetadata kept;
    SampleFormat& layout = kept.facts.layout;
    layout.width = info.width;
    layout.height = info.height;
    layout.bands = info.bands;
    layout.type = info.bits == 8 ? SampleType::Unsigned8 : SampleType::Unsigned16;
    layout.colours = pixelbands::isGrey(info.bands) ? 1 : 3;
    layout.alpha = pixelbands::hasAlpha(info.bands);
    kept.facts.format = "tile store";
    if (info.micronsPerPixelX > 0) kept.facts.pixelsPerMillimetreX = 1000 / info.micronsPerPixelX;
    if (info.micronsPerPixelY > 0) kept.facts.pixelsPerMillimetreY = 1000 / info.micronsPerPixelY;
    size_t tags = 0;
    std::vector<std::string> others;
    for (size_t i = 0; i < store.metadata().size(); ++i) {
        MetadataItem const& item = store.metadata()[i];
        if (item.kind == picturemetadata::kProfile) {
            kept.facts.iccProfile = store.metadataBytes(i);
            others.emplace_back("ICC profile");
        } else if (item.kind == picturemetadata::kProperties) {
            kept.facts.properties = propertiesOf(store.metadataBytes(i));
        } else if (item.kind == picturemetadata::kImage) {
            kept.otherImages.push_back(item.name);
            others.push_back(item.name);
        } else if (item.kind == picturemetadata::kTag) {
            ++tags;
            if (item.name == kOrientationTag) kept.facts.orientation = orientationOf(store.metadataBytes(i));
        } else {
            others.push_back(nameOf(item));
        }
    }
    if (tags > 0) others.push_back(counted(tags, "tag"));
    for (std::string const& other : others)
        kept.summary += (kept.summary.empty() ? "" : ", ") + other;
    return kept;
}
