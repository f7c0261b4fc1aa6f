#pragma once

#include "host/image/SmallPicture.h"
#include "host/image/TiffTags.h"
#include "host/output/PictureWriter.h"

#include <string>
#include <vector>

/// A TIFF file in strips, compressed without loss (deflate with horizontal prediction), as BigTIFF if it may exceed 4
/// GiB or has tags of 64 bits.
class TiffWriter final : public PictureWriter {
public:
    struct Format {
        size_t width = 0;
        size_t height = 0;
        size_t bands = 0;            ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
        size_t bits = 8;             ///< bits of a sample: 8 or 16
        double micronsPerPixelX = 0; ///< 0: unknown
        double micronsPerPixelY = 0;

        /// Whether the file will state the size of a pixel: known along both axes, as numbers that a TIFF can hold.
        bool hasResolution() const;

        /// A picture beside the main one.
        struct Other {
            std::string name; ///< becomes its description: "label"
            SmallPicture picture;
        };
        std::vector<TiffTag> tags = {}; ///< of the picture, as they are; they replace those that the file would have
        std::vector<Other> others =
            {}; ///< further directories, marked as reduced-size images that belong to the picture
    };

    /// jobs: threads that compress; 0: one per core. Throws what requireUsable throws, and HostError (unwritable
    /// output).
    TiffWriter(OutputFile const& file, Format const& format, size_t jobs = 0);
    ~TiffWriter() override;

    void writeRows(std::uint8_t const* rows, size_t count) override;
    void finish() override;

private:
    struct State;
    std::unique_ptr<State> state_;
};
