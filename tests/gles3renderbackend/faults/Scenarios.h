#pragma once

#include "tests/gles3renderbackend/faults/Stage.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace faults {

/// What a host does with the backend, from the first call to the last: nothing of it is left on the stage, whatever
/// fails on the way. Its bytes are what it read: the same each time that nothing fails.
struct Scenario {
    std::string name;
    std::function<Bytes(Stage&)> play;
    /// Keeps a filter, of which a silent failure of GL may spoil what it keeps.
    bool keepsFilter = false;
    bool isLarge = false; ///< takes long: fewer of its calls fail without VELMORA_LONG
};

inline void PrintTo(Scenario const& scenario, std::ostream* stream) {
    *stream << scenario.name;
}

/// Together they call every exported member and run every built-in filter.
std::vector<Scenario> scenarios();

} // namespace faults
