#include "host/MemoryBudget.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

std::uint64_t memorybudget::availableBytes() {
    auto const machine =
        static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    return limit.rlim_cur == RLIM_INFINITY ? machine : std::min<std::uint64_t>(machine, limit.rlim_cur);
}

std::string memorybudget::toText(std::uint64_t bytes) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f GB", static_cast<double>(bytes) / 1e9);
    return text.data();
}
