#pragma once

#include "host/image/PictureMetadata.h"
#include "host/output/TemporaryOutput.h"
#include "host/store/Sqlite.h"
#include "host/store/TileCodec.h"
#include "host/store/TileStoreFormat.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Writes the file of a tile store. The file takes its name in finish() only; a writer that is destroyed before that
/// leaves no file behind. One thread at a time. Every operation throws HostError (unwritable output); the constructor
/// also throws what requireUsable throws, and HostError if no reader would open a store with such a description or
/// under such a name.
class TileStoreWriter {
public:
    TileStoreWriter(OutputFile const& file, StoreInfo const& info, std::vector<MetadataItem> const& metadata = {});

    /// Writes each tile once, in any order.
    void write(StoredTile const& tile);

    void finish();

private:
    template <class Action>
    void translated(Action const& action) const;
    void requireReadable(OutputFile const& file) const;
    void create();
    void write(std::vector<MetadataItem> const& metadata);
    void describe();

    TemporaryOutput output_;
    StoreInfo info_;
    storeformat::MetadataSeal metadata_;
    std::optional<sqlite::Database> database_;
    std::optional<sqlite::Statement> insert_;
};
