#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/ExpectedState.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "gles3renderbackend/resources/TextureRanges.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>

namespace {

constexpr char const* kCreateShader =
    "std::string Gles3RenderBackendInstance::createShaderInstance(Filter const& filter)";
constexpr char const* kDestroyFilter = "void Gles3RenderBackendInstance::destroyFilterInstance(Filter& filter)";
// Deliberate: the text leaves the parameters out; hosts match on it as it stands.
constexpr char const* kExecuteFilter =
    "void Gles3RenderBackendInstance::executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, "
    "size_t inputW, size_t inputH, size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, "
    "size_t clipBottom, std::vector<size_t> const& offset)";

size_t smallestFreeKey(std::map<size_t, std::unique_ptr<Gles3Shader>> const& table) {
    size_t key = 0;
    for (auto const& entry : table) {
        if (entry.first != key) break;
        ++key;
    }
    return key;
}

} // namespace

Gles3Shader* Gles3RenderBackendInstance::findShader(Filter const& filter) const {
    auto const key = filter.instanceKey();
    if (!key) return nullptr;
    auto const found = shaderTable_->find(*key);
    return found == shaderTable_->end() ? nullptr : found->second.get();
}

std::unique_ptr<Gles3Shader> Gles3RenderBackendInstance::createShader(Filter& filter) const {
    for (auto const& registry : {hostRegistry_, builtInRegistry_})
        if (registry && registry->has(filter.name())) return registry->create(filter.name(), filter);
    throw VelmoraException("Filter <" + filter.name() + "> not available", kCreateShader);
}

void Gles3RenderBackendInstance::createFilterInstance(Filter& filter) {
    if (filter.instanceKey()) return;
    auto const key = std::make_shared<size_t>(smallestFreeKey(*shaderTable_));
    std::unique_ptr<Gles3Shader> created = createShader(filter);
    // A host's factory may make nothing, and may instantiate another filter, which then takes the key.
    if (!created || shaderTable_->count(*key) != 0)
        throw VelmoraException("Failed to create shader instance", kCreateShader);
    created->setInstanceKey(key);
    // Deliberate: only the Filter part, with the key and everything that the filter class adjusted. It is copied before
    // the table has the shader and moved afterwards, so that a filter for whose copy memory runs out has no program in
    // the table either.
    Filter adjusted = static_cast<Filter const&>(*created);
    created->forgetInstance(); // a filter that was bound before carries its instance
    shaderTable_->emplace(*key, std::move(created));
    filter = std::move(adjusted);
}

void Gles3RenderBackendInstance::destroyFilterInstance(Filter& filter) {
    auto const key = filter.instanceKey();
    if (!key) return;
    // Deliberate: the filter keeps its key, so that using it again is reported and not silently repaired.
    if (shaderTable_->erase(*key) == 0)
        throw VelmoraException("Instance for Filter <" + filter.name() + "> not available", kDestroyFilter);
}

void Gles3RenderBackendInstance::executeFilter(Filter const& filter, std::vector<FilterSource> const& sources,
                                               size_t inputW, size_t inputH, size_t destination, size_t clipLeft,
                                               size_t clipRight, size_t clipTop, size_t clipBottom,
                                               SingleFilterParameters const& params,
                                               std::vector<size_t> const& offset) {
    // Table filters sample unit 1 and upload their table, CLAHE reads and uploads.
    expectedState::forDrawing(std::max<size_t>(sources.size(), 2));
    expectedState::forReading();
    expectedState::forUploading();
    Gles3Shader* const shader = findShader(filter);
    if (shader == nullptr)
        throw VelmoraException("Instance for Filter <" + filter.name() + "> not available", kExecuteFilter);
    if (offset.size() < 2) throw VelmoraException("an offset needs two values: x, y", kExecuteFilter);
    shader->requireSources(sources.size(), filter, kExecuteFilter);
    shader->draw(sources, inputW, inputH, destination, clipLeft, clipRight, clipTop, clipBottom, params, offset, *this,
                 filter);
}

void Gles3RenderBackendInstance::inputTextureRange(FilterSource const& source, Filter const& filter, size_t inputW,
                                                   size_t inputH, size_t clipLeft, size_t clipRight, size_t clipTop,
                                                   size_t clipBottom, double& offsetX, double& offsetY, double& scaleX,
                                                   double& scaleY) {
    Extent const size = referenceSize(source.target, findOrMakeTarget(source.target));
    TextureRange const range =
        TextureRanges(filter, inputW, inputH, clipLeft, clipRight, clipTop, clipBottom).of(source.x, source.y, size);
    offsetX = range.offsetX;
    offsetY = range.offsetY;
    scaleX = range.scaleX;
    scaleY = range.scaleY;
}
