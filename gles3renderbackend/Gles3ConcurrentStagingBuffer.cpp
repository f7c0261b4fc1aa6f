#include "gles3renderbackend/Gles3ConcurrentStagingBuffer.h"

#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "renderbackend/VelmoraException.h"

#include <cstring>

namespace {

constexpr char const* kConstructor =
    "Gles3ConcurrentStagingBuffer::Gles3ConcurrentStagingBuffer(size_t targetOrTileId, std::vector<size_t> const& "
    "size, Gles3RenderBackendInstance& instance)";

size_t byteCount(std::vector<size_t> const& size) {
    return size[0] * size[1] * size[2];
}

} // namespace

Gles3ConcurrentStagingBuffer::Gles3ConcurrentStagingBuffer(size_t targetOrTileId, RenderBackend::BufferType type,
                                                           std::vector<size_t> const& size,
                                                           Gles3RenderBackendInstance& instance)
    : ConcurrentStagingBuffer(targetOrTileId, type, size),
      instance_(instance),
      ringIndex_(*instance.writeIndex_),
      bufferUse_(instance.bufferUse_) {
    auto& ring = *instance_.pixelBuffers_;
    size_t const bytes = byteCount(size);
    bool const open = ring[ringIndex_]->mapped() != nullptr;
    if (open && *instance_.fillOffset_ + bytes > ring[ringIndex_]->size()) advanceRing((ringIndex_ + 1) % ring.size());
    auto* const mapped = static_cast<std::uint8_t*>(ring[ringIndex_]->mapped());
    if (mapped == nullptr) throw VelmoraException("could not map PBO range", kConstructor);
    size_t const offset = *instance_.fillOffset_;
    data_ = mapped + offset;

    (*instance_.pendingUploads_)[ringIndex_].push_back(
        {{instance_.id(), targetOrTileId}, {size[0], size[1], size[2], offset}});
    *instance_.fillOffset_ += bytes;
    (*instance_.bufferUse_)[ringIndex_].fetch_add(kUsePerWriter);
}

Gles3ConcurrentStagingBuffer::~Gles3ConcurrentStagingBuffer() = default;

// Closes the ring buffer being filled and opens the next one, which must have been uploaded first.
void Gles3ConcurrentStagingBuffer::advanceRing(size_t next) {
    if (next == *instance_.readIndex_) {
        std::atomic<int> const& writers = (*instance_.bufferUse_)[next];
        while (writers.load() > 0) {} // deliberate spin: the writers are on other cores, and close to done
        instance_.syncTexturesFromPboRingBuffer();
        if (next == *instance_.readIndex_)
            throw VelmoraException("could not map PBO: ringbuffer exhausted", kConstructor);
    }
    ringIndex_ = next;
    instance_.openRingBuffer(next);
}

void Gles3ConcurrentStagingBuffer::write(std::vector<std::uint8_t> const& pixels, size_t offset) {
    // Held until the counter is lowered. The mapped memory goes with the ring: without counters there is no memory
    // either.
    std::shared_ptr<std::vector<std::atomic<int>>> const bufferUse = bufferUse_.lock();
    if (!bufferUse) return;
    size_t const bytes = byteCount(size());
    bool const complete = offset <= pixels.size() && bytes <= pixels.size() - offset;
    if (complete)
        std::memcpy(data_, pixels.data() + offset, bytes);
    else
        std::memset(data_, 0, bytes);
    // Sequentially consistent: a GL thread that reads the lowered counter also sees the copy.
    (*bufferUse)[ringIndex_].fetch_sub(kUsePerWriter);
}
