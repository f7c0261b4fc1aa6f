#pragma once

#include "host/HostError.h"
#include "host/store/Sqlite.h"

#include <cstdint>
#include <string>

/// The errors about a file that cannot be read as a tile store.
namespace storeerrors {

HostError noStore(std::string const& path);
HostError damaged(std::string const& path, std::string const& what);
HostError newer(std::string const& path, std::int64_t version);
HostError locked(std::string const& path);
/// The system does not give access to the file or its bytes; reason: the system's text.
HostError unreadable(std::string const& path, std::string const& reason);

/// Translates a failure of SQLite on a file that has a store's header.
HostError translated(std::string const& path, sqlite::Failure const& failure);

} // namespace storeerrors
