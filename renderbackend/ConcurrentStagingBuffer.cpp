#include "renderbackend/ConcurrentStagingBuffer.h"

#include <utility>

ConcurrentStagingBuffer::ConcurrentStagingBuffer() : ConcurrentStagingBuffer(0, RenderBackend::TILE, {}) {}

ConcurrentStagingBuffer::ConcurrentStagingBuffer(size_t targetOrTileId, RenderBackend::BufferType type,
                                                 std::vector<size_t> size)
    : targetOrTileId_(targetOrTileId), type_(type), size_(std::move(size)) {}

ConcurrentStagingBuffer::~ConcurrentStagingBuffer() = default;

size_t ConcurrentStagingBuffer::targetOrTileId() const {
    return targetOrTileId_;
}
