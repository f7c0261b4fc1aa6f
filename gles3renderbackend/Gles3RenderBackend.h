#pragma once

#include "renderbackend/Export.h"
#include "renderbackend/GenericMultiFactory.h"
#include "renderbackend/RenderBackend.h"

#include <atomic>
#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class Filter;
class Gles3Pbo;
class Gles3Shader;
class Gles3SharedResources;
class Gles3Target;

/// The OpenGL ES 3 backend. Makes one working instance at a time; every GL resource belongs to that instance, the
/// backend itself keeps weak handles only. Construct it, and everything else, on the thread whose GL context is
/// current; destroy the instance before the backend. docs/GL_STATE.md says in what state that context must be.
class VELMORA_EXPORT Gles3RenderBackend : public RenderBackend {
public:
    using FilterRegistry = GenericMultiFactory<std::string, Gles3Shader, Filter&>;

    /// RGBA32 and 256000000 bytes.
    Gles3RenderBackend();
    /// format: of tiles, and of targets created with UNDEFINED. slotBudget: bytes of the tile cache, and as many of the
    /// envelope cache, locked entries not counted.
    Gles3RenderBackend(ImageFormatType format, size_t slotBudget);
    /// The same with the host's own registry, which is copied and searched before the built-in one.
    Gles3RenderBackend(FilterRegistry const& factory, ImageFormatType format, size_t slotBudget);
    /// Leaves the source without handles and registries.
    Gles3RenderBackend(Gles3RenderBackend&& other) noexcept;
    Gles3RenderBackend(Gles3RenderBackend const&) = delete;
    Gles3RenderBackend& operator=(Gles3RenderBackend const&) = delete;
    ~Gles3RenderBackend() override;

    /// Throws "Can only create one instance per backend for now" while an instance lives that has a target. If a
    /// resource cannot be made, everything made so far is released and the backend is as before.
    std::shared_ptr<RenderBackendInstance> createInstance(RenderContext const& context) override;

private:
    friend class Gles3RenderBackendInstance;
    struct NewResources;
    class EnvelopeCache;
    class TextureCache;

    using TargetTable = std::map<size_t, Gles3Target>;
    using TargetPool = std::list<Gles3Target>;
    using ShaderTable = std::map<size_t, std::unique_ptr<Gles3Shader>>;
    using PixelBuffers = std::vector<std::unique_ptr<Gles3Pbo>>;
    /// A tile that waits in a pixel buffer: {instance id, tile id} and {width, height, bytes per texel, byte offset in
    /// the buffer}.
    using PendingUpload = std::pair<std::pair<size_t, size_t>, std::vector<size_t>>;
    static constexpr size_t kOffsetInBuffer = 3;
    using PendingUploads = std::vector<std::vector<PendingUpload>>;
    using BufferUse = std::vector<std::atomic<int>>;

    std::weak_ptr<TextureCache> textureCache_;
    std::weak_ptr<EnvelopeCache> envelopeCache_;
    std::weak_ptr<TargetTable> targetTable_;
    std::weak_ptr<TargetPool> targetPool_;
    std::weak_ptr<ShaderTable> shaderTable_;
    std::weak_ptr<Gles3SharedResources> sharedResources_;
    std::weak_ptr<PixelBuffers> pixelBuffers_;
    std::weak_ptr<PendingUploads> pendingUploads_;
    std::weak_ptr<BufferUse> bufferUse_;
    std::weak_ptr<size_t> writeIndex_;
    std::weak_ptr<size_t> readIndex_;
    std::weak_ptr<size_t> fillOffset_;
    std::shared_ptr<FilterRegistry> builtInRegistry_;
    std::shared_ptr<FilterRegistry> hostRegistry_; ///< empty: the host gave none
    ImageFormatType format_;
    size_t slotBudget_;
};
