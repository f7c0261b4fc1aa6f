#pragma once

/// Marks symbols that a shared library of this project exports; everything else is hidden.
#define VELMORA_EXPORT __attribute__((visibility("default")))
