#pragma once

#include "host/PictureInfo.h"
#include "host/display/SampleCodes.h"
#include "host/pyramid/PyramidTiles.h"
#include "host/view/TileReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/// The channels whose codes threads make of tiles, and a number that tells one such choice from another.
struct ChannelCoding {
    struct Channel {
        size_t band = 0; ///< of the picture
        SampleCodes codes;
    };

    std::uint64_t number = 0;
    std::vector<Channel> channels;
    StackPosition position;
};

/// Hands the coding that is asked for to the threads. Any thread.
class CurrentCoding {
public:
    void set(std::shared_ptr<ChannelCoding const> coding);
    std::shared_ptr<ChannelCoding const> get() const;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<ChannelCoding const> coding_;
};

/// Decodes what a tile shows into codes, two channels per texel: low and high byte of the first, then of the second,
/// which is 0 where there is none. Pairs of channels follow one another. One thread.
class ChannelReader final : public TileReader {
public:
    ChannelReader(std::unique_ptr<PyramidReader> reader, PictureInfo const& info,
                  std::shared_ptr<CurrentCoding const> coding);

    void read(LoadedTile& tile) override;

private:
    void take(ChannelCoding const& coding);

    PictureInfo info_;
    PyramidTiles levels_;
    bool isPlain_;     // all bands of the picture are grey or RGB, with or without alpha
    size_t bandCount_; // of the picture
    std::shared_ptr<CurrentCoding const> coding_;
    std::optional<std::uint64_t> taken_; // number of the coding whose bands are read
    std::vector<size_t> bands_;          // that are read, by the picture's indices
    std::vector<std::uint8_t> samples_;
    std::vector<std::uint16_t> codes_;
};
