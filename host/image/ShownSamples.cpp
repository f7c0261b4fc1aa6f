#include "host/image/ShownSamples.h"

#include "host/image/Orientation.h"

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace {

class ConvertedSamples final : public SampleSource {
public:
    ConvertedSamples(std::unique_ptr<SampleSource> source, SrgbConversion::Choice const& choice)
        : source_(std::move(source)),
          conversion_(choice.conversion),
          facts_(convertedFacts(source_->facts(), choice)) {}

    ImageFacts const& facts() const override { return facts_; }
    bool readsAnywhere() const override { return source_->readsAnywhere(); }
    void read(Region const& region, std::uint8_t* samples) override {
        source_->read(region, samples);
        conversion_->convert(samples, region.width * region.height);
    }

private:
    std::unique_ptr<SampleSource> source_;
    std::shared_ptr<SrgbConversion const> conversion_;
    ImageFacts facts_;
};

class UprightSamples final : public SampleSource {
public:
    explicit UprightSamples(std::unique_ptr<SampleSource> source)
        : source_(std::move(source)),
          orientation_(source_->facts().orientation),
          facts_(uprightFacts(source_->facts())) {
        // Mirrored rows come from the top, too.
        isHeld_ = !source_->readsAnywhere() && orientation_ > 2;
        if (isHeld_) facts_.heldBytes += facts_.layout.rowBytes() * facts_.layout.height;
    }

    ImageFacts const& facts() const override { return facts_; }
    bool readsAnywhere() const override { return isHeld_ || source_->readsAnywhere(); }

    void read(Region const& region, std::uint8_t* samples) override {
        size_t const pixelBytes = facts_.layout.pixelBytes();
        Region const inFile = orientation::inFile(region, source_->facts().layout.size(), orientation_);
        part_.resize(region.width * region.height * pixelBytes);
        if (isHeld_)
            copyHeld(inFile);
        else
            source_->read(inFile, part_.data());
        orientation::turn(part_.data(), sizeOf(region), pixelBytes, orientation_, samples);
    }

private:
    void copyHeld(Region const& inFile) {
        SampleFormat const& layout = source_->facts().layout;
        if (!held_) {
            // Not set to 0: a header that says too much would take all of it.
            std::unique_ptr<std::uint8_t[]> all(new std::uint8_t[layout.rowBytes() * layout.height]);
            source_->read(wholeOf(layout.size()), all.get());
            held_ = std::move(all);
        }
        size_t const bytes = inFile.width * layout.pixelBytes();
        for (size_t row = 0; row < inFile.height; ++row) {
            size_t const from = (inFile.y + row) * layout.rowBytes() + inFile.x * layout.pixelBytes();
            std::memcpy(part_.data() + row * bytes, held_.get() + from, bytes);
        }
    }

    std::unique_ptr<SampleSource> source_;
    int orientation_;
    ImageFacts facts_;
    bool isHeld_ = false;
    std::unique_ptr<std::uint8_t[]> held_; // the whole picture, as it lies in the file
    std::vector<std::uint8_t> part_;
};

} // namespace

ImageFacts uprightFacts(ImageFacts facts) {
    Size const size = orientation::turned(facts.layout.size(), facts.orientation);
    facts.layout.width = size.width;
    facts.layout.height = size.height;
    if (orientation::swapsSides(facts.orientation)) std::swap(facts.pixelsPerMillimetreX, facts.pixelsPerMillimetreY);
    facts.orientation = 1;
    return facts;
}

ImageFacts convertedFacts(ImageFacts facts, SrgbConversion::Choice const& choice) {
    facts.iccProfile.clear();
    facts.followedProfile = choice.profile.empty() ? "a profile without a name" : choice.profile;
    return facts;
}

std::unique_ptr<SampleSource> convertedSamples(std::unique_ptr<SampleSource> source,
                                               SrgbConversion::Choice const& choice) {
    if (!choice.conversion) return source;
    return std::make_unique<ConvertedSamples>(std::move(source), choice);
}

std::unique_ptr<SampleSource> uprightSamples(std::unique_ptr<SampleSource> source) {
    if (source->facts().orientation == 1) return source;
    return std::make_unique<UprightSamples>(std::move(source));
}
