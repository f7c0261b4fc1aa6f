#pragma once

#include "gles3renderbackend/Gles3ConcurrentStagingBuffer.h"
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/Watchdog.h"

#include <memory>

namespace backendtest {

using Staged = std::unique_ptr<ConcurrentStagingBuffer>;

inline size_t ringIndexOf(Staged const& buffer) {
    return dynamic_cast<Gles3ConcurrentStagingBuffer const&>(*buffer).ringIndex();
}

} // namespace backendtest
