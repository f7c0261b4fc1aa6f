#include "host/image/ImageRefusal.h"

#include "host/HostError.h"
#include "host/MemoryBudget.h"
#include "host/PlainText.h"
#include "host/image/PixelBands.h"

#include <algorithm>
#include <vector>

namespace {

// Rows that are buffered at once, in the file's samples and in ours.
constexpr std::uint64_t kRowsOnTheWay = 128;

HostError unfit(std::string const& text) {
    return HostError(HostError::Kind::Usage, text);
}

std::string joined(std::vector<std::string> const& parts, std::string const& last) {
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? last : ", ") + parts[i];
    return text;
}

// The contents of a file that cannot be taken whole, and the options to choose from.
struct Refusal {
    std::vector<std::string> holds;
    std::vector<std::string> options;
    bool pages = false;
    bool colours = false;
    bool samples = false;

    void add(std::string const& held, std::string const& option) {
        holds.push_back(held);
        options.push_back(option);
    }

    std::string taken() const {
        if (pages) return "one of them is taken";
        if (colours && samples) return "grey or RGB of unsigned 8 or 16 bits is taken";
        if (samples) return "unsigned samples of 8 or 16 bits are kept";
        return "grey or RGB is taken, with alpha or without";
    }
};

std::string bandsText(SampleFormat const& layout) {
    std::string count = counted(layout.bands, "band");
    if (layout.colours == 0 || layout.bands <= layout.colours) return count;
    std::string const colours = layout.colours == 1 ? "grey" : "RGB";
    size_t const others = layout.bands - layout.colours - (layout.alpha ? 1 : 0);
    return count + ", " + colours + (layout.alpha ? " with alpha" : "") + " and " + counted(others, "other");
}

std::string bandsOption(SampleFormat const& layout) {
    if (layout.bands == 1) return "--bands 1";
    return layout.bands < 3 ? "--bands I or I,A (1 to " + std::to_string(layout.bands) + ", A is alpha)"
                            : "--bands I or I,J,K (1 to " + std::to_string(layout.bands) + ")";
}

void addPages(ImageFacts const& facts, ImageSelection const& selection, Refusal& refusal) {
    if (facts.pages <= 1 || selection.page) return;
    refusal.pages = true;
    refusal.add(std::to_string(facts.pages) + " " + facts.pageNoun,
                "--page N (1 to " + std::to_string(facts.pages) + ")");
}

// Whether the picture would be taken, but for the conversion of its colours.
bool isToBeConverted(ImageFacts const& facts, ImageSelection const& selection) {
    return facts.convertible && !facts.colourSpace.empty() && selection.bands.empty() && !selection.hasRange();
}

void addColours(ImageFacts const& facts, ImageSelection const& selection, Refusal& refusal) {
    // Red, green and blue of linear light may be taken as plain numbers.
    bool const isKnown = facts.colourSpace.empty() || selection.hasRange();
    if (!selection.bands.empty() || (isKnown && facts.layout.isPlain())) return;
    refusal.colours = true;
    refusal.add(facts.colourSpace.empty() ? bandsText(facts.layout) : facts.colourSpace,
                isToBeConverted(facts, selection) ? "--to-srgb" : bandsOption(facts.layout));
}

void addSamples(ImageFacts const& facts, ImageSelection const& selection, imagerefusal::SamplesText const& samples,
                Refusal& refusal) {
    if (isKept(facts.layout.type) || selection.hasRange() || isToBeConverted(facts, selection)) return;
    refusal.samples = true;
    bool const isLight = facts.convertible && facts.layout.isPlain() && selection.bands.empty();
    refusal.add(toText(facts.layout.type) + " samples " + samples(),
                std::string("--range LO,HI or --range auto") + (isLight ? ", or --to-srgb for light from 0 to 1" : ""));
}

void throwIfAny(std::string const& path, Refusal const& refusal) {
    if (refusal.holds.empty()) return;
    throw HostError(HostError::Kind::UnreadableImage, "'" + path + "' holds " + joined(refusal.holds, " and ") + "; " +
                                                          refusal.taken() + ": choose " +
                                                          joined(refusal.options, " and "));
}

} // namespace

void imagerefusal::requireSelectable(std::string const& path, ImageFacts const& facts,
                                     ImageSelection const& selection) {
    if (selection.toSrgb && (!selection.bands.empty() || selection.hasRange()))
        throw unfit("--to-srgb converts colours, --bands and --range take samples as numbers; choose one of them");
    for (size_t const band : selection.bands)
        if (band > facts.layout.bands)
            throw unfit("'" + path + "' has no band " + std::to_string(band) + "; --bands are 1" +
                        (facts.layout.bands == 1 ? "" : " to " + std::to_string(facts.layout.bands)));
    if (!selection.hasRange()) return;
    bool const takesAlpha = selection.bands.empty() ? facts.layout.alpha : pixelbands::hasAlpha(selection.bands.size());
    if (takesAlpha)
        throw unfit("'" + path +
                    "' is taken with alpha, which --range cannot scale; choose bands of colour alone, for example "
                    "--bands " +
                    (facts.layout.colours == 1 ? "1" : "1,2,3"));
}

void imagerefusal::requireNothingLost(std::string const& path, ImageFacts const& facts, ImageSelection const& selection,
                                      SamplesText const& samples) {
    Refusal refusal;
    addPages(facts, selection, refusal);
    // The other choices depend on the page.
    if (!refusal.pages) {
        addColours(facts, selection, refusal);
        addSamples(facts, selection, samples, refusal);
    }
    throwIfAny(path, refusal);
}

void imagerefusal::requireShowable(std::string const& path, ImageFacts const& facts, ImageSelection const& selection) {
    Refusal refusal;
    if (!facts.stack) addPages(facts, selection, refusal);
    if (!refusal.pages && !facts.colourSpace.empty()) addColours(facts, selection, refusal);
    throwIfAny(path, refusal);
}

void imagerefusal::requireMemory(std::string const& path, ImageFacts const& facts) {
    std::uint64_t const bytes = facts.heldBytes + kRowsOnTheWay * facts.layout.rowBytes();
    if (bytes <= memorybudget::kPictureBytes) return;
    throw HostError(
        HostError::Kind::UnreadableImage,
        "'" + path + "' (" + std::to_string(facts.layout.width) + " x " + std::to_string(facts.layout.height) +
            " pixels, " + facts.format + ") takes about " + memorybudget::toText(bytes) +
            " of memory to read, more than the " + memorybudget::toText(memorybudget::kPictureBytes) +
            " that a picture may take; make a tiled TIFF of it, or cut it into parts, with another program");
}
