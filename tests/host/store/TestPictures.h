#pragma once

#include "host/image/PixelSource.h"
#include "host/store/StoreImporter.h"

#include <memory>
#include <string>
#include <vector>

/// Pictures in memory, and stores of them.
namespace testpictures {

struct Picture {
    size_t width = 0;
    size_t height = 0;
    size_t bands = 0;
    size_t bits = 8;
    std::vector<std::uint8_t> bytes;         ///< interleaved samples, 16 bits in the machine's byte order
    std::vector<MetadataItem> metadata = {}; ///< of its source; does not count when pictures are compared

    bool operator==(Picture const& other) const;
};

enum class Content { Noise, Ramp, Flat, Checkerboard, Resonance };

/// Checkerboard: samples of 0 and the highest value. Resonance: colours at both ends of Co's range, arranged so that
/// every tap of the filter of a level 2 coefficient adds up: no picture has larger ones there.
Picture picture(size_t width, size_t height, size_t bands, size_t bits, Content content);

std::unique_ptr<PixelSource> source(Picture const& picture);

/// Imports the picture without a progress callback.
StoreInfo import(Picture const& picture, std::string const& path, ImportOptions const& options = {});

} // namespace testpictures
