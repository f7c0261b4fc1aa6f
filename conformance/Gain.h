#pragma once

#include <cstdint>

namespace conformance {

/// The strength of an unsharp mask, as in its records.
struct Gain {
    double gain;
    std::int32_t shiftBits = 0;
};

/// Record: FilterSharpness8Params or FilterSharpness16Params.
template <class Record>
Record recordOf(Gain const& gain) {
    Record record;
    record.gain = gain.gain;
    record.shiftBits = gain.shiftBits;
    return record;
}

} // namespace conformance
