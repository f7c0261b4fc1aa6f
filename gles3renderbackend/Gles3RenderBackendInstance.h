#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "renderbackend/Export.h"
#include "renderbackend/RenderBackendInstance.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

class Gles3ConcurrentStagingBuffer;

/// The working instance of the OpenGL ES 3 backend; made by Gles3RenderBackend::createInstance. The interface,
/// RenderBackendInstance, describes the operations for hosts; the comments here describe this backend's own behaviour.
///
/// Everything runs on the GL thread. No GL state is cached or restored, because the host shares the context:
/// docs/GL_STATE.md says per operation what is expected, set and left. docs/ERRORS.md lists every failure. A cached
/// tile may be evicted at the next setTile; a locked one never is.
class VELMORA_EXPORT Gles3RenderBackendInstance : public RenderBackendInstance {
public:
    Gles3RenderBackendInstance(size_t id, RenderContext const& context, Gles3RenderBackend& backend);
    Gles3RenderBackendInstance(Gles3RenderBackendInstance&& other) noexcept;
    Gles3RenderBackendInstance(Gles3RenderBackendInstance const&) = delete;
    Gles3RenderBackendInstance& operator=(Gles3RenderBackendInstance const&) = delete;
    ~Gles3RenderBackendInstance() override;

    std::type_info const& pixelTypeid() const override;
    size_t pixelSize() const override;
    size_t numComponents() const override;

    /// Throws "Target does not exist", "Invalid color", and "Cannot clear buffer" for a packed target and a colour.
    void clear(size_t target, std::vector<size_t> const& color) override;
    /// Also throws "Invalid rectangle". All failures carry clear's location.
    void clearRect(size_t target, std::vector<size_t> const& color, std::vector<size_t> const& rect) override;

    /// Throws "Target does not exist", "Instance for Filter <name> not available", "fewer sources than the filter has
    /// inputs" for a filter with more than one, and "No integer physical coordinate for logical coordinate"; nothing is
    /// drawn then. Leaves the framebuffer, the program, the viewport, the quad's buffers and the last tile's texture
    /// bound. Drawn tiles become the most recently used ones.
    void drawTiles(size_t target, Filter const& tileShader, std::vector<size_t> const& range,
                   std::vector<size_t> const& canvasRange, std::vector<size_t> const& tileSize,
                   std::vector<std::vector<size_t>> const& blockCoords, std::vector<size_t> const& blocks,
                   std::vector<size_t> const& offsets) override;

    /// Throws "Invalid rectangle" and "buffer too small provided N required : M".
    size_t getPixels(void* buffer, size_t bufferSize, size_t target, std::vector<size_t> const& rect) const override;
    std::vector<unsigned char> getPixels(size_t target, std::vector<size_t> const& rect) override;
    size_t getPixelsBufferSize(size_t target, std::vector<size_t> const& rect) const override;

    /// Throws "Can't set tile pixels with this size", "pixel vector is shorter than its size says", and
    /// VelmoraRangeException beyond GL_MAX_TEXTURE_SIZE, after which the tile must be erased before it is set again. A
    /// new tile then exists, empty, at a cost of 0 bytes. A tile costs width * height * components bytes of the budget,
    /// as given: a 16-bit tile one byte per pixel.
    void setTile(size_t tile, std::vector<unsigned char> const& pixels, std::vector<size_t> const& size,
                 size_t offset) override;
    bool tileSet(size_t tile) const override;
    void lockTile(size_t tile) override;
    void unlockTile(size_t tile) override;

    /// Throws "Requested DataEnvelopes doesn't exist".
    std::shared_ptr<DataEnvelopes const> dataEnvelopes(std::vector<unsigned char> const& id) const override;
    /// Throws "a cell needs two coordinates: column and row". After any exception a stored set stays, and an unknown id
    /// stays unknown.
    void dataEnvelopes(
        std::vector<unsigned char> const& id,
        std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>> const& data)
        override;
    bool dataEnvelopesSet(std::vector<unsigned char> const& id) const override;
    void lockDataEnvelopes(std::vector<unsigned char> const& id) override;
    void unlockDataEnvelopes(std::vector<unsigned char> const& id) override;

    /// Throws "undefined pixel format", "no integer number of physical pixels for each logical pixel" and "Requested
    /// size exceeds GLES3Backend capabilities"; nothing has changed then. Any other failure is thrown as a plain
    /// std::exception with the same text.
    size_t createTarget(std::vector<size_t> const& size, size_t bits, bool, ImageFiltering filter,
                        ImageFormatType format) override;
    void finalizeDrawSequence() override;
    size_t freeSlots() const override;
    bool targetReady(size_t target) const override;
    std::vector<size_t> targetSize(size_t target) override;
    std::vector<size_t> targetAlignment(size_t target) override;
    ImageFiltering targetFiltering(size_t target) const override;
    void eraseTarget(size_t target) override;
    size_t eraseTiles(size_t first, size_t last) override;
    size_t eraseTile(size_t tile) override;
    void clearTargets() override;
    void waitForTarget(size_t target) override;
    size_t clearTiles() override;

