#pragma once

#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace faults {

/// What a failure of an operation may be.
class Judge {
public:
    static Judge& instance();

    /// The members that were called so far: how their names begin in the list of exported ones, behind the class.
    std::set<std::string> const& used() const { return used_; }
    void use(char const* member);

    /// While true, std::bad_alloc may come out of every operation.
    void letMemoryRunOut(bool may) { memoryRunsOut_ = may; }

    /// Runs an operation. A failure that docs/ERRORS.md does not know fails the test; it comes out all the same.
    template <class Operation>
    auto watch(char const* member, Operation const& operation) -> decltype(operation()) {
        use(member);
        try {
            return operation();
        } catch (...) {
            judge(member);
            throw;
        }
    }

private:
    Judge();
    void judge(char const* member) const; // the exception in flight
    bool isDocumented(std::string const& text) const;

    std::string documented_;
    std::set<std::string> used_;
    bool memoryRunsOut_ = false;
};

/// An instance of the backend that hands every operation on and lets the Judge look at what it throws.
class WatchedInstance final : public RenderBackendInstance {
public:
    WatchedInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : RenderBackendInstance(0, context), instance_(std::move(instance)) {}

    using Bytes = std::vector<unsigned char>;
    using Sizes = std::vector<size_t>;
    using EnvelopeData = std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>>;

    /// The operations that the interface does not have.
    Gles3Target& target(size_t id) {
        return watch("Instance::target(", [&]() -> Gles3Target& { return gles().target(id); });
    }
    void inputTextureRange(FilterSource const& source, Filter const& filter, size_t width, size_t height,
                           double* range) {
        watch("Instance::inputTextureRange(", [&] {
            gles().inputTextureRange(source, filter, width, height, 0, 0, 0, 0, range[0], range[1], range[2], range[3]);
        });
    }

