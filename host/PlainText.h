#pragma once

#include <cstddef>
#include <string>

// Texts out of files, which may hold anything, made fit to be shown or kept. What is not shown as it is: bytes that are
// no UTF-8 (RFC 3629), control characters, and marks that end lines or turn the direction of writing. Texts that hold
// none of these stay as they are.

/// For a terminal: bytes that are not shown stand as \x1b. A text that has been through it stays the same.
std::string terminalText(std::string const& text);

/// For a line in a window: what is not shown becomes U+FFFD each; what is longer than `most` characters ends in "...".
std::string printableText(std::string const& text, size_t most = 120);

/// To be kept where texts are UTF-8: as above, and at most maxBytes, cut between characters.
std::string plainText(std::string const& text, size_t maxBytes);

/// A number of things: "1 level", "2 levels". The noun's plural is made with an s.
std::string counted(size_t number, std::string const& noun);
