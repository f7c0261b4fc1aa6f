#include "apps/velmora/shared/PictureText.h"

#include "apps/velmora/shared/Interruption.h"
#include "host/PlainText.h"
#include "host/image/ImageSelection.h"
#include "host/image/SlideImages.h"
#include "host/image/SrgbConversion.h"
#include "host/pyramid/Pyramid.h"
#include "host/store/KeptMetadata.h"

#include <memory>
#include <utility>

namespace {

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
