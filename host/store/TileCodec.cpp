#include "host/store/TileCodec.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <stdexcept>
#include <string>

namespace {

// Higher levels take several times as long for a few per cent. Coefficients of a photograph look like noise: matches
// shorter than this are coincidences and cost more than literals.
constexpr int kCompressionLevel = 1;
constexpr int kShortestMatch = 7;
constexpr size_t kMaxUniformChecksums = 64;

using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<std::int16_t>;

// Zigzag coding: 0, -1, 1, -2, ... become 0, 1, 2, 3, ...
std::uint16_t zigzagEncoded(std::int16_t sample) {
    return static_cast<std::uint16_t>(sample < 0 ? -2 * sample - 1 : 2 * sample);
}

std::int16_t zigzagDecoded(std::uint16_t code) {
    return static_cast<std::int16_t>(code % 2 == 0 ? code / 2 : -code / 2 - 1);
}

void toBytes(Samples const& samples, bool zigzag, Bytes& bytes) {
    size_t const count = samples.size();
    bytes.resize(2 * count);
    for (size_t i = 0; i < count; ++i) {
        std::uint16_t const code = zigzag ? zigzagEncoded(samples[i]) : static_cast<std::uint16_t>(samples[i]);
        bytes[i] = static_cast<std::uint8_t>(code);
        bytes[count + i] = static_cast<std::uint8_t>(code >> 8);
    }
}

Samples toSamples(Bytes const& bytes, bool zigzag) {
    size_t const count = bytes.size() / 2;
    Samples samples(count);
    for (size_t i = 0; i < count; ++i) {
        auto const code = static_cast<std::uint16_t>(bytes[i] | bytes[count + i] << 8);
        samples[i] = zigzag ? zigzagDecoded(code) : static_cast<std::int16_t>(code);
    }
    return samples;
}

std::uint32_t withBytes(std::uint32_t crc, std::uint8_t const* bytes, size_t count) {
    return static_cast<std::uint32_t>(crc32(crc, bytes, static_cast<uInt>(count)));
}

// Whether the data is one frame that states this content size: a wrong size is refused before memory is allocated for
// it.
bool isFrameOf(Bytes const& data, size_t bytes) {
    return ZSTD_getFrameContentSize(data.data(), data.size()) == bytes &&
           ZSTD_findFrameCompressedSize(data.data(), data.size()) == data.size();
}

// Samples beyond the filled part are 0, whatever the picture.
std::optional<std::int16_t> uniformValue(RawTile const& tile, size_t side) {
    std::int16_t const value = tile.samples.front();
    for (size_t y = 0; y < tile.filled.height; ++y) {
        auto const row = tile.samples.begin() + static_cast<std::ptrdiff_t>(y * side);
        auto const end = row + static_cast<std::ptrdiff_t>(tile.filled.width);
        if (std::any_of(row, end, [=](std::int16_t sample) { return sample != value; })) return std::nullopt;
    }
    return value;
}

Samples uniformSamples(std::int16_t value, Size const& filled, size_t side) {
    Samples samples(side * side);
    for (size_t y = 0; y < filled.height; ++y)
        std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(y * side), filled.width, value);
    return samples;
}

} // namespace

struct TileCodec::State {
    State(StoreInfo const& storeInfo, std::int64_t fileVersion)
        : info(storeInfo),
          version(fileVersion),
          zigzag(version >= storeformat::kZigzagVersion),
          compressor(ZSTD_createCCtx()),
          decompressor(ZSTD_createDCtx()) {
        if (compressor == nullptr || decompressor == nullptr) {
            release();
            throw std::bad_alloc();
        }
        ZSTD_CCtx_setParameter(compressor, ZSTD_c_compressionLevel, kCompressionLevel);
        ZSTD_CCtx_setParameter(compressor, ZSTD_c_minMatch, kShortestMatch);
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;
    ~State() { release(); }

    void release() {
        ZSTD_freeCCtx(compressor);
        ZSTD_freeDCtx(decompressor);
    }

    size_t tileBytes() const { return 2 * info.tileSize * info.tileSize; }

    std::uint32_t keyChecksum(TileAddress const& address) const {
        return version < storeformat::kSealedVersion ? 0 : storeformat::withKey(0, storeformat::keyOf(address));
    }

    std::uint32_t checksumOfBytes(TileAddress const& address) const {
        return withBytes(keyChecksum(address), bytes.data(), bytes.size());
    }

    std::uint32_t checksumOfValue(TileAddress const& address, std::int16_t value) {
        if (version < storeformat::kSealedVersion) return checksumOfUniformBytes(address, value);
        auto const bits = static_cast<std::uint16_t>(value);
        std::array<std::uint8_t, 2> const stored{static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8)};
        return withBytes(keyChecksum(address), stored.data(), stored.size());
    }

