#pragma once

/// Runs a destructor's clean-up and drops its exceptions: no caller could catch them, and an exception that leaves a
/// destructor ends the program.
template <class Action>
void quietly(Action const& action) noexcept {
    try {
        action();
    } catch (...) {
        static_cast<void>(0); // see above
    }
}
