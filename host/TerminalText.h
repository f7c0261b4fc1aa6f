#pragma once

#include <string>

/// A text out of a file, as it may be shown on a terminal: UTF-8 in which every byte of control characters, of characters
/// that turn the order of others around, and of what is no UTF-8, stands as \x1b. Others stay as they are, so that a text
/// that has been through it stays the same.
std::string terminalText(std::string const& text);
