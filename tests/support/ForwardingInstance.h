#pragma once

#include "renderbackend/RenderBackendInstance.h"

#include <cstddef>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

/// An instance that forwards every operation to another one. Derived makes something of it: its
///
///     template <class Operation>
///     auto call(char const* member, Operation const& operation) const -> decltype(operation());
///
/// runs each operation. What only reads constants and free slots goes to query() instead, which Derived may declare
/// alike. `member` is how the operation's name begins in the list of exported members, behind "Gles3RenderBackend".
template <class Derived>
class ForwardingInstance : public RenderBackendInstance {
public:
    using Bytes = std::vector<unsigned char>;
    using Sizes = std::vector<size_t>;
    using EnvelopeData = std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>>;

    std::type_info const& pixelTypeid() const override {
        return self().query("Instance::pixelTypeid(",
                            [&]() -> std::type_info const& { return instance_->pixelTypeid(); });
    }
    size_t pixelSize() const override {
        return self().query("Instance::pixelSize(", [&] { return instance_->pixelSize(); });
    }
    size_t numComponents() const override {
        return self().query("Instance::numComponents(", [&] { return instance_->numComponents(); });
    }
    void clear(size_t target, Sizes const& color) override {
        self().call("Instance::clear(", [&] { instance_->clear(target, color); });
    }
    void clearRect(size_t target, Sizes const& color, Sizes const& rect) override {
        self().call("Instance::clearRect(", [&] { instance_->clearRect(target, color, rect); });
    }
    void drawTiles(size_t target, Filter const& tileShader, Sizes const& range, Sizes const& canvasRange,
                   Sizes const& tileSize, std::vector<Sizes> const& blockCoords, Sizes const& blocks,
                   Sizes const& offsets) override {
        self().call("Instance::drawTiles(", [&] {
            instance_->drawTiles(target, tileShader, range, canvasRange, tileSize, blockCoords, blocks, offsets);
        });
    }
    size_t getPixels(void* buffer, size_t bufferSize, size_t target, Sizes const& rect) const override {
        return self().call("Instance::getPixels(void*",
                           [&] { return instance_->getPixels(buffer, bufferSize, target, rect); });
    }
    Bytes getPixels(size_t target, Sizes const& rect) override {
        return self().call("Instance::getPixels(size_t", [&] { return instance_->getPixels(target, rect); });
    }
    size_t getPixelsBufferSize(size_t target, Sizes const& rect) const override {
        return self().call("Instance::getPixelsBufferSize(",
                           [&] { return instance_->getPixelsBufferSize(target, rect); });
    }
    void setTile(size_t tile, Bytes const& pixels, Sizes const& size, size_t offset) override {
        self().call("Instance::setTile(", [&] { instance_->setTile(tile, pixels, size, offset); });
    }
    bool tileSet(size_t tile) const override {
        return self().call("Instance::tileSet(", [&] { return instance_->tileSet(tile); });
    }
    void lockTile(size_t tile) override {
        self().call("Instance::lockTile(", [&] { instance_->lockTile(tile); });
    }
    void unlockTile(size_t tile) override {
        self().call("Instance::unlockTile(", [&] { instance_->unlockTile(tile); });
    }
    std::shared_ptr<DataEnvelopes const> dataEnvelopes(Bytes const& id) const override {
        return self().call("Instance::dataEnvelopes(std::vector<unsigned char> const&) const",
                           [&] { return std::as_const(*instance_).dataEnvelopes(id); });
    }
    void dataEnvelopes(Bytes const& id, EnvelopeData const& data) override {
        self().call("Instance::dataEnvelopes(std::vector<unsigned char> const&, std::vector",
                    [&] { instance_->dataEnvelopes(id, data); });
    }
    bool dataEnvelopesSet(Bytes const& id) const override {
        return self().call("Instance::dataEnvelopesSet(", [&] { return instance_->dataEnvelopesSet(id); });
    }
    void lockDataEnvelopes(Bytes const& id) override {
        self().call("Instance::lockDataEnvelopes(", [&] { instance_->lockDataEnvelopes(id); });
    }
    void unlockDataEnvelopes(Bytes const& id) override {
        self().call("Instance::unlockDataEnvelopes(", [&] { instance_->unlockDataEnvelopes(id); });
    }
    size_t createTarget(Sizes const& size, size_t bits, bool flag, ImageFiltering filter,
                        ImageFormatType format) override {
        return self().call("Instance::createTarget(",
                           [&] { return instance_->createTarget(size, bits, flag, filter, format); });
    }
    void finalizeDrawSequence() override {
        self().call("Instance::finalizeDrawSequence(", [&] { instance_->finalizeDrawSequence(); });
    }
    size_t freeSlots() const override {
        return self().query("Instance::freeSlots(", [&] { return instance_->freeSlots(); });
    }
    bool targetReady(size_t target) const override {
        return self().call("Instance::targetReady(", [&] { return instance_->targetReady(target); });
    }
    Sizes targetSize(size_t target) override {
        return self().call("Instance::targetSize(", [&] { return instance_->targetSize(target); });
    }
    Sizes targetAlignment(size_t target) override {
        return self().call("Instance::targetAlignment(", [&] { return instance_->targetAlignment(target); });
    }
    ImageFiltering targetFiltering(size_t target) const override {
        return self().call("Instance::targetFiltering(", [&] { return instance_->targetFiltering(target); });
    }
    void eraseTarget(size_t target) override {
        self().call("Instance::eraseTarget(", [&] { instance_->eraseTarget(target); });
    }
    size_t eraseTiles(size_t first, size_t last) override {
        return self().call("Instance::eraseTiles(", [&] { return instance_->eraseTiles(first, last); });
    }
    size_t eraseTile(size_t tile) override {
        return self().call("Instance::eraseTile(", [&] { return instance_->eraseTile(tile); });
    }
    void clearTargets() override {
        self().call("Instance::clearTargets(", [&] { instance_->clearTargets(); });
    }
    void waitForTarget(size_t target) override {
        self().call("Instance::waitForTarget(", [&] { instance_->waitForTarget(target); });
    }
    size_t clearTiles() override {
        return self().call("Instance::clearTiles(", [&] { return instance_->clearTiles(); });
    }
    void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH,
                       size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, Sizes const& offset) override {
        self().call("Instance::executeFilter(", [&] {
            instance_->executeFilter(filter, sources, inputW, inputH, destination, clipLeft, clipRight, clipTop,
                                     clipBottom, params, offset);
        });
    }
    void createFilterInstance(Filter& filter) override {
        self().call("Instance::createFilterInstance(", [&] { instance_->createFilterInstance(filter); });
    }
    void destroyFilterInstance(Filter& filter) override {
        self().call("Instance::destroyFilterInstance(", [&] { instance_->destroyFilterInstance(filter); });
    }
    void maskRange(size_t source, size_t target, Filter const& maskShader, Sizes const& range,
                   SingleFilterParameters const& params) override {
        self().call("Instance::maskRange(", [&] { instance_->maskRange(source, target, maskShader, range, params); });
    }
    std::unique_ptr<ConcurrentStagingBuffer> concurrentStagingBuffer(size_t id, BufferType type,
                                                                     Sizes const& size) override {
        return self().call("Instance::concurrentStagingBuffer(",
                           [&] { return instance_->concurrentStagingBuffer(id, type, size); });
    }
    bool synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer) override {
        return self().call("Instance::synchronizeConcurrentStagingBuffer(",
                           [&] { return instance_->synchronizeConcurrentStagingBuffer(std::move(buffer)); });
    }

protected:
    ForwardingInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : RenderBackendInstance(0, context), instance_(std::move(instance)) {}

    RenderBackendInstance& forwarded() const { return *instance_; }

    template <class Operation>
    static auto query(char const* /*member*/, Operation const& operation) -> decltype(operation()) {
        return operation();
    }

private:
    Derived const& self() const { return static_cast<Derived const&>(*this); }

    std::shared_ptr<RenderBackendInstance> instance_;
};
