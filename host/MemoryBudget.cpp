#include "host/MemoryBudget.h"

#include <array>
#include <cstdio>

std::string memorybudget::toText(std::uint64_t bytes) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f GB", static_cast<double>(bytes) / 1e9);
    return text.data();
}
