#pragma once

#include "renderbackend/Filter.h"

#include <string>

namespace conformance {

/// A table filter at any input depth, also at one that its canonical description does not have.
inline Filter tableFilter(std::string const& name, size_t bitDepth) {
    bool const deep = bitDepth > 8;
    return {name,
            0,
            0,
            0,
            0,
            0,
            1,
            0,
            1,
            1,
            1,
            1,
            1,
            1,
            deep ? size_t{48} : size_t{32},
            32,
            deep ? size_t{3} : size_t{4},
            4,
            1,
            1,
            1,
            1,
            {deep},
            false,
            bitDepth,
            RenderBackend::NEAREST};
}

} // namespace conformance
