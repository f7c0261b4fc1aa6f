#pragma once

#include "host/HostError.h"
#include "host/store/Sqlite.h"

#include <cstdint>
#include <string>

/// What is told about a file that cannot be read as a tile store.
namespace storeerrors {

HostError noStore(std::string const& path);
HostError damaged(std::string const& path, std::string const& what);
HostError newer(std::string const& path, std::int64_t version);
HostError locked(std::string const& path);
/// The system does not give the file or its bytes; reason: in its words.
HostError unreadable(std::string const& path, std::string const& reason);

/// What a failure of SQLite means for a file whose head is that of a store.
HostError translated(std::string const& path, sqlite::Failure const& failure);

} // namespace storeerrors
