#pragma once

#include <cstdint>
#include <string>

/// What a picture may take of the machine's memory: headers can say any size, and a program that tries to hold it takes
/// the machine down with it.
namespace memorybudget {

/// While it is read or imported.
constexpr std::uint64_t kPictureBytes = 4'000'000'000;

/// The machine's memory, or what the process may take of it where that is less.
std::uint64_t availableBytes();

/// "12.3 GB"
std::string toText(std::uint64_t bytes);

} // namespace memorybudget
