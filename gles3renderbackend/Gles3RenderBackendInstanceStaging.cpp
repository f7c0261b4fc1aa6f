#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/Caches.h"
#include "gles3renderbackend/ExpectedState.h"
#include "gles3renderbackend/Gles3ConcurrentStagingBuffer.h"
#include "gles3renderbackend/UploadRing.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "renderbackend/VelmoraException.h"

namespace {

constexpr char const* kSynchronize =
    "bool Gles3RenderBackendInstance::synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& "
    "buffer)";

// The records of a ring buffer that are being uploaded into textures. Finished ones leave the list, also if the next
// one throws: so nothing is uploaded twice, and the next call continues there.
template <class Records>
class PendingRecords {
public:
    explicit PendingRecords(Records& records) : records_(records) {}
    PendingRecords(PendingRecords const&) = delete;
    PendingRecords& operator=(PendingRecords const&) = delete;
    ~PendingRecords() { records_.erase(records_.begin(), records_.begin() + static_cast<std::ptrdiff_t>(done_)); }

    /// Null after the last one.
    auto const* next() const { return done_ < records_.size() ? &records_[done_] : nullptr; }
    void done() { ++done_; }

private:
    Records& records_;
    size_t done_ = 0;
};

} // namespace

std::unique_ptr<ConcurrentStagingBuffer> Gles3RenderBackendInstance::concurrentStagingBuffer(
    size_t targetOrTileId, BufferType type, std::vector<size_t> const& size) {
    expectedState::forStaging();
    // Four components are refused here, unlike for setTile.
    std::vector<size_t> const textureSize = textureSizeOfTile(size, false);
    syncTexturesFromPboRingBuffer();
    return std::make_unique<Gles3ConcurrentStagingBuffer>(targetOrTileId, type, textureSize, *this);
}

void Gles3RenderBackendInstance::openRingBuffer(size_t index) {
    *writeIndex_ = index;
    *fillOffset_ = 0;
    uploadRing::map(*(*pixelBuffers_)[index]);
}

// Uploads the closed ring buffers whose writers are done, oldest first, tiles in the order of their reservation.
void Gles3RenderBackendInstance::syncTexturesFromPboRingBuffer() {
    while (*readIndex_ != *writeIndex_ && (*bufferUse_)[*readIndex_].load() == 0) {
        Gles3Pbo& buffer = *(*pixelBuffers_)[*readIndex_];
        // An upload that ran out of memory has unmapped it already.
        if (buffer.mapped() != nullptr) uploadRing::unmap(buffer);
        PendingRecords pending((*pendingUploads_)[*readIndex_]);
        for (auto const* record = pending.next(); record != nullptr; record = pending.next()) {
            auto const& [key, reserved] = *record;
            textureCache_->get(key).setPixels(reserved, buffer, reserved[Gles3RenderBackend::kOffsetInBuffer]);
            // Locked until the host unlocks it: a tile must not go before it was drawn. Its cost stays 0 bytes.
            textureCache_->lock(key);
            pending.done();
        }
        *readIndex_ = (*readIndex_ + 1) % pixelBuffers_->size();
    }
}

bool Gles3RenderBackendInstance::synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer) {
    expectedState::forStaging();
    std::unique_ptr<ConcurrentStagingBuffer> const owned = std::move(buffer);
    auto const* const staged = dynamic_cast<Gles3ConcurrentStagingBuffer const*>(owned.get());
    if (staged == nullptr) throw VelmoraException("could cast ConcurrentStagingBuffer to this backend", kSynchronize);
    if (textureCache_->count({id(), staged->targetOrTileId()}) != 0) return true;
    syncTexturesFromPboRingBuffer();
    if (staged->ringIndex() != *writeIndex_) return true; // closed already: it is, or will be, uploaded

    std::atomic<int> const& writers = (*bufferUse_)[*writeIndex_];
    while (writers.load() > 0) {} // deliberate spin, see the constructor of the staging buffer
    size_t const next = (*writeIndex_ + 1) % pixelBuffers_->size();
    while (next == *readIndex_) {
        // Below 0 it never becomes the 0 that uploading asks for.
        if ((*bufferUse_)[next].load() < 0)
            throw VelmoraException("could not map PBO: ringbuffer exhausted", kSynchronize);
        syncTexturesFromPboRingBuffer();
    }
    openRingBuffer(next);
    syncTexturesFromPboRingBuffer();
    return true;
}
