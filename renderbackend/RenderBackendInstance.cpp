#include "renderbackend/RenderBackendInstance.h"

RenderBackendInstance::RenderBackendInstance(size_t id, RenderContext const& context) : id_(id), context_(context) {}

RenderBackendInstance::~RenderBackendInstance() = default;

std::unique_ptr<ConcurrentStagingBuffer> RenderBackendInstance::concurrentStagingBuffer(
    size_t /*targetOrTileId*/, BufferType /*type*/, std::vector<size_t> const& /*size*/) {
    return nullptr;
}

bool RenderBackendInstance::synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer) {
    std::unique_ptr<ConcurrentStagingBuffer> const owned = std::move(buffer); // empties the argument
    return true;
}
