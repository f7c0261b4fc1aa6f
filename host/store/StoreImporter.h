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
    std::optional<size_t> levels;     ///< 1 to StoreInfo::kMaxLevels; without: storegeometry::autoLevels
    size_t jobs = 0;                  ///< threads that compress; 0: as many as the machine has cores
    bool replace = false;             ///< a file that has the store's name already
    std::string sourceName;           ///< goes into the store, as plainText
    std::vector<std::string> sources; ///< the picture's files, as OutputFile::sources
    /// Is told, in a line, what of the picture does not go into the store.
    std::function<void(std::string const& line)> note;
};

/// Opens the picture; called again where the picture has to be read a second time.
using PictureOpener = std::function<std::unique_ptr<PixelSource>()>;
/// Makes a tile store of a picture and returns what it holds. The picture is read once, from the top, in strips: memory
/// grows with its width, not with its height.
///
/// Samples of 16 bits leave their lowest 3 bits outside the wavelet, so that its coefficients fit in 16 bits. Where one
/// does not all the same, the import starts over with 5.
///
/// A resolution that no store can hold is left out.
///
/// Throws what requireUsable throws; HostError (unwritable output); what the picture throws; what progress throws. A
/// failed import leaves nothing, under the store's name neither.
StoreInfo importStore(PictureOpener const& open, std::string const& path, ImportOptions const& options,
                      Progress const& progress);
