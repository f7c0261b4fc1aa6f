#pragma once

#include "host/image/PixelSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

/// A small picture of a large one whose rows are still being read, for one thread that looks on while another reads.
///
/// Each of its pixels is one of the picture's, at a distance that makes the longer side at most kMaxSide; 16 bits are
/// shown as their upper byte, and what has not been read yet is transparent.
class ImportPreview {
public:
    static constexpr size_t kMaxSide = 1024;

    struct Image {
        size_t width = 0;
        size_t height = 0;
        std::vector<std::uint8_t> rgba; ///< rows from the top; nothing before the first row has been read
        Size picture;                   ///< the whole picture's
        size_t distance = 1;            ///< pixels of the picture from one of these to the next
    };

    /// The image as it is now, where it has changed since the version that `seen` holds; else an empty one. Any thread.
    Image takeNew(size_t& seen) const;

    /// A picture that reads from `source` and enters here what passes. Any thread; the source is then the reader's.
    static std::unique_ptr<PixelSource> watch(std::shared_ptr<ImportPreview> growing,
                                              std::unique_ptr<PixelSource> source);

    /// Enters pixels of a region of the source. Any thread.
    void enter(PixelSource const& source, Region const& region, std::uint8_t const* pixels);

private:
    void start(PixelSource const& source);
    void enterRow(PixelSource const& source, Region const& region, std::uint8_t const* pixels, size_t row);

    mutable std::mutex mutex_; // guards everything below
    Image image_;
    size_t version_ = 0;
};
