#pragma once

#include <cstdint>
#include <string>

/// Limits on the memory that a picture may take: headers can state any size, and a program that tries to allocate it
/// takes the machine down with it.
namespace memorybudget {

/// Limit while it is read or imported.
constexpr std::uint64_t kPictureBytes = 4'000'000'000;

/// The machine's memory, or the process's limit if that is less.
std::uint64_t availableBytes();

/// "12.3 GB"
std::string toText(std::uint64_t bytes);

} // namespace memorybudget
