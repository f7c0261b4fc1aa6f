#include "apps/velmora/shared/PictureText.h"

#include "apps/velmora/shared/Interruption.h"
#include "host/PlainText.h"
#include "host/image/ImageSelection.h"
#include "host/image/PixelBands.h"
#include "host/image/SlideImages.h"
#include "host/image/SrgbConversion.h"
#include "host/pyramid/Pyramid.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <utility>

namespace {

constexpr auto kOrientationTag = "274";

std::string sizeText(Size const& size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

std::string samplesText(ImageFacts const& facts) {
    SampleFormat const& layout = facts.layout;
    std::string text = counted(layout.bands, "band") + " of " + toText(layout.type);
    if (!facts.colourSpace.empty()) return text + ", " + facts.colourSpace;
    if (layout.colours == 0) return text;
    return text + ", " + (layout.colours == 1 ? "grey" : "RGB") + (layout.alpha ? " and alpha" : "") +
           (layout.bands > layout.colours + (layout.alpha ? 1 : 0) ? " and others" : "");
}

std::string levelsText(std::vector<PyramidLevel> const& levels) {
    std::string text;
    for (PyramidLevel const& level : levels)
        text += (text.empty() ? "" : ", ") + sizeText(level.size);
    return text;
}

std::string stackText(PyramidFacts const& facts) {
    std::string const slices = facts.stack.sliceNoun == "page" ? "page" : "slice";
    return counted(facts.image.layout.bands, "channel") + ", " + counted(facts.stack.slices, slices) + ", " +
           counted(facts.stack.times, "time");
}

std::string bandsText(std::vector<BandFacts> const& bands) {
    std::string text;
    for (BandFacts const& band : bands)
        text += (text.empty() ? "" : ", ") + (band.name.empty() ? std::string("-") : band.name);
    return text;
}

std::string micronsText(double across, double down) {
    return imageselection::toText(across) + " x " + imageselection::toText(down) + " microns";
}

// None of texts that are no such object: another program may have written them.
std::vector<ImageProperty> propertiesOf(std::vector<std::uint8_t> const& json) {
    std::vector<ImageProperty> properties;
    auto const texts = nlohmann::ordered_json::parse(json.begin(), json.end(), nullptr, false);
    if (!texts.is_object()) return properties;
    for (auto const& [name, value] : texts.items())
        if (value.is_string()) properties.push_back({name, value.get<std::string>()});
    return properties;
}

// The tag's type, and its value.
int orientationOf(std::vector<std::uint8_t> const& bytes) {
    int const orientation = bytes.size() < 3 ? 1 : bytes[2];
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

} // namespace

PyramidFacts picturetext::factsOf(std::string const& path) {
    PyramidOptions options;
    options.check = interruption::throwIfNoted;
    if (auto const pyramid = openPyramid(path, options).pyramid) return pyramid->facts();
    SampleRequest request;
    request.asNumbers = true;
    PyramidFacts facts;
    facts.image = openSamples(std::make_shared<InputFile>(path, options.check), request)->facts();
    facts.levels = {{facts.image.layout.size(), facts.image.layout.size()}};
    return facts;
}

std::vector<std::string> picturetext::otherImagesOf(std::string const& path) {
    InputFile file(path, interruption::throwIfNoted);
    return slideimages::names(file);
}

std::vector<ImageProperty> picturetext::linesOf(PyramidFacts const& facts) {
    ImageFacts const& image = facts.image;
    std::vector<ImageProperty> lines;
    auto const add = [&](char const* name, std::string value) { lines.push_back({name, std::move(value)}); };
    add("size", sizeText(image.layout.size()));
    add("format", image.format);
    add("samples", samplesText(image));
    if (image.pages > 1) add(image.pageNoun.c_str(), std::to_string(image.pages));
    if (facts.stack.pages() > 1) add("stack", stackText(facts));
    if (!image.bands.empty()) add("channels", bandsText(image.bands));
    if (facts.levels.size() > 1) add("levels", levelsText(facts.levels));
    if (image.pixelsPerMillimetreX > 0 && image.pixelsPerMillimetreY > 0)
        add("pixel size", micronsText(1000 / image.pixelsPerMillimetreX, 1000 / image.pixelsPerMillimetreY));
    if (image.nodata) add("no data", imageselection::toText(*image.nodata, image.layout.type));
    auto const look = linesOfLook(image);
    lines.insert(lines.end(), look.begin(), look.end());
    return lines;
}

std::vector<ImageProperty> picturetext::linesOfLook(ImageFacts const& image) {
    std::vector<ImageProperty> lines;
    if (image.orientation != 1) lines.push_back({"orientation", std::to_string(image.orientation)});
    auto const profile = SrgbConversion::of(image);
    if (!image.iccProfile.empty())
        lines.push_back({"colour profile", profile.profile.empty() ? "without a name" : profile.profile});
    if (!profile.reason.empty()) lines.push_back({"left out", profile.reason});
    if (!image.followedProfile.empty())
        lines.push_back({"colour profile", image.followedProfile + ", converted to sRGB"});
    lines.insert(lines.end(), image.properties.begin(), image.properties.end());
    return lines;
}

std::vector<ImageProperty> picturetext::linesOf(TileStore& store) {
    StoreInfo const& info = store.info();
    std::vector<ImageProperty> lines{{"size", sizeText({info.width, info.height})},
                                     {"format", "tile store of " + counted(info.levels, "level")},
                                     {"samples", info.interpretation + ", " + std::to_string(info.bits) + " bits"}};
    if (info.micronsPerPixelX > 0 && info.micronsPerPixelY > 0)
        lines.push_back({"pixel size", micronsText(info.micronsPerPixelX, info.micronsPerPixelY)});
    auto const look = linesOfLook(keptIn(store).facts);
    lines.insert(lines.end(), look.begin(), look.end());
    return lines;
}

picturetext::Kept picturetext::keptIn(TileStore& store) {
    StoreInfo const& info = store.info();
    Kept kept;
    SampleFormat& layout = kept.facts.layout;
    layout.width = info.width;
    layout.height = info.height;
    layout.bands = info.bands;
    layout.type = info.bits == 8 ? SampleType::Unsigned8 : SampleType::Unsigned16;
    layout.colours = pixelbands::isGrey(info.bands) ? 1 : 3;
    layout.alpha = pixelbands::hasAlpha(info.bands);
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
            others.push_back(item.kind);
        }
    }
    if (tags > 0) others.push_back(counted(tags, "tag"));
    for (std::string const& other : others)
        kept.summary += (kept.summary.empty() ? "" : ", ") + other;
    return kept;
}
