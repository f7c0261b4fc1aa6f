#include "host/image/ImageReader.h"

#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/image/ImageMetadata.h"
#include "host/image/ImageRefusal.h"
#include "host/image/PixelBands.h"
#include "host/image/SampleRange.h"
#include "host/image/SampleSource.h"
#include "host/image/ShownSamples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>

namespace {

constexpr size_t kPartBytes = 4 * 1024 * 1024; // of the file's samples, converted at once
constexpr size_t kSkippedRows = 64;            // rows read at once, on the way down to a region

std::string singular(std::string const& noun) {
    return noun.substr(0, noun.size() - 1);
}

// "samples 3 to 5 of 32-bit float"; numbers are the shortest that identify a sample of the type.
std::string rangeText(SampleRange const& range, SampleType type) {
    return "samples " + imageselection::toText(range.low, type) + " to " + imageselection::toText(range.high, type) +
           " of " + toText(type) + " as 0 to 65535";
}

} // namespace

// An opened file and its selected part.
class ImageReader::Reading {
public:
    Reading(std::string const& path, Options options)
        : options_(std::move(options)), file_(std::make_shared<InputFile>(path, options_.check)) {
        request_.page = options_.selection.page;
        request_.asNumbers = !options_.selection.bands.empty() || options_.selection.hasRange();
        open();
        imagerefusal::requireMemory(path, facts());
        if (options_.anySamples) forgetRange();
        imagerefusal::requireSelectable(path, facts(), options_.selection);
        if (isToBeConverted()) convert();
        chooseBands();
        if (options_.anySamples)
            imagerefusal::requireShowable(path, facts(), options_.selection);
        else
            imagerefusal::requireNothingLost(path, facts(), options_.selection, [this] { return samplesText(); });
        range_ = options_.selection.range;
        takeNotes();
    }

    ImageFacts const& facts() const { return source_->facts(); }
    size_t bands() const { return bands_.size(); }
    std::vector<std::string> const& notes() const { return notes_; }

    size_t sampleBytes() const {
        bool const wide = options_.selection.hasRange() || facts().layout.type == SampleType::Unsigned16;
        return wide && options_.samples == Samples::kAsStored ? 2 : 1;
    }

    void setCheck(InputFile::Check const& check) { file_->setCheck(check); }

    Selection selection() {
        settle();
        Selection chosen;
        chosen.text = text();
        if (range_) {
            chosen.rangeLow = range_->low;
            chosen.rangeHigh = range_->high;
        }
        return chosen;
    }

    Lost const& lost() const { return lost_; }

    PictureMetadata metadata() {
        imagemetadata::Taken taken;
        taken.page = request_.page;
        taken.hasAllBands = isWhole();
        taken.hasFileSamples = !options_.selection.hasRange() && convertedFrom_.empty() &&
                               facts().followedProfile.empty() && sampleBytes() == bytesOf(facts().layout.type);
        return imagemetadata::of(*file_, facts(), taken);
    }

    std::string description() const {
        std::string const what = counted(facts().layout.bands, "band") + " of " + toText(facts().layout.type) +
                                 " samples, " + facts().format;
        return text().empty() ? what : what + ", " + text();
    }

    void read(Region const& region, std::uint8_t* pixels) {
        settle();
        goDownTo(region.y);
        size_t const rowPixelBytes = region.width * facts().layout.pixelBytes();
        size_t const rowsAtOnce = std::clamp<size_t>(kPartBytes / rowPixelBytes, 1, region.height);
        for (size_t row = 0; row < region.height; row += rowsAtOnce) {
            Region const part{region.x, region.y + row, region.width, std::min(rowsAtOnce, region.height - row)};
            readPart(part, pixels + row * region.width * bands_.size() * sampleBytes());
        }
        nextRow_ = region.y + region.height;
    }

private:
    void open() {
        source_ = openSamples(file_, request_);
        if (options_.selection.followsProfile && options_.selection.bands.empty()) {
            auto const choice = SrgbConversion::of(source_->facts());
            profileLeftOut_ = choice.reason;
            source_ = convertedSamples(std::move(source_), choice);
        }
        if (options_.selection.isUpright) {
            orientation_ = source_->facts().orientation;
            source_ = uprightSamples(std::move(source_));
        }
        nextRow_ = 0;
    }

