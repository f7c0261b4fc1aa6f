// An input is a store's shape, a tile's place, and its samples, or what the store has in their stead: a value, a frame
// of zstd with codes of any kind, or any bytes.
#include "host/store/TileCodec.h"
#include "tests/fuzz/Fuzz.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>

namespace {

using fuzz::require;
using Samples = std::vector<std::int16_t>;

struct Place {
    StoreInfo info;
    std::int64_t version;
    TileAddress address;
};

Place placeOf(fuzz::Input& input) {
    Place place;
    place.info.width = input.within(1, 200);
    place.info.height = input.within(1, 200);
    place.info.bands = input.within(1, 4);
    place.info.bits = input.flag() ? 16 : 8;
    place.info.residualBits = place.info.bits == 8 ? 0 : 3;
    place.info.levels = input.within(1, 3);
    place.info.tileSize = 2 * input.within(8, 20);
    place.version = static_cast<std::int64_t>(input.within(1, 3));
    place.address.level = input.below(place.info.levels + 1);
    place.address.band = static_cast<Band>(input.below(5));
    place.address.plane = input.below(place.info.bands);
    Size const tiles = storegeometry::tileCount(place.info, place.address.level);
    place.address.column = input.below(tiles.width);
    place.address.row = input.below(tiles.height);
    return place;
}

// The samples within the band; beyond it there is 0.
RawTile rawTile(Place const& place, fuzz::Input& input) {
    size_t const side = place.info.tileSize;
    RawTile tile{place.address, storegeometry::filledPart(place.info, place.address), Samples(side * side)};
    auto const first = input.number<std::int16_t>();
    for (size_t i = 0; i < tile.samples.size(); ++i) {
        if (i % side >= tile.filled.width || i / side >= tile.filled.height) continue;
        tile.samples[i] = input.left() > 0 ? input.number<std::int16_t>() : first;
    }
    return tile;
}

void requireSame(TileCodec& codec, RawTile const& tile) {
    StoredTile const stored = codec.encode(tile);
    require(stored.data.size() <= codec.maxDataBytes(), "data is not longer than the codec says");
    require(stored.value.has_value() == stored.data.empty(), "a tile has a value or data");
    auto const back = codec.decode(stored);
    require(back && *back == tile.samples, "a tile comes back as it was");
}

std::uint32_t sealOf(Place const& place, std::vector<std::uint8_t> const& bytes) {
    std::uint32_t const start =
        place.version < storeformat::kSealedVersion ? 0 : storeformat::withKey(0, storeformat::keyOf(place.address));
    return static_cast<std::uint32_t>(crc32(start, bytes.data(), static_cast<uInt>(bytes.size())));
}

// Bytes of the right number under a checksum that fits: codes that no encoder need have written.
StoredTile sealedTile(Place const& place, fuzz::Input& input) {
    std::vector<std::uint8_t> codes = input.bytes(2 * place.info.tileSize * place.info.tileSize);
    codes.resize(2 * place.info.tileSize * place.info.tileSize);
    StoredTile tile{place.address, std::nullopt, sealOf(place, codes), {}};
    tile.data.resize(ZSTD_compressBound(codes.size()));
    tile.data.resize(ZSTD_compress(tile.data.data(), tile.data.size(), codes.data(), codes.size(), 1));
    return tile;
}

StoredTile anyTile(Place const& place, fuzz::Input& input) {
    StoredTile tile{place.address, std::nullopt, input.number<std::uint32_t>(), {}};
    if (input.flag())
        tile.value = input.number<std::int16_t>();
    else
        tile.data = input.bytes(input.left());
    return tile;
}

void requireSize(Place const& place, std::optional<Samples> const& samples) {
    require(!samples || samples->size() == place.info.tileSize * place.info.tileSize, "a tile has all its samples");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    size_t const kind = input.below(3);
    Place const place = placeOf(input);
    if (!storegeometry::contains(place.info, place.address)) return -1;
    TileCodec codec(place.info, place.version);
    if (kind == 0) {
        requireSame(codec, rawTile(place, input));
    } else if (kind == 1) {
        auto const samples = codec.decode(sealedTile(place, input));
        require(samples.has_value(), "codes under their checksum are a tile");
        requireSize(place, samples);
    } else {
        requireSize(place, codec.decode(anyTile(place, input)));
    }
    return 0;
}
