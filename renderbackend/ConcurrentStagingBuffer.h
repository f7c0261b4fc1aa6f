#pragma once

#include "renderbackend/Export.h"
#include "renderbackend/RenderBackend.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Room for one tile's pixels in memory that the GPU reads: made and given back on the GL thread, filled on any thread.
class VELMORA_EXPORT ConcurrentStagingBuffer {
public:
    /// For hosts' own classes: id 0, a tile, no size.
    ConcurrentStagingBuffer();
    ConcurrentStagingBuffer(size_t targetOrTileId, RenderBackend::BufferType type, std::vector<size_t> size);
    ConcurrentStagingBuffer(ConcurrentStagingBuffer const&) = delete;
    ConcurrentStagingBuffer& operator=(ConcurrentStagingBuffer const&) = delete;
    virtual ~ConcurrentStagingBuffer();

    /// Any thread, exactly once per buffer, makes no GL call. Copies size()[0] * size()[1] * size()[2] bytes from
    /// pixels, starting at byte `offset`; a vector that ends before them gives a tile of zeros.
    virtual void write(std::vector<std::uint8_t> const& pixels, size_t offset) = 0;

    /// Whether write() may be called now.
    virtual bool ready() const = 0;
    /// A native handle of the backend, or null.
    virtual void* nativeHandle() const = 0;
    /// An object that a writer holds while it writes, or null.
    virtual std::shared_ptr<void> keepAlive() const = 0;

    virtual size_t targetOrTileId() const;

    RenderBackend::BufferType type() const { return type_; }
    /// {width in texels, height, bytes per texel} of the texture that the buffer fills.
    std::vector<size_t> const& size() const { return size_; }

private:
    size_t targetOrTileId_;
    RenderBackend::BufferType type_;
    std::vector<size_t> size_;
};
