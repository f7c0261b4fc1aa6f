#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

/// What the fuzz targets share. libFuzzer calls a target with one input after the other; a target reads the input as
/// choices, and ends the program where something is not as documented. That, an exception that leaves the target, and
/// whatever a sanitizer sees is a finding.
namespace fuzz {

/// An input's bytes as choices, from the front; where there are no more, they are 0.
class Input {
public:
    Input(std::uint8_t const* bytes, size_t size) : next_(bytes), end_(bytes + size) {}

    size_t left() const { return static_cast<size_t>(end_ - next_); }

    std::uint8_t byte() { return next_ == end_ ? std::uint8_t{0} : *next_++; }
    bool flag() { return byte() % 2 == 1; }

    /// As it lies in the input.
    template <class Number>
    Number number() {
        Number number{};
        std::uint8_t bytes[sizeof(Number)] = {};
        for (std::uint8_t& one : bytes)
            one = byte();
        std::memcpy(&number, bytes, sizeof number);
        return number;
    }

    /// 0 <= result < end, of as few bytes as that takes.
    size_t below(size_t end) {
        if (end <= 0x100) return byte() % end;
        return (end <= 0x10000 ? number<std::uint16_t>() : number<std::uint32_t>()) % end;
    }
    /// Both ends included.
    size_t within(size_t least, size_t most) { return least + below(most - least + 1); }

    /// At most so many bytes.
    std::vector<std::uint8_t> bytes(size_t count) {
        std::vector<std::uint8_t> taken(next_, next_ + (count < left() ? count : left()));
        next_ += taken.size();
        return taken;
    }
    std::string text(size_t count) {
        std::vector<std::uint8_t> const taken = bytes(count);
        return {taken.begin(), taken.end()};
    }

private:
    std::uint8_t const* next_;
    std::uint8_t const* end_;
};

/// A finding where it does not hold.
inline void require(bool holds, char const* what) {
    if (holds) return;
    std::fprintf(stderr, "finding: not so: %s\n", what);
    std::abort();
}

/// Whether the action comes to its end; it may refuse with the one documented type, and with nothing else.
template <class Documented, class Action>
bool succeeds(Action const& action) {
    try {
        action();
        return true;
    } catch (Documented const&) {
        return false;
    }
}

} // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size);
