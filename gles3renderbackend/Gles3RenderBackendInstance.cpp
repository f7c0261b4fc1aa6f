#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/Caches.h"
#include "gles3renderbackend/Gles3SharedResources.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Target.h"

#include <limits>

Gles3RenderBackendInstance::Gles3RenderBackendInstance(size_t id, RenderContext const& context,
                                                       Gles3RenderBackend& backend)
    : RenderBackendInstance(id, context),
      textureCache_(backend.textureCache_.lock()),
      envelopeCache_(backend.envelopeCache_.lock()),
      targetPool_(backend.targetPool_.lock()),
      shaderTable_(backend.shaderTable_.lock()),
      sharedResources_(backend.sharedResources_.lock()),
      pixelBuffers_(backend.pixelBuffers_.lock()),
      pendingUploads_(backend.pendingUploads_.lock()),
      bufferUse_(backend.bufferUse_.lock()),
      writeIndex_(backend.writeIndex_.lock()),
      readIndex_(backend.readIndex_.lock()),
      fillOffset_(backend.fillOffset_.lock()),
      builtInRegistry_(backend.builtInRegistry_),
      hostRegistry_(backend.hostRegistry_),
      format_(backend.format_),
      targetTable_(backend.targetTable_.lock()) {}

Gles3RenderBackendInstance::Gles3RenderBackendInstance(Gles3RenderBackendInstance&& other) noexcept = default;

Gles3RenderBackendInstance::~Gles3RenderBackendInstance() = default;

std::type_info const& Gles3RenderBackendInstance::pixelTypeid() const {
    return typeid(unsigned char);
}

size_t Gles3RenderBackendInstance::pixelSize() const {
    return 1;
}

size_t Gles3RenderBackendInstance::numComponents() const {
    return 3;
}

// The budget counts bytes and is kept by eviction, so there is always room for one more.
size_t Gles3RenderBackendInstance::freeSlots() const {
    return std::numeric_limits<size_t>::max();
}

// The GL stream orders drawing: a later read of a target sees everything drawn before.
bool Gles3RenderBackendInstance::targetReady(size_t /*target*/) const {
    return true;
}

void Gles3RenderBackendInstance::waitForTarget(size_t /*target*/) {}

void Gles3RenderBackendInstance::finalizeDrawSequence() {}