    std::type_info const& pixelTypeid() const override {
        return watch("Instance::pixelTypeid(", [&]() -> std::type_info const& { return instance_->pixelTypeid(); });
    }
    size_t pixelSize() const override {
        return watch("Instance::pixelSize(", [&] { return instance_->pixelSize(); });
    }
    size_t numComponents() const override {
        return watch("Instance::numComponents(", [&] { return instance_->numComponents(); });
    }
    void clear(size_t target, Sizes const& color) override {
        watch("Instance::clear(", [&] { instance_->clear(target, color); });
    }
    void clearRect(size_t target, Sizes const& color, Sizes const& rect) override {
        watch("Instance::clearRect(", [&] { instance_->clearRect(target, color, rect); });
    }
    void drawTiles(size_t target, Filter const& tileShader, Sizes const& range, Sizes const& canvasRange,
                   Sizes const& tileSize, std::vector<Sizes> const& blockCoords, Sizes const& blocks,
                   Sizes const& offsets) override {
        watch("Instance::drawTiles(", [&] {
            instance_->drawTiles(target, tileShader, range, canvasRange, tileSize, blockCoords, blocks, offsets);
        });
    }
    size_t getPixels(void* buffer, size_t bufferSize, size_t target, Sizes const& rect) const override {
        return watch("Instance::getPixels(void*",
                     [&] { return instance_->getPixels(buffer, bufferSize, target, rect); });
    }
    Bytes getPixels(size_t target, Sizes const& rect) override {
        return watch("Instance::getPixels(size_t", [&] { return instance_->getPixels(target, rect); });
    }
    size_t getPixelsBufferSize(size_t target, Sizes const& rect) const override {
        return watch("Instance::getPixelsBufferSize(", [&] { return instance_->getPixelsBufferSize(target, rect); });
    }
    void setTile(size_t tile, Bytes const& pixels, Sizes const& size, size_t offset) override {
        watch("Instance::setTile(", [&] { instance_->setTile(tile, pixels, size, offset); });
    }
    bool tileSet(size_t tile) const override {
        return watch("Instance::tileSet(", [&] { return instance_->tileSet(tile); });
    }
    void lockTile(size_t tile) override {
        watch("Instance::lockTile(", [&] { instance_->lockTile(tile); });
    }
    void unlockTile(size_t tile) override {
        watch("Instance::unlockTile(", [&] { instance_->unlockTile(tile); });
    }
    std::shared_ptr<DataEnvelopes const> dataEnvelopes(Bytes const& id) const override {
        return watch("Instance::dataEnvelopes(std::vector<unsigned char> const&) const",
                     [&] { return std::as_const(*instance_).dataEnvelopes(id); });
    }
    void dataEnvelopes(Bytes const& id, EnvelopeData const& data) override {
        watch("Instance::dataEnvelopes(std::vector<unsigned char> const&, std::vector",
              [&] { instance_->dataEnvelopes(id, data); });
    }
    bool dataEnvelopesSet(Bytes const& id) const override {
        return watch("Instance::dataEnvelopesSet(", [&] { return instance_->dataEnvelopesSet(id); });
    }
    void lockDataEnvelopes(Bytes const& id) override {
        watch("Instance::lockDataEnvelopes(", [&] { instance_->lockDataEnvelopes(id); });
    }
    void unlockDataEnvelopes(Bytes const& id) override {
        watch("Instance::unlockDataEnvelopes(", [&] { instance_->unlockDataEnvelopes(id); });
    }
    size_t createTarget(Sizes const& size, size_t bits, bool flag, ImageFiltering filter,
                        ImageFormatType format) override {
        return watch("Instance::createTarget(",
                     [&] { return instance_->createTarget(size, bits, flag, filter, format); });
    }
    void finalizeDrawSequence() override {
        watch("Instance::finalizeDrawSequence(", [&] { instance_->finalizeDrawSequence(); });
    }
    size_t freeSlots() const override {
        return watch("Instance::freeSlots(", [&] { return instance_->freeSlots(); });
    }
    bool targetReady(size_t target) const override {
        return watch("Instance::targetReady(", [&] { return instance_->targetReady(target); });
    }
    Sizes targetSize(size_t target) override {
        return watch("Instance::targetSize(", [&] { return instance_->targetSize(target); });
    }
    Sizes targetAlignment(size_t target) override {
        return watch("Instance::targetAlignment(", [&] { return instance_->targetAlignment(target); });
    }
    ImageFiltering targetFiltering(size_t target) const override {
        return watch("Instance::targetFiltering(", [&] { return instance_->targetFiltering(target); });
    }
    void eraseTarget(size_t target) override {
        watch("Instance::eraseTarget(", [&] { instance_->eraseTarget(target); });
    }
    size_t eraseTiles(size_t first, size_t last) override {
        return watch("Instance::eraseTiles(", [&] { return instance_->eraseTiles(first, last); });
    }
    size_t eraseTile(size_t tile) override {
        return watch("Instance::eraseTile(", [&] { return instance_->eraseTile(tile); });
    }
    void clearTargets() override {
        watch("Instance::clearTargets(", [&] { instance_->clearTargets(); });
    }
    void waitForTarget(size_t target) override {
        watch("Instance::waitForTarget(", [&] { instance_->waitForTarget(target); });
    }
    size_t clearTiles() override {
        return watch("Instance::clearTiles(", [&] { return instance_->clearTiles(); });
    }
    void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH,
                       size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, Sizes const& offset) override {
        watch("Instance::executeFilter(", [&] {
            instance_->executeFilter(filter, sources, inputW, inputH, destination, clipLeft, clipRight, clipTop,
                                     clipBottom, params, offset);
        });
    }
    void createFilterInstance(Filter& filter) override {
        watch("Instance::createFilterInstance(", [&] { instance_->createFilterInstance(filter); });
    }
    void destroyFilterInstance(Filter& filter) override {
        watch("Instance::destroyFilterInstance(", [&] { instance_->destroyFilterInstance(filter); });
    }
    void maskRange(size_t source, size_t target, Filter const& maskShader, Sizes const& range,
                   SingleFilterParameters const& params) override {
        watch("Instance::maskRange(", [&] { instance_->maskRange(source, target, maskShader, range, params); });
    }
    std::unique_ptr<ConcurrentStagingBuffer> concurrentStagingBuffer(size_t id, BufferType type,
                                                                     Sizes const& size) override {
        return watch("Instance::concurrentStagingBuffer(",
                     [&] { return instance_->concurrentStagingBuffer(id, type, size); });
    }
    bool synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer) override {
        return watch("Instance::synchronizeConcurrentStagingBuffer(",
                     [&] { return instance_->synchronizeConcurrentStagingBuffer(std::move(buffer)); });
    }

private:
    Gles3RenderBackendInstance& gles() const { return dynamic_cast<Gles3RenderBackendInstance&>(*instance_); }

    template <class Operation>
    static auto watch(char const* member, Operation const& operation) -> decltype(operation()) {
        return Judge::instance().watch(member, operation);
    }

    std::shared_ptr<RenderBackendInstance> instance_;
};

} // namespace faults