    /// Throws "Instance for Filter <name> not available", "fewer sources than the filter has inputs" and the filter's
    /// exceptions about its parameters; nothing is drawn then. A filter needs as many sources as its description has
    /// inputs, but no more than its program samples.
    void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH,
                       size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, std::vector<size_t> const& offset) override;
    /// Throws "Filter <name> not available" for a name that neither registry holds, and the compiler's failures; the
    /// filter is unchanged then.
    void createFilterInstance(Filter& filter) override;
    /// Throws "Instance for Filter <name> not available" for a filter that was destroyed already.
    void destroyFilterInstance(Filter& filter) override;
    /// Throws "Instance for Filter <name> not available", "a range needs its start: values 0 and 2" and "fewer sources
    /// than the filter has inputs", for a filter with more than one, before any GL call; "Filter parameters cast
    /// failed" and "bad parameters cast", for envelopes that are not this backend's, with source and target bound and
    /// nothing drawn. The sampler's unit is set in the program that was current before: without one,
    /// GL_INVALID_OPERATION is pending afterwards, and the mask is drawn all the same. The starts of the range are
    /// unsigned: none is below 0.
    void maskRange(size_t source, size_t target, Filter const& maskShader, std::vector<size_t> const& range,
                   SingleFilterParameters const& params) override;

    /// Throws "Can't set tile pixels with this size" under setTile's location, "could not map PBO range", "could not
    /// unmap PBO range" and "could not map PBO: ringbuffer exhausted": docs/THREADS.md describes the ring's state
    /// afterwards.
    std::unique_ptr<ConcurrentStagingBuffer> concurrentStagingBuffer(size_t targetOrTileId, BufferType type,
                                                                     std::vector<size_t> const& size) override;
    /// Throws "could cast ConcurrentStagingBuffer to this backend" for a buffer of another backend, or none, "could not
    /// map PBO range", "could not unmap PBO range" and "could not map PBO: ringbuffer exhausted". The buffer is
    /// destroyed then; a tile that was written is uploaded later.
    bool synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer) override;

    /// The target of an id; an unknown id makes an empty one. The reference holds until the target is erased.
    Gles3Target& target(size_t target);

    /// The part of a source's texture that a filter's output shows: offset and scale in texture coordinates, of the
    /// valid output extent within the scaled source.
    void inputTextureRange(FilterSource const& source, Filter const& filter, size_t inputW, size_t inputH,
                           size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom, double& offsetX,
                           double& offsetY, double& scaleX, double& scaleY);

private:
    friend class Gles3ConcurrentStagingBuffer;
    friend class Gles3Shader;

    using FilterRegistry = Gles3RenderBackend::FilterRegistry;

    void syncTexturesFromPboRingBuffer();
    void openRingBuffer(size_t index);

    Gles3Target& findOrMakeTarget(size_t target) const;
    Gles3Target& existingTarget(size_t target, char const* location);
    Gles3Shader* findShader(Filter const& filter) const;
    /// {width, height}; an array, because every draw asks for it.
    using Extent = std::array<size_t, 2>;
    /// As targetSize, for this target.
    Extent physicalSize(size_t id, Gles3Target const& target);
    /// The size against which a target's logical extents are measured: its logical size, for the host's surface its
    /// texels.
    Extent referenceSize(size_t id, Gles3Target const& target);
    std::unique_ptr<Gles3Shader> createShader(Filter& filter) const;
    std::vector<size_t> textureSizeOfTile(std::vector<size_t> const& size, bool rgbaAccepted) const;

    std::shared_ptr<Gles3RenderBackend::TextureCache> textureCache_;
    std::shared_ptr<Gles3RenderBackend::EnvelopeCache> envelopeCache_;
    std::shared_ptr<Gles3RenderBackend::TargetPool> targetPool_;
    std::shared_ptr<Gles3RenderBackend::ShaderTable> shaderTable_;
    std::shared_ptr<Gles3SharedResources> sharedResources_;
    std::shared_ptr<Gles3RenderBackend::PixelBuffers> pixelBuffers_;
    std::shared_ptr<Gles3RenderBackend::PendingUploads> pendingUploads_;
    std::shared_ptr<Gles3RenderBackend::BufferUse> bufferUse_;
    std::shared_ptr<size_t> writeIndex_; ///< the ring buffer being filled
    std::shared_ptr<size_t> readIndex_;  ///< the oldest ring buffer not yet uploaded
    std::shared_ptr<size_t> fillOffset_; ///< bytes reserved in the ring buffer being filled
    std::shared_ptr<FilterRegistry> builtInRegistry_;
    std::shared_ptr<FilterRegistry> hostRegistry_;
    ImageFormatType format_;
    std::shared_ptr<Gles3RenderBackend::TargetTable> targetTable_;
};
