#pragma once

#include "host/Progress.h"
#include "host/store/StoreInfo.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class PixelSource;

struct ImportOptions {
    size_t tileSize = 256;            ///< samples per side, even, StoreInfo::kMinTileSize to kMaxTileSize
    std::optional<size_t> levels;     ///< 1 to StoreInfo::kMaxLevels; empty: storegeometry::autoLevels
    size_t jobs = 0;                  ///< threads that compress; 0: one per core
    bool replace = false;             ///< replace an existing file of the store's name
    std::string sourceName;           ///< stored in the description, as plainText
    std::vector<std::string> sources; ///< the picture's files, as OutputFile::sources
    /// Receives one line per part of the picture that is left out of the store.
    std::function<void(std::string const& line)> note;
};

/// Opens the picture; called again if the picture has to be read a second time.
using PictureOpener = std::function<std::unique_ptr<PixelSource>()>;
/// Makes a tile store of a picture and returns its description. The picture is read once, from the top, in strips:
/// memory grows with its width, not with its height.
///
/// The lowest 3 bits of 16-bit samples stay outside the wavelet, so that its coefficients fit in 16 bits. If one still
/// does not fit, the import starts over with 5 bits.
///
/// A resolution that no store can hold is left out.
///
/// Throws what requireUsable throws; HostError (unwritable output); what the picture throws; what progress throws. A
/// failed import leaves no file, under the store's name or any other.
StoreInfo importStore(PictureOpener const& open, std::string const& path, ImportOptions const& options,
                      Progress const& progress);
