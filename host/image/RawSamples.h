#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <vector>

/// Where the samples of an uncompressed picture lie in its file.
struct RawLayout {
    std::uint64_t offset = 0;   ///< of the first row in the file
    std::uint64_t rowBytes = 0; ///< from one row in the file to the next
    bool bigEndian = false;
    bool bottomUp = false;         ///< the first row in the file is the lowest
    std::vector<size_t> bandOrder; ///< for each band of a pixel its place in the file; empty: as they lie
};

/// Samples that lie in the file as they are: any region is read in its own time, and nothing is held.
class RawSamples final : public SampleSource {
public:
    /// Throws HostError (unreadable image) where the file is too short for such a picture.
    RawSamples(std::shared_ptr<InputFile> file, ImageFacts facts, RawLayout layout);

    ImageFacts const& facts() const override { return facts_; }
    void read(Region const& region, std::uint8_t* samples) override;

private:
    void order(std::uint8_t* samples, size_t pixels) const;

    std::shared_ptr<InputFile> file_;
    ImageFacts facts_;
    RawLayout raw_;
};

/// Pixels of 1, 2, 4 or 8 bits that are numbers of colours, the first in the highest bits of a byte.
class IndexedSamples final : public SampleSource {
public:
    /// `colours`: those of the numbers from 0, facts.layout.bands bytes each. Throws as RawSamples.
    IndexedSamples(std::shared_ptr<InputFile> file, ImageFacts facts, RawLayout layout, size_t bits,
                   std::vector<std::uint8_t> colours);

    ImageFacts const& facts() const override { return facts_; }
    void read(Region const& region, std::uint8_t* samples) override;

private:
    std::shared_ptr<InputFile> file_;
    ImageFacts facts_;
    RawLayout raw_;
    size_t bits_;
    std::vector<std::uint8_t> colours_;
    std::vector<std::uint8_t> row_;
};

/// The place in the file of row y. Shared by both.
std::uint64_t rowOffset(RawLayout const& raw, size_t height, size_t y);
/// Throws HostError (unreadable image) where the rows do not lie in the file.
void requireRows(InputFile const& file, SampleFormat const& layout, RawLayout const& raw, std::uint64_t lastRowBytes);