    // Most uniform tiles of a store have the same value and lie whole in the band: the checksum over all their bytes is
    // computed once.
    std::uint32_t checksumOfUniformBytes(TileAddress const& address, std::int16_t value) {
        Size const filled = storegeometry::filledPart(info, address);
        std::array<size_t, 3> const which{static_cast<std::uint16_t>(value), filled.width, filled.height};
        auto const known = uniformChecksums.find(which);
        if (known != uniformChecksums.end()) return known->second;
        if (uniformChecksums.size() == kMaxUniformChecksums) uniformChecksums.clear();
        toBytes(uniformSamples(value, filled, info.tileSize), zigzag, bytes);
        return uniformChecksums.emplace(which, withBytes(0, bytes.data(), bytes.size())).first->second;
    }

    StoreInfo info;
    std::int64_t version;
    bool zigzag;
    ZSTD_CCtx* compressor;
    ZSTD_DCtx* decompressor;
    Bytes bytes;
    std::map<std::array<size_t, 3>, std::uint32_t> uniformChecksums;
};

TileCodec::TileCodec(StoreInfo const& info, std::int64_t version) : state_(std::make_unique<State>(info, version)) {}

TileCodec::~TileCodec() = default;

StoredTile TileCodec::encode(RawTile const& tile) {
    StoredTile stored{tile.address, uniformValue(tile, state_->info.tileSize), 0, {}};
    if (stored.value) {
        stored.crc = state_->checksumOfValue(tile.address, *stored.value);
        return stored;
    }
    Bytes& bytes = state_->bytes;
    toBytes(tile.samples, state_->zigzag, bytes);
    stored.crc = state_->checksumOfBytes(tile.address);
    stored.data.resize(ZSTD_compressBound(bytes.size()));
    size_t const size =
        ZSTD_compress2(state_->compressor, stored.data.data(), stored.data.size(), bytes.data(), bytes.size());
    if (ZSTD_isError(size) != 0) throw std::runtime_error(std::string("zstd fails: ") + ZSTD_getErrorName(size));
    stored.data.resize(size);
    stored.data.shrink_to_fit();
    return stored;
}

std::optional<std::vector<std::int16_t>> TileCodec::decode(StoredTile const& tile) {
    if (tile.value) {
        if (!isAsWritten(tile.address, *tile.value, tile.crc)) return std::nullopt;
        return uniformSamples(*tile.value, storegeometry::filledPart(state_->info, tile.address),
                              state_->info.tileSize);
    }
    Bytes& bytes = state_->bytes;
    if (!isFrameOf(tile.data, state_->tileBytes())) return std::nullopt;
    bytes.resize(state_->tileBytes());
    size_t const size =
        ZSTD_decompressDCtx(state_->decompressor, bytes.data(), bytes.size(), tile.data.data(), tile.data.size());
    if (size != bytes.size() || state_->checksumOfBytes(tile.address) != tile.crc) return std::nullopt;
    return toSamples(bytes, state_->zigzag);
}

bool TileCodec::isAsWritten(TileAddress const& address, std::int16_t value, std::uint32_t crc) {
    return state_->checksumOfValue(address, value) == crc;
}

size_t TileCodec::maxDataBytes() const {
    return ZSTD_compressBound(state_->tileBytes());
}
