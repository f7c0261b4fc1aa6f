#pragma once

#include "host/image/SampleSource.h"

#include <memory>
#include <vector>

/// The layout of an uncompressed picture's samples in its file.
struct RawLayout {
    std::uint64_t offset = 0;   ///< of the first row in the file
    std::uint64_t rowBytes = 0; ///< stride: from one row to the next
    bool bigEndian = false;
    bool bottomUp = false;         ///< the first row in the file is the bottom one
    std::vector<size_t> bandOrder; ///< index in the file of each band of a pixel; empty: same order
};

/// Uncompressed samples in the file: any region is read at once, and nothing is held in memory.
class RawSamples final : public SampleSource {
public:
    /// Throws HostError (unreadable image) if the file is too short for such a picture.
    RawSamples(std::shared_ptr<InputFile> file, ImageFacts facts, RawLayout layout);

    ImageFacts const& facts() const override { return facts_; }
    void read(Region const& region, std::uint8_t* samples) override;

private:
    void order(std::uint8_t* samples, size_t pixels) const;

    std::shared_ptr<InputFile> file_;
    ImageFacts facts_;
    RawLayout raw_;
};

/// Pixels of 1, 2, 4 or 8 bits that are palette indices, the first in the highest bits of a byte.
class IndexedSamples final : public SampleSource {
public:
    /// `colours`: the palette, facts.layout.bands bytes per entry. Throws as RawSamples.
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

/// The offset of row y in the file, for both classes.
std::uint64_t rowOffset(RawLayout const& raw, size_t height, size_t y);
/// Throws HostError (unreadable image) if the rows do not lie in the file.
void requireRows(InputFile const& file, SampleFormat const& layout, RawLayout const& raw, std::uint64_t lastRowBytes);
