#include "apps/velmora/shared/ImageInput.h"

#include "apps/velmora/shared/Interruption.h"
#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "host/store/TileStore.h"

#include <cstdio>

namespace {

void requirePlain(std::string const& what, ImageSelection const& selection, DisplayRequest const& display) {
    if (!selection.isEmpty())
        throw HostError(HostError::Kind::Usage,
                        what + " is taken as it is; --page, --bands, --range and --to-srgb choose a part of an image "
                               "file: leave them out");
    if (!display.asksForRangeAlone())
        throw HostError(HostError::Kind::Usage,
                        what + " is shown as it is; --channel, --z, --t, --curve, --colour-map and --invert are for "
                               "image files: leave them out");
}

// Of a store whose samples are shown as they are asked for.
void requireShown(std::string const& what, ImageSelection const& selection, DisplayRequest const& display) {
    ImageSelection part = selection;
    part.range.reset();
    part.automaticRange = false;
    if (!part.isEmpty())
        throw HostError(HostError::Kind::Usage, what + " is taken whole; --page, --bands and --to-srgb choose a part "
                                                       "of an image file: leave them out");
    if (display.position != StackPosition())
        throw HostError(HostError::Kind::Usage, what + " has one slice, and one time: leave out --z and --t");
}

} // namespace

std::vector<std::string> imageinput::notesOf(std::string const& image, ImageSelection const& selection, Colours colours,
                                             DisplayRequest const& display) {
    if (image.empty()) {
        requirePlain("the built-in picture", selection, display);
        return {};
    }
    requireRegularFile(image, HostError::Kind::UnreadableImage);
    if (TileStore::isStore(image)) {
        auto const require = colours == Colours::Ranged ? requireShown : requirePlain;
        require("'" + image + "', a tile store,", selection, display);
        return {};
    }
    ImageReader::Options options;
    options.samples = ImageReader::Samples::kAsStored;
    options.selection = selection;
    options.lossless = colours == Colours::Kept;
    options.anySamples = colours == Colours::Ranged;
    options.check = interruption::throwIfNoted;
    return ImageReader(image, options).notes();
}

void imageinput::print(std::vector<std::string> const& notes) {
    for (std::string const& note : notes)
        std::fprintf(stderr, "velmora: note: %s\n", onOneLine(note).c_str());
}

void imageinput::inspect(std::string const& image, ImageSelection const& selection, Colours colours,
                         DisplayRequest const& display) {
    print(notesOf(image, selection, colours, display));
}

void imageinput::requireStoreFile(std::string const& path) {
    requireRegularFile(path, HostError::Kind::NoStore);
}
