#pragma once

#include "host/output/PictureWriter.h"

/// A PNG file of 8 or 16 bits per sample.
class PngWriter final : public PictureWriter {
public:
    /// bands: 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA; bits: 8 or 16. Throws what requireUsable throws, and HostError
    /// (unwritable output).
    PngWriter(OutputFile const& file, size_t width, size_t height, size_t bands, size_t bits = 8);
    ~PngWriter() override;

    void writeRows(std::uint8_t const* rows, size_t count) override;
    void finish() override;

private:
    struct State;
    std::unique_ptr<State> state_;
};
