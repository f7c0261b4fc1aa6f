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

    void read(size_t level, size_t plane, Region const& region, std::uint8_t* samples) final;
    PyramidStatistics statistics() const final { return statistics_; }

protected:
    /// A unit of a plane's level.
    struct Unit {
        size_t level = 0;
        size_t plane = 0;
        size_t number = 0; ///< row by row
        Region region;     ///< as far as it lies in the level
    };

    /// The samples of a unit. Throws as read().
    virtual std::vector<std::uint8_t> decode(Unit const& unit) = 0;
    /// Gives up decoders and open files: none goes on after a failure.
    virtual void drop() noexcept = 0;

private:
    void readUnits(size_t level, size_t plane, Region const& region, std::uint8_t* samples);
    UnitCache::Samples samplesOf(Unit const& unit);

    std::shared_ptr<UnitFile> file_;
    PyramidStatistics statistics_;
};
