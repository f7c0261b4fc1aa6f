#include "tests/gles3renderbackend/StagingRingRecordingTest.h"

namespace {

using Counters = std::vector<std::atomic<int>>;

// The counters have no public reader. An explicit instantiation may name a private member, and so hand it out.
Counters& revealed(Gles3RenderBackendInstance& instance);
template <std::shared_ptr<Counters> Gles3RenderBackendInstance::*Member>
struct Reveal {
    friend Counters& revealed(Gles3RenderBackendInstance& instance) { return *(instance.*Member); }
};
template struct Reveal<&Gles3RenderBackendInstance::bufferUse_>;

} // namespace

Counters& backendtest::countersOf(Gles3RenderBackendInstance& instance) {
    return revealed(instance);
}
