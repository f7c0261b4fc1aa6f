#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/Caches.h"
#include "renderbackend/VelmoraException.h"

namespace {

// Cost of a stored rectangle. Deliberate: hosts plan their budgets with this fixed price.
constexpr size_t kBytesPerEnvelope = 112;

} // namespace

void Gles3RenderBackendInstance::dataEnvelopes(
    std::vector<unsigned char> const& id,
    std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>> const& data) {
    // A new object each time: holders of the previous one keep it unchanged. It is complete before the cache sees it,
    // so that a set that cannot be stored leaves the stored one alone, and an unknown id unknown.
    auto const envelopes = std::make_shared<Gles3DataEnvelopes>();
    envelopes->set(id, data);
    std::pair<size_t, std::vector<unsigned char>> const key(this->id(), id);
    envelopeCache_->get(key) = envelopes;
    envelopeCache_->setSize(key, envelopes->count() * kBytesPerEnvelope);
}

std::shared_ptr<DataEnvelopes const> Gles3RenderBackendInstance::dataEnvelopes(
    std::vector<unsigned char> const& id) const {
    auto const* const slot = envelopeCache_->peek({this->id(), id});
    if (slot == nullptr)
        // The text names a string although the id is a byte vector; hosts match on it.
        throw VelmoraException("Requested DataEnvelopes doesn't exist",
                               "DataEnvelopes Gles3RenderBackendInstance::dataEnvelopes(  std::string const& id)");
    return *slot;
}

bool Gles3RenderBackendInstance::dataEnvelopesSet(std::vector<unsigned char> const& id) const {
    return envelopeCache_->count({this->id(), id}) != 0;
}

void Gles3RenderBackendInstance::lockDataEnvelopes(std::vector<unsigned char> const& id) {
    envelopeCache_->lock({this->id(), id});
}

void Gles3RenderBackendInstance::unlockDataEnvelopes(std::vector<unsigned char> const& id) {
    envelopeCache_->unlock({this->id(), id});
}
