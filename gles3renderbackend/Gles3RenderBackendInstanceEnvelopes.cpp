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
    std::pair<size_t, std::vector<unsigned char>> const key(this->id(), id);
    // A new object each time: whoever holds the previous one keeps it as it was.
    std::shared_ptr<Gles3DataEnvelopes>& slot = envelopeCache_->get(key);
    slot = std::make_shared<Gles3DataEnvelopes>();
    slot->set(id, data);
    envelopeCache_->setSize(key, slot->count() * kBytesPerEnvelope);
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
