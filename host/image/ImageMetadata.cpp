#include "host/image/ImageMetadata.h"

#include "host/HostError.h"
#include "host/image/JsonValue.h"
#include "host/image/SlideImages.h"
#include "host/image/TiffDirectory.h"
#include "host/image/TiffTags.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <set>
#include <utility>

namespace {

// They say what samples mean: true of unchanged ones alone.
constexpr std::array<std::uint16_t, 10> kOfTheSamples{280, 281, 290, 291, 301, 318, 319, 340, 341, tifftags::kNodata};
constexpr std::uint16_t kUnsigned16 = 3; // types of values
constexpr std::uint16_t kFraction = 5;

template <class Numbers>
bool holds(Numbers const& numbers, std::uint16_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

template <class Numbers>
std::string listOf(Numbers const& numbers) {
    std::string list;
    for (auto const number : numbers)
        list += (list.empty() ? "" : ", ") + std::to_string(number);
    return (numbers.size() == 1 ? "tag " : "tags ") + list;
}

void append(std::vector<std::uint8_t>& bytes, std::uint32_t number, size_t count) {
    for (size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

class Collection {
public:
    Collection(InputFile& file, ImageFacts const& facts, imagemetadata::Taken const& taken)
        : file_(file), facts_(facts), taken_(taken) {}

    PictureMetadata result() {
        bool const isTiffFile = isTiff(file_);
        if (isTiffFile) {
            addTags();
        } else {
            for (MetadataItem const& block : facts_.blocks)
                add(block);
            addTagsOfBlocks();
            addPrintDensity();
        }
        addProfile();
        addProperties();
        addImages();
        return std::move(found_);
    }

private:
    void leaveOut(std::string const& what) { found_.leftOut.push_back("'" + file_.path() + "': " + what); }

    void add(MetadataItem item) { found_.items.push_back(std::move(item)); }

    void add(TiffTag const& tag) {
        MetadataItem item{picturemetadata::kTag, tifftags::nameOf(tag.path), {}};
        append(item.bytes, tag.type, 2);
        item.bytes.insert(item.bytes.end(), tag.values.begin(), tag.values.end());
        found_.items.push_back(std::move(item));
    }

    // OpenSlide reads TIFFs that libtiff does not.
    std::optional<TiffDirectory> directory() {
        try {
            SampleRequest request;
            request.page = taken_.page;
            return TiffDirectory::read(file_, request);
        } catch (HostError const& error) {
            if (error.kind() != HostError::Kind::UnreadableImage) throw;
            leaveOut(std::string("its tags are left out: ") + error.what());
            return std::nullopt;
        }
    }

    void addTags() {
        auto const found = directory();
        if (!found) return;
        TiffStructure const structure(TiffBytes::of(file_));
        auto tags = structure.tags(found->offset);
        bool const isPlain = hasPlainSamples(tags.tags);
        std::set<std::uint16_t> ofSamples;
        for (TiffTag const& tag : tags.tags) {
            if (tag.path.size() == 1 && !isPlain && holds(kOfTheSamples, tag.number()))
                ofSamples.insert(tag.number());
            else if (tag.number() == TIFFTAG_ICCPROFILE && tag.path.size() == 1)
                profileOfTag_ = tag.values;
            else if (isDescriptionOfMore(tag, found->pages))
                leaveOut("its description is of all its pages, and is left out");
            else
                addOne(tag);
        }
        auto const isOfFile = [](std::uint16_t number) { return tifftags::isOfFile({number}); };
        for (auto number = tags.leftOut.begin(); number != tags.leftOut.end();)
            number = isOfFile(*number) ? tags.leftOut.erase(number) : std::next(number);
        if (!tags.leftOut.empty())
            leaveOut("its " + listOf(tags.leftOut) +
                     " cannot be kept: damaged, too large, or leading to other parts of the file");
        if (!ofSamples.empty())
            leaveOut("its " + listOf(ofSamples) + (ofSamples.size() == 1 ? " describes" : " describe") +
                     " samples as they lie in the file, and not as they are taken; left out");
    }

    // OME-XML names the page of each plane.
    static bool isDescriptionOfMore(TiffTag const& tag, size_t pages) {
        std::string const text(tag.values.begin(), tag.values.end());
        return pages > 1 && tag.path.size() == 1 && tag.number() == TIFFTAG_IMAGEDESCRIPTION &&
               text.find("<OME") != std::string::npos;
    }

    // An orientation that was followed, here or by a decoder, is not that of the picture as it is taken.
    void addOne(TiffTag const& tag) {
        bool const isOrientation = tag.path.size() == 1 && tag.number() == TIFFTAG_ORIENTATION;
        bool const isTrue = !isOrientation || (!tag.values.empty() && tag.values[0] == facts_.orientation);
        if (isTrue && !tifftags::isOfFile(tag.path)) add(tag);
    }

    // Whether a sample of the file is a sample of the picture.
    bool hasPlainSamples(std::vector<TiffTag> const& tags) const {
        return taken_.hasAllBands && taken_.hasFileSamples && std::none_of(tags.begin(), tags.end(), saysOtherwise);
    }

    // Samples of fewer than 8 bits, palettes, and those of which 0 is white.
    static bool saysOtherwise(TiffTag const& tag) {
        if (tag.path.size() != 1 || tag.type != kUnsigned16 || tag.values.empty()) return false;
        if (tag.number() == TIFFTAG_BITSPERSAMPLE) return tag.values[0] % 8 != 0;
        return tag.number() == TIFFTAG_PHOTOMETRIC && tag.values[0] != PHOTOMETRIC_MINISBLACK &&
               tag.values[0] != PHOTOMETRIC_RGB;
    }

    // EXIF is built as a TIFF, and so is a box of JPEG 2000 for GeoTIFF's tags.
    void addTagsOfBlocks() {
        constexpr auto kGeoBox = "uuid/b14bf8bd083d4b43a5ae8cd7d5a6ce03";
        for (MetadataItem const& block : facts_.blocks) {
            bool const isGeoTiff = block.kind == picturemetadata::kBox && block.name == kGeoBox;
            if (block.kind != picturemetadata::kExif && !isGeoTiff) continue;
            TiffStructure const structure(TiffBytes::of(block.bytes));
            for (TiffTag const& tag : structure.tags(structure.firstDirectory()).tags)
                addOne(tag);
        }
    }

    void addPrintDensity() {
        if (!(facts_.dotsPerInchX > 0 && facts_.dotsPerInchY > 0)) return;
        if (picturemetadata::find(found_.items, picturemetadata::kTag, std::to_string(TIFFTAG_XRESOLUTION)) != nullptr)
            return;
        // A JPEG states dots per inch, a PNG per metre: as a fraction each is exact in one of the units.
        constexpr double kCentimetresPerInch = 2.54;
        auto const isWhole = [](double number) { return std::abs(number - std::round(number)) < 1e-6; };
        bool const perInch = isWhole(facts_.dotsPerInchX) && isWhole(facts_.dotsPerInchY);
        double const unit = perInch ? 1 : kCentimetresPerInch;
        constexpr double kParts = 1000;
        constexpr double kLargest = 4e9;
        if (std::max(facts_.dotsPerInchX, facts_.dotsPerInchY) * kParts / unit > kLargest) return;
        for (auto const& [number, density] :
             {std::pair<std::uint16_t, double>{TIFFTAG_XRESOLUTION, facts_.dotsPerInchX},
              std::pair<std::uint16_t, double>{TIFFTAG_YRESOLUTION, facts_.dotsPerInchY}}) {
            TiffTag tag{{number}, kFraction, {}};
            append(tag.values, static_cast<std::uint32_t>(std::lround(density / unit * kParts)), 4);
            append(tag.values, static_cast<std::uint32_t>(kParts), 4);
            add(tag);
        }
        TiffTag unitTag{{TIFFTAG_RESOLUTIONUNIT}, kUnsigned16, {}};
        append(unitTag.values, perInch ? RESUNIT_INCH : RESUNIT_CENTIMETER, 2);
        add(unitTag);
    }

    void addProfile() {
        // OpenSlide reports none; libvips that of a TIFF.
        auto profile = facts_.iccProfile;
        if (profile.empty() && facts_.followedProfile.empty() && taken_.hasFileSamples) profile = profileOfTag_;
        if (profile.empty()) return;
        if (!taken_.hasAllBands || !taken_.hasFileSamples)
            return leaveOut(
                "its ICC profile is of samples as they lie in the file, and not as they are taken; left out");
        add({picturemetadata::kProfile, {}, std::move(profile)});
    }

    void addProperties() {
        if (facts_.properties.empty()) return;
        std::vector<ImageProperty> texts;
        for (ImageProperty const& property : facts_.properties) {
            auto const same = std::find_if(texts.begin(), texts.end(),
                                           [&](ImageProperty const& text) { return text.name == property.name; });
            if (same == texts.end())
                texts.push_back(property);
            else
                same->value += "\n" + property.value;
        }
        std::string json;
        for (ImageProperty const& text : texts)
            json += (json.empty() ? "{\n  " : ",\n  ") + JsonValue::quoted(text.name) + ": " +
                    JsonValue::quoted(text.value);
        json += "\n}";
        add({picturemetadata::kProperties, {}, {json.begin(), json.end()}});
    }

    void addImages() {
        for (std::string const& name : slideimages::names(file_)) {
            try {
                add({picturemetadata::kImage, name, smallpicture::toPng(slideimages::read(file_, name))});
            } catch (HostError const& error) {
                if (error.kind() != HostError::Kind::UnreadableImage) throw;
                leaveOut("its image '" + name + "' is left out: " + error.what());
            }
        }
    }

    InputFile& file_;
    ImageFacts const& facts_;
    imagemetadata::Taken taken_;
    PictureMetadata found_;
    std::vector<std::uint8_t> profileOfTag_;
};

} // namespace

PictureMetadata imagemetadata::of(InputFile& file, ImageFacts const& facts, Taken const& taken) {
    return Collection(file, facts, taken).result();
}
