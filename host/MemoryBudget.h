#pragma once

#include <cstdint>
#include <string>

/// What a picture may take of the machine's memory while it is read or imported: headers can say any size, and a program that
/// tries to hold it takes the machine down with it.
namespace memorybudget {

constexpr std::uint64_t kPictureBytes = 4'000'000'000;

/// "12.3 GB"
std::string toText(std::uint64_t bytes);

} // namespace memorybudget
