#pragma once

#include <cstddef>
#include <string>

/// Text that came out of a file, to be shown in a line: bytes that are no UTF-8, control characters, and marks that turn
/// lines or the direction of writing become U+FFFD each; what is longer than `most` characters ends in "...".
std::string printableText(std::string const& text, std::size_t most = 120);
