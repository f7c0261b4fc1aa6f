#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Makes texts from files, which may hold anything, fit for display or storage. Replaced are: bytes that are no UTF-8
// (RFC 3629), control characters, and marks that end lines or change the direction of writing. Texts without these stay
// unchanged.

/// For a terminal: replaced bytes are written like \x1b. The function is idempotent.
std::string terminalText(std::string const& text);

/// For a line in a window: each is replaced by U+FFFD; a text of more than `most` characters ends in "...".
std::string printableText(std::string const& text, size_t most = 120);

/// For storage as UTF-8: each is replaced by U+FFFD, and at most maxBytes remain, cut between characters.
std::string plainText(std::string const& text, size_t maxBytes);

/// A size in bytes: "512 bytes", "1.5 kB", "37 MB", "2.1 GB", in steps of 1000.
std::string bytesText(std::uint64_t bytes);

/// A number with its noun: "1 level", "2 levels". The plural is formed with an s.
std::string counted(size_t number, std::string const& noun);
