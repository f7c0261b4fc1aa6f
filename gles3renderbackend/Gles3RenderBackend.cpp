#include "gles3renderbackend/Gles3RenderBackend.h"

#include "gles3renderbackend/Caches.h"
#include "gles3renderbackend/ExpectedState.h"
#include "gles3renderbackend/FilterRegistry.h"
#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "gles3renderbackend/Gles3SharedResources.h"
#include "gles3renderbackend/UploadRing.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/VelmoraException.h"

namespace {

constexpr size_t kRingBuffers = 4;

std::vector<std::unique_ptr<Gles3Pbo>> makeRing() {
    std::vector<std::unique_ptr<Gles3Pbo>> ring;
    for (size_t i = 0; i < kRingBuffers; ++i)
        ring.push_back(std::make_unique<Gles3Pbo>(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, Gles3Pbo::kMappedBytes));
    // The ring starts at buffer 0, and the buffer being filled is always mapped.
    uploadRing::map(*ring.front());
    return ring;
}

std::vector<std::atomic<int>> makeCounters() {
    std::vector<std::atomic<int>> counters(kRingBuffers);
    for (auto& counter : counters)
        counter.store(0);
    return counters;
}

// Removes target 0 from a table again unless the new instance is completed.
template <class Table>
class FirstTarget {
public:
    explicit FirstTarget(Table& table) : table_(&table) { table.try_emplace(0); }
    FirstTarget(FirstTarget const&) = delete;
    FirstTarget& operator=(FirstTarget const&) = delete;
    ~FirstTarget() {
        if (table_ != nullptr) table_->erase(0);
    }
    void keep() { table_ = nullptr; }

private:
    Table* table_;
};

} // namespace

// Owns the resources that createInstance makes until the instance owns them.
struct Gles3RenderBackend::NewResources {
    // The resource that a handle refers to, or a new one from `make`, to which the handle then refers.
    template <class T, class Make>
    std::shared_ptr<T> shared(std::weak_ptr<T>& handle, Make make) {
        std::shared_ptr<T> resource = handle.lock();
        if (!resource) {
            resource = std::shared_ptr<T>(make());
            handle = resource;
        }
        owned.push_back(resource);
        return resource;
    }

    std::vector<std::shared_ptr<void>> owned;
};

Gles3RenderBackend::Gles3RenderBackend() : Gles3RenderBackend(RGBA32, 256000000) {}

Gles3RenderBackend::Gles3RenderBackend(ImageFormatType format, size_t slotBudget)
    : builtInRegistry_(std::make_shared<FilterRegistry>()), format_(format), slotBudget_(slotBudget) {
    registerBuiltInFilters(*builtInRegistry_);
}

Gles3RenderBackend::Gles3RenderBackend(FilterRegistry const& factory, ImageFormatType format, size_t slotBudget)
    : Gles3RenderBackend(format, slotBudget) {
    hostRegistry_ = std::make_shared<FilterRegistry>(factory);
}

Gles3RenderBackend::Gles3RenderBackend(Gles3RenderBackend&& other) noexcept = default;

Gles3RenderBackend::~Gles3RenderBackend() = default;

std::shared_ptr<RenderBackendInstance> Gles3RenderBackend::createInstance(RenderContext const& context) {
    expectedState::forUploading();
    if (auto const table = targetTable_.lock(); table && !table->empty())
        throw VelmoraException(
            "Can only create one instance per backend for now",
            "std::shared_ptr<RenderBackendInstance> Gles3RenderBackend::createInstance(RenderContext const& context)");

    NewResources resources;
    auto const table = resources.shared(targetTable_, [] { return new TargetTable(); });
    FirstTarget<TargetTable> hostSurface(*table);
    resources.shared(textureCache_, [this] { return new TextureCache(slotBudget_); });
    resources.shared(envelopeCache_, [this] { return new EnvelopeCache(slotBudget_); });
    resources.shared(pixelBuffers_, [] { return new PixelBuffers(makeRing()); });
    resources.shared(pendingUploads_, [] { return new PendingUploads(kRingBuffers); });
    resources.shared(bufferUse_, [] { return new BufferUse(makeCounters()); });
    resources.shared(writeIndex_, [] { return new size_t(0); });
    resources.shared(readIndex_, [] { return new size_t(0); });
    resources.shared(fillOffset_, [] { return new size_t(0); });
    resources.shared(targetPool_, [] { return new TargetPool(); });
    resources.shared(shaderTable_, [] { return new ShaderTable(); });
    resources.shared(sharedResources_, [] { return new Gles3SharedResources(); });

    auto instance = std::make_shared<Gles3RenderBackendInstance>(nextInstanceId_, context, *this);
    ++nextInstanceId_;
    hostSurface.keep();
    return instance;
}
