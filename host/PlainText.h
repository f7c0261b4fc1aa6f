#pragma once

#include <cstddef>
#include <string>

/// A text as it can be printed on a line and kept where texts are UTF-8: control characters, and bytes that are no UTF-8,
/// become U+FFFD. At most maxBytes, cut between characters. File names may hold any byte but 0 and '/'.
std::string plainText(std::string const& text, std::size_t maxBytes);
