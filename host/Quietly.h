#pragma once

/// Does what a destructor has to do to give something back, and drops what it throws: nobody is there to be told, and
/// an exception that leaves a destructor ends the program.
template <class Action>
void quietly(Action const& action) noexcept {
    try {
        action();
    } catch (...) {
        static_cast<void>(0); // see above
    }
}
