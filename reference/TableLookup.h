#pragma once

#include "reference/Layouts.h"
#include "reference/ToneTables.h"

namespace reference {

/// 8-bit RGBA through a table of a power of two up to 256 entries, read at the normalised value byte / 255: the byte
/// itself with 256 entries. Alpha passes through.
Texels tableLookup8(Texels const& image, ByteTable const& table);

/// Three-channel 16-bit to RGBA: entry clamp(value, 0, entries - 1) for each channel, alpha 255. Values are signed, so
/// a 16-bit table is read up to entry 32767 and codes from 32768 on read entry 0.
Texels tableLookup16(Texels const& image, ByteTable const& table);

} // namespace reference
