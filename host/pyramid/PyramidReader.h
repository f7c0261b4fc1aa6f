#pragma once

#include "host/image/SrgbConversion.h"
#include "host/pyramid/LevelReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// How a pyramid's samples are made of its file's.
struct PyramidTaking {
    size_t bands = 0;                                      ///< of the file
    std::vector<size_t> chosen;                            ///< indices of those that are taken; empty: all
    int orientation = 1;                                   ///< of the file's pixels; the pyramid's are upright
    std::shared_ptr<SrgbConversion const> conversion = {}; ///< of all bands; null: none
};

/// Reads regions of the levels of a Pyramid. One thread at a time; several readers work side by side.
class PyramidReader {
public:
    /// Made by Pyramid. `facts`: of what is taken.
    PyramidReader(std::shared_ptr<PyramidFacts const> facts, std::unique_ptr<LevelReader> levels, PyramidTaking taking,
                  std::string path);

    /// The pyramid's, of the bands that are taken.
    PyramidFacts const& facts() const { return *facts_; }
    /// Reads these bands of the pyramid's from now on, by their indices, of one slice at one time. Where some are left
    /// out, none is grey, a primary colour or alpha any more. Of planes no others are decoded.
    void take(std::vector<size_t> const& bands, StackPosition const& position);
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
    void readBands(size_t level, Region const& region, std::uint8_t* samples);
    void readPlane(size_t level, size_t plane, Region const& region, std::uint8_t* samples);

    std::shared_ptr<PyramidFacts const> const all_; // the pyramid's
    std::unique_ptr<LevelReader> levels_;
    PyramidTaking const taking_; // the pyramid's
    std::string path_;
    std::shared_ptr<PyramidFacts const> facts_;
    std::vector<size_t> taken_; // bands of the file; none: all, as they lie in it
    StackPosition position_;
    std::vector<std::uint8_t> plane_;  // all of its bands, some rows
    std::vector<std::uint8_t> turned_; // as they lie in the file
};
