#pragma once

#include "host/pyramid/LevelReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Bands that are taken of a file's.
struct PyramidBands {
    size_t inFile = 0;          ///< number of bands
    std::vector<size_t> chosen; ///< their indices; empty: all
};

/// Reads regions of the levels of a Pyramid. One thread at a time; several readers work side by side.
class PyramidReader {
public:
    /// Made by Pyramid. `facts`: of the chosen bands.
    PyramidReader(std::shared_ptr<PyramidFacts const> facts, std::unique_ptr<LevelReader> levels, PyramidBands bands,
                  std::string path);

    /// The pyramid's.
    PyramidFacts const& facts() const { return *facts_; }
    /// Reads a region: samples of the layout's type in the machine's byte order, interleaved, rows tightly packed from
    /// the top: region.width * region.height * facts().image.layout.pixelBytes() bytes. Throws HostError: region
    /// outside; unreadable image, if a part of the region is damaged; missing file, if the system cannot read it; and
    /// what the check throws. The samples are then unspecified, and the next read starts afresh.
    void read(size_t level, Region const& region, std::uint8_t* samples);
    /// Sets the function that is called before each read of the file; an exception of it stops the reading.
    void setCheck(InputFile::Check const& check) { levels_->setCheck(check); }
    /// Of all reads so far.
    PyramidStatistics statistics() const { return levels_->statistics(); }

private:
    std::shared_ptr<PyramidFacts const> facts_;
    std::unique_ptr<LevelReader> levels_;
    PyramidBands bands_;
    std::string path_;
    std::vector<std::uint8_t> all_; // bands of some rows
};
