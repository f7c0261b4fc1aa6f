#pragma once

#include "host/pyramid/LevelReader.h"
#include "host/pyramid/UnitCache.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A file of which readers decode units: what they share.
struct UnitFile {
    std::string path;
    PyramidFacts facts;
    UnitCache cache;

    UnitFile(std::string path_, size_t cacheBytes) : path(std::move(path_)), cache(cacheBytes) {}
    UnitFile(UnitFile const&) = delete;
    UnitFile& operator=(UnitFile const&) = delete;
    virtual ~UnitFile() = default;
};

/// Reads regions unit by unit: those that the cache has are not decoded again.
class UnitReader : public LevelReader {
public:
    explicit UnitReader(std::shared_ptr<UnitFile> file) : file_(std::move(file)) {}

    void read(size_t level, Region const& region, std::uint8_t* samples) final;
    PyramidStatistics statistics() const final { return statistics_; }

protected:
    /// The samples of a unit, as far as it lies in the level; numbered row by row. Throws as read().
    virtual std::vector<std::uint8_t> decode(size_t level, Region const& unit, size_t index) = 0;
    /// Gives up decoders and open files: none goes on after a failure.
    virtual void drop() noexcept = 0;

private:
    void readUnits(size_t level, Region const& region, std::uint8_t* samples);
    UnitCache::Samples unit(size_t level, Region const& region, size_t index);

    std::shared_ptr<UnitFile> file_;
    PyramidStatistics statistics_;
};
