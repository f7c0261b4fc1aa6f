#pragma once

/// Marks what a shared library of this project shows to its host; everything else is hidden.
#define VELMORA_EXPORT __attribute__((visibility("default")))
/// Takes one member of an exported class out of the library's surface again.
#define VELMORA_LOCAL __attribute__((visibility("hidden")))
