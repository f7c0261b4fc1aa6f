#pragma once

#include "renderbackend/ConcurrentStagingBuffer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class Gles3RenderBackendInstance;

/// Room for one tile in the instance's upload ring. Constructed on the GL thread, written on any, given back on the GL
/// thread to synchronizeConcurrentStagingBuffer. Destroying it unwritten does not return the room: its ring buffer then
/// waits for ever.
///
/// It keeps nothing of the ring alive. Once the last instance of the backend is gone, writing does nothing, and does
/// not affect a later instance. A write that is in progress while the instance is destroyed copies into freed memory:
/// the host has to let all writes return first.
class Gles3ConcurrentStagingBuffer : public ConcurrentStagingBuffer {
public:
    /// Reserves room, in the next ring buffer if the present one is full; a tile of more than 4 MiB is not refused, but
    /// must not be requested. If all four ring buffers are taken, waits without a time limit for the writers of the
    /// oldest. Throws "could not map PBO: ringbuffer exhausted" and "could not map PBO range".
    Gles3ConcurrentStagingBuffer(size_t targetOrTileId, RenderBackend::BufferType type, std::vector<size_t> const& size,
                                 Gles3RenderBackendInstance& instance);
    Gles3ConcurrentStagingBuffer(Gles3ConcurrentStagingBuffer const&) = delete;
    Gles3ConcurrentStagingBuffer& operator=(Gles3ConcurrentStagingBuffer const&) = delete;
    ~Gles3ConcurrentStagingBuffer() override;

    /// Any thread, exactly once per buffer. Copies size[0] * size[1] * size[2] bytes; makes no GL call. Does nothing if
    /// the instance is gone.
    void write(std::vector<std::uint8_t> const& pixels, size_t offset) override;
    bool ready() const override { return true; }
    void* nativeHandle() const override { return nullptr; }
    std::shared_ptr<void> keepAlive() const override { return nullptr; }

    /// Index of the ring buffer that holds the reservation.
    size_t ringIndex() const { return ringIndex_; }

    /// Step of a ring buffer's counter of outstanding writers: added at the reservation, subtracted after the write.
    static constexpr int kUsePerWriter = 3;

private:
    void advanceRing(size_t next);

    Gles3RenderBackendInstance& instance_;
    size_t ringIndex_;
    std::uint8_t* data_ = nullptr;
    std::weak_ptr<std::vector<std::atomic<int>>>
        bufferUse_; ///< of the ring; a shared one would outlive the ring's memory
};
