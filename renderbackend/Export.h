#pragma once

/// Marks what a shared library of this project shows to its host; everything else is hidden.
#define VELMORA_EXPORT __attribute__((visibility("default")))
