#include "host/store/StoreErrors.h"

#include "host/store/TileStoreFormat.h"

#include <sqlite3.h>

using Kind = HostError::Kind;

HostError storeerrors::noStore(std::string const& path) {
    return HostError(Kind::NoStore, "'" + path + "' is no tile store; make one with velmora import");
}

HostError storeerrors::damaged(std::string const& path, std::string const& what) {
    return HostError(Kind::DamagedStore, "the tile store '" + path + "' is damaged: " + what +
                                             "; import the picture again, or restore the file from a copy");
}

HostError storeerrors::newer(std::string const& path, std::int64_t version) {
    return HostError(Kind::NewerStore, "the tile store '" + path + "' has version " + std::to_string(version) +
                                           ", this program knows up to " + std::to_string(storeformat::kSchemaVersion) +
                                           "; use a newer velmora");
}

HostError storeerrors::locked(std::string const& path) {
    return HostError(Kind::LockedStore,
                     "the tile store '" + path + "' is locked: another program writes to it; try again later");
}

HostError storeerrors::unreadable(std::string const& path, std::string const& reason) {
    return HostError(Kind::MissingFile,
                     "cannot read '" + path + "': " + reason + "; check the file, its permissions and its disk");
}

HostError storeerrors::translated(std::string const& path, sqlite::Failure const& failure) {
    switch (failure.code()) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return locked(path);
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return unreadable(path, failure.what());
    default:
        return damaged(path, failure.what());
    }
}