    void forgetRange() {
        options_.selection.range.reset();
        options_.selection.automaticRange = false;
    }

    bool isToBeConverted() const {
        if (!facts().convertible) return false;
        bool const unasked = !options_.lossless && !request_.asNumbers && !facts().colourSpace.empty();
        return options_.selection.toSrgb || unasked;
    }

    void convert() {
        convertedFrom_ = facts().colourSpace.empty() ? kLinearLight : facts().colourSpace;
        request_.toSrgb = true;
        open();
    }

    void chooseBands() {
        if (isWhole()) {
            bands_.resize(facts().layout.bands);
            std::iota(bands_.begin(), bands_.end(), size_t{0});
        }
        for (size_t const band : options_.selection.bands)
            bands_.push_back(band - 1);
    }

    // Whether all bands are taken, in the order of the file.
    bool isWhole() const { return options_.selection.bands.empty(); }

    std::string samplesText() {
        auto const found = samplerange::extremes(*source_, bands_, [this] { file_->check(); });
        if (!found) return "of which none is a finite number";
        SampleType const type = facts().layout.type;
        return "from " + imageselection::toText(found->low, type) + " to " + imageselection::toText(found->high, type);
    }

    [[noreturn]] void refuseRange(std::string const& held) const {
        throw HostError(HostError::Kind::UnreadableImage,
                        "'" + file_->path() + "' holds " + held +
                            "; there is no range from the smallest to the largest: choose --range LO,HI");
    }

    // Computes an automatic range.
    void settle() {
        if (!options_.selection.automaticRange || range_) return;
        auto const found = samplerange::extremes(*source_, bands_, [this] { file_->check(); });
        if (!found) refuseRange("no sample that is a finite number");
        if (found->low < -SampleRange::kFarthest || found->high > SampleRange::kFarthest)
            refuseRange("samples beyond 1e300");
        range_ = samplerange::automatic(*found);
        if (!source_->readsAnywhere()) open();
    }

    void takeNotes() {
        std::string const name = "'" + file_->path() + "'";
        if (!convertedFrom_.empty() && !options_.selection.toSrgb)
            notes_.push_back(name + " holds " + convertedFrom_ + ": converted to sRGB of " +
                             std::to_string(8 * bytesOf(facts().layout.type)) + " bits" +
                             (convertedFrom_ == kLinearLight ? "; what is brighter than white is clipped" : ""));
        if (options_.anySamples && facts().stack && facts().stack->pages() < facts().pages)
            notes_.push_back(name + " has " + std::to_string(facts().pages) + " pages, of which the " +
                             std::to_string(facts().stack->pages()) +
                             " of its first image are shown; --page N shows another");
        if (!facts().drawn.empty()) notes_.push_back(name + " has no pixels of its own and is " + facts().drawn);
        if (!profileLeftOut_.empty()) notes_.push_back(name + ": " + profileLeftOut_);
        if (facts().orientation != 1)
            notes_.push_back(name + " asks to be turned or mirrored (orientation " +
                             std::to_string(facts().orientation) + "); its pixels are taken as they lie in the file");
    }

    // Text of the selection; an automatic range may not be known yet.
    std::string text() const {
        std::vector<std::string> parts;
        if (facts().pages > 1)
            parts.push_back(singular(facts().pageNoun) + " " + std::to_string(request_.page.value_or(1)) + " of " +
                            std::to_string(facts().pages));
        if (!isWhole())
            parts.push_back((bands() == 1 ? "band " : "bands ") + imageselection::toText(options_.selection.bands) +
                            " of " + std::to_string(facts().layout.bands));
        if (!convertedFrom_.empty()) parts.push_back(convertedFrom_ + " converted to sRGB");
        if (!facts().followedProfile.empty()) parts.push_back(facts().followedProfile + " converted to sRGB");
        if (orientation_ != 1) parts.push_back("turned upright (orientation " + std::to_string(orientation_) + ")");
        if (!facts().drawn.empty()) parts.push_back(facts().drawn);
        if (range_) parts.push_back(rangeText(*range_, facts().layout.type));
        std::string text;
        for (std::string const& part : parts)
            text += (text.empty() ? "" : "; ") + part;
        return text;
    }

