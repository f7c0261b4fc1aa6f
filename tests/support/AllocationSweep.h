#pragma once

#include "tests/support/FailingAllocations.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iostream>
#include <new>
#include <set>
#include <string>

/// Every `new` of a scenario fails, one after the other.
namespace allocationsweep {

using failing_allocations::Threads;

struct Scenario {
    std::string name;
    std::function<void()> work;  ///< what is short of memory
    std::function<void()> check; ///< expects what must hold afterwards: of files, and of the work done again
    Threads threads = Threads::This;
    size_t samples = 80;       ///< allocations that fail without VELMORA_LONG: about so many, all of the first ones
    bool countsThreads = true; ///< false where a library keeps threads of its own
};

struct Tally {
    size_t allocations = 0; ///< of the work without a failure
    size_t faults = 0;      ///< of them failed
    size_t thrown = 0;      ///< came out as std::bad_alloc; the others were dealt with
};

/// The names of this process's threads.
inline std::set<std::string> threads() {
    std::set<std::string> names;
    for (auto const& task : std::filesystem::directory_iterator("/proc/self/task"))
        names.insert(task.path().filename().string());
    return names;
}

/// Whether all threads were there before. Some may be gone: idle ones of GLib, which an earlier test has left, end
/// after a while.
inline bool noneIsNew(std::set<std::string> const& before) {
    auto const now = threads();
    return std::includes(before.begin(), before.end(), now.begin(), now.end());
}

/// Whether std::bad_alloc comes out of the work, or createTarget's plain exception with its text. Any other exception
/// fails the test: no memory is no damaged file.
inline bool throws(Scenario const& scenario, size_t n) {
    failing_allocations::failAt(n, scenario.threads);
    try {
        scenario.work();
    } catch (std::bad_alloc const&) {
        failing_allocations::stop();
        return true;
    } catch (std::exception const& error) {
        failing_allocations::stop();
        EXPECT_NE(std::string(error.what()).find("std::bad_alloc"), std::string::npos) << error.what();
        return true;
    }
    return false;
}

/// Until no allocation is left to fail; nothing that the work throws is left then. The threads that it starts have
/// ended each time.
inline Tally sweep(Scenario const& scenario) {
    scenario.work();
    scenario.check();
    auto const before = threads();
    Tally tally;
    for (size_t n = 1; !::testing::Test::HasFailure(); n += isLongRun() ? 1 : n / scenario.samples + 1) {
        SCOPED_TRACE(scenario.name + ", allocation " + std::to_string(n));
        bool const thrown = throws(scenario, n);
        size_t const count = failing_allocations::stop();
        EXPECT_TRUE(!scenario.countsThreads || noneIsNew(before)) << "a thread goes on";
        EXPECT_NO_THROW(scenario.check());
        if (count < n) {
            EXPECT_FALSE(thrown) << "without a failing allocation";
            tally.allocations = count;
            break;
        }
        ++tally.faults;
        if (thrown) ++tally.thrown;
    }
    std::cout << scenario.name << ": " << tally.allocations << " allocations, " << tally.faults << " faults, "
              << tally.thrown << " thrown\n";
    return tally;
}

} // namespace allocationsweep
