#pragma once

#include "host/filter/EnhancementChain.h"
#include "host/view/LevelTiles.h"
#include "host/view/View.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

/// The samples of a level with all the bits that they have: codes of 16 bits, or of 8.
///
///     rebuilt tile    q, 8 to 13 bits    --+
///                                          +-->  q << residualBits | residual
///     residual bits   of level 0 alone   --+
///
/// Coarser levels have no residual bits: 0 in their place keeps their codes on the picture's own scale. Where the
/// wavelet leaves that scale its ends are taken. No filter adds two pictures, so this goes through the host. GL thread
/// only. Throws VelmoraException.
class LevelSamples {
public:
    LevelSamples(FilterRunner& targets, LevelTiles& tiles, StoreInfo const& info);

    /// Whether samples of the level have residual bits.
    bool hasResidualBits(size_t level) const { return level == 0 && info_.residualBits > 0; }
    /// Keeps the residual bits of a tile of level 0.
    void keep(LoadedTile&& loaded);
    bool hasResiduals(LevelTile const& tile) const { return residuals_.count(tile) != 0; }
    /// Drops the residual bits of all other tiles.
    void keepOnly(std::set<LevelTile> const& tiles);

    /// Interleaved, the first `bands` of the picture. The tiles that the region meets are rebuilt, and at level 0 their
    /// residual bits are there.
    std::vector<std::uint16_t> codes(size_t level, Region const& region, size_t bands);
    /// Of all bands, each pixel of a view that lies within the picture: the nearest sample.
    std::vector<std::uint16_t> codes(View const& view);
    /// Red, green and blue as chains of enhancements take them: the upper 15 bits.
    EnhancementChain::Planes planes(size_t level, Region const& region);

private:
    // Where the codes go.
    struct Codes {
        Region region;
        size_t bands;
        std::vector<std::uint16_t> codes;

        std::uint16_t& at(size_t x, size_t y, size_t band) {
            return codes[((y - region.y) * region.width + x - region.x) * bands + band];
        }
    };

    void putColours(Codes& to, LevelTile const& tile, Region const& part);
    void putAlpha(Codes& to, LevelTile const& tile, Region const& part);
    void addResiduals(Codes& to, LevelTile const& tile, Region const& part) const;
    std::uint16_t codeOf(std::int16_t sample) const;

    FilterRunner& targets_;
    LevelTiles& tiles_;
    StoreInfo info_;
    std::map<LevelTile, std::vector<BandPart>> residuals_; // of level 0, a part for each band
};
