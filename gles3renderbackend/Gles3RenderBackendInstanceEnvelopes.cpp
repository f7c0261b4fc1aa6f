#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/Caches.h"
#include "renderbackend/VelmoraException.h"

namespace {

// What a stored rectangle is charged: deliberate, a fixed price that hosts plan their budgets with.
constexpr size_t kBytesPerEnvelope = 112;

} // namespace

void Gles3RenderBackendInstance::dataEnvelopes(
    std::vector<unsigned char> const& id,
    std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>> const& data) {
    // A new object each time: whoever holds the previous one keeps it as it was. It is complete before the cache hears
    // of it, so that a set that cannot be stored leaves the stored one alone and an id that was never set unset.
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
        // The text is as it stands although the id is a byte vector; hosts match on it.
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