    // Rows above a region are read and dropped: decoders that cannot skip would hold all of them.
    void goDownTo(size_t y) {
        if (source_->readsAnywhere()) return;
        if (y < nextRow_) open();
        for (; nextRow_ < y; nextRow_ += std::min(kSkippedRows, y - nextRow_)) {
            Region const column{0, nextRow_, 1, std::min(kSkippedRows, y - nextRow_)};
            samples_.resize(column.height * facts().layout.pixelBytes());
            source_->read(column, samples_.data());
        }
    }

    void readPart(Region const& region, std::uint8_t* pixels) {
        SampleFormat const& layout = facts().layout;
        bool const isSame = isWhole() && !range_ && sampleBytes() == bytesOf(layout.type);
        if (isSame) return source_->read(region, pixels);
        size_t const count = region.width * region.height;
        samples_.resize(count * layout.pixelBytes());
        source_->read(region, samples_.data());
        samplerange::toNumbers(samples_.data(), layout, bands_, count, numbers_);
        if (range_) countLost();
        for (double const number : numbers_) {
            std::uint16_t const sample = range_ ? range_->scaled(number) : static_cast<std::uint16_t>(number);
            bool const isWide = range_ || layout.type == SampleType::Unsigned16;
            pixels = put(sample, isWide, pixels);
        }
    }

    void countLost() {
        for (double const number : numbers_) {
            if (std::isnan(number)) ++lost_.notNumbers;
            if (number < range_->low || number > range_->high) ++lost_.clipped;
        }
    }

    // 16-bit samples are shown as their upper byte.
    std::uint8_t* put(std::uint16_t sample, bool isWide, std::uint8_t* pixels) const {
        if (sampleBytes() == 1) {
            *pixels = static_cast<std::uint8_t>(isWide ? sample >> 8 : sample);
            return pixels + 1;
        }
        std::memcpy(pixels, &sample, sizeof(sample));
        return pixels + sizeof(sample);
    }

    Options options_;
    std::shared_ptr<InputFile> file_;
    SampleRequest request_;
    std::unique_ptr<SampleSource> source_;
    std::vector<size_t> bands_; // index of each of our bands in a pixel of the file
    int orientation_ = 1;       // of the file, if it is followed
    std::string profileLeftOut_;
    std::string convertedFrom_; // colour space of the file; empty: colours are not converted
    std::optional<SampleRange> range_;
    std::vector<std::string> notes_;
    Lost lost_;
    size_t nextRow_ = 0; // next row of a source that is read from the top only
    std::vector<std::uint8_t> samples_;
    std::vector<double> numbers_;
};

ImageReader::ImageReader(std::string const& path, Options options)
    : reading_(std::make_unique<Reading>(path, std::move(options))) {}

ImageReader::ImageReader(std::string const& path, Samples samples)
    : ImageReader(path, Options{samples, {}, false, {}}) {}

ImageReader::~ImageReader() = default;

size_t ImageReader::width() const {
    return reading_->facts().layout.width;
}

size_t ImageReader::height() const {
    return reading_->facts().layout.height;
}

size_t ImageReader::bands() const {
    return reading_->bands();
}

size_t ImageReader::sampleBytes() const {
    return reading_->sampleBytes();
}

double ImageReader::pixelsPerMillimetreX() const {
    return reading_->facts().pixelsPerMillimetreX;
}

double ImageReader::pixelsPerMillimetreY() const {
    return reading_->facts().pixelsPerMillimetreY;
}

std::string ImageReader::description() const {
    return reading_->description();
}

PixelSource::Selection ImageReader::selection() {
    return reading_->selection();
}

PixelSource::Lost ImageReader::lost() const {
    return reading_->lost();
}

PictureMetadata ImageReader::metadata() {
    return reading_->metadata();
}

void ImageReader::whileReading(std::function<void()> const& check) {
    reading_->setCheck(check);
}

std::vector<std::string> const& ImageReader::notes() const {
    return reading_->notes();
}

void ImageReader::readInto(Region const& region, std::uint8_t* pixels) {
    reading_->read(region, pixels);
}
