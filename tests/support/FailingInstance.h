#pragma once

#include "renderbackend/RenderBackendInstance.h"
#include "tests/support/FailingAllocations.h"

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

/// The exception of a FailingInstance.
struct StandInFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// An instance that forwards every operation to another one, counts them, and fails one of them on demand: any
/// operation of the backend may fail, if only for want of memory. Allocations fail on demand (FailingAllocations.h)
/// outside the operations only.
class FailingInstance final : public RenderBackendInstance {
public:
    enum class When {
        Before, ///< nothing of the operation is done
        Midway, ///< a tile to be stored exists, without its pixels; of other operations nothing is done
        After   ///< the whole operation is done
    };

    FailingInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : RenderBackendInstance(0, context), instance_(std::move(instance)) {}

    /// The n-th operation from now on throws StandInFailure; 0: none does.
    void failAt(size_t n, When when = When::Before) {
        calls_ = 0;
        failing_ = n;
        when_ = when;
    }
    /// Number of operations since failAt().
    size_t calls() const { return calls_; }

    using Bytes = std::vector<unsigned char>;
    using Sizes = std::vector<size_t>;
    using EnvelopeData = std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>>;

    std::type_info const& pixelTypeid() const override { return instance_->pixelTypeid(); }
    size_t pixelSize() const override { return instance_->pixelSize(); }
    size_t numComponents() const override { return instance_->numComponents(); }
    void clear(size_t target, Sizes const& color) override {
        call([&] { instance_->clear(target, color); });
    }
    void clearRect(size_t target, Sizes const& color, Sizes const& rect) override {
        call([&] { instance_->clearRect(target, color, rect); });
    }
    void drawTiles(size_t target, Filter const& tileShader, Sizes const& range, Sizes const& canvasRange,
                   Sizes const& tileSize, std::vector<Sizes> const& blockCoords, Sizes const& blocks,
                   Sizes const& offsets) override {
        call([&] {
            instance_->drawTiles(target, tileShader, range, canvasRange, tileSize, blockCoords, blocks, offsets);
        });
    }
    size_t getPixels(void* buffer, size_t bufferSize, size_t target, Sizes const& rect) const override {
        return call([&] { return instance_->getPixels(buffer, bufferSize, target, rect); });
    }
    Bytes getPixels(size_t target, Sizes const& rect) override {
        return call([&] { return instance_->getPixels(target, rect); });
    }
    size_t getPixelsBufferSize(size_t target, Sizes const& rect) const override {
        return call([&] { return instance_->getPixelsBufferSize(target, rect); });
    }
    void setTile(size_t tile, Bytes const& pixels, Sizes const& size, size_t offset) override {
        if (when_ == When::Midway && calls_ + 1 == failing_) instance_->setTile(tile, {}, size, 0);
        call([&] { instance_->setTile(tile, pixels, size, offset); });
    }
    bool tileSet(size_t tile) const override {
        return call([&] { return instance_->tileSet(tile); });
    }
    void lockTile(size_t tile) override {
        call([&] { instance_->lockTile(tile); });
    }
    void unlockTile(size_t tile) override {
        call([&] { instance_->unlockTile(tile); });
    }
    std::shared_ptr<DataEnvelopes const> dataEnvelopes(Bytes const& id) const override {
        return call([&] { return std::as_const(*instance_).dataEnvelopes(id); });
    }
    void dataEnvelopes(Bytes const& id, EnvelopeData const& data) override {
        call([&] { instance_->dataEnvelopes(id, data); });
    }
    bool dataEnvelopesSet(Bytes const& id) const override {
        return call([&] { return instance_->dataEnvelopesSet(id); });
    }
    void lockDataEnvelopes(Bytes const& id) override {
        call([&] { instance_->lockDataEnvelopes(id); });
    }
    void unlockDataEnvelopes(Bytes const& id) override {
        call([&] { instance_->unlockDataEnvelopes(id); });
    }
    size_t createTarget(Sizes const& size, size_t bits, bool flag, ImageFiltering filter,
                        ImageFormatType format) override {
        return call([&] { return instance_->createTarget(size, bits, flag, filter, format); });
    }
    void finalizeDrawSequence() override {
        call([&] { instance_->finalizeDrawSequence(); });
    }
    size_t freeSlots() const override { return instance_->freeSlots(); }
    bool targetReady(size_t target) const override {
        return call([&] { return instance_->targetReady(target); });
    }
    Sizes targetSize(size_t target) override {
        return call([&] { return instance_->targetSize(target); });
    }
    Sizes targetAlignment(size_t target) override {
        return call([&] { return instance_->targetAlignment(target); });
    }
    ImageFiltering targetFiltering(size_t target) const override {
        return call([&] { return instance_->targetFiltering(target); });
    }
    void eraseTarget(size_t target) override {
        call([&] { instance_->eraseTarget(target); });
    }
    size_t eraseTiles(size_t first, size_t last) override {
        return call([&] { return instance_->eraseTiles(first, last); });
    }
    size_t eraseTile(size_t tile) override {
        return call([&] { return instance_->eraseTile(tile); });
    }
    void clearTargets() override {
        call([&] { instance_->clearTargets(); });
    }
    void waitForTarget(size_t target) override {
        call([&] { instance_->waitForTarget(target); });
    }
    size_t clearTiles() override {
        return call([&] { return instance_->clearTiles(); });
    }
    void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH,
                       size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, Sizes const& offset) override {
        call([&] {
            instance_->executeFilter(filter, sources, inputW, inputH, destination, clipLeft, clipRight, clipTop,
                                     clipBottom, params, offset);
        });
    }
    void createFilterInstance(Filter& filter) override {
        call([&] { instance_->createFilterInstance(filter); });
    }
    void destroyFilterInstance(Filter& filter) override {
        call([&] { instance_->destroyFilterInstance(filter); });
    }
    void maskRange(size_t source, size_t target, Filter const& maskShader, Sizes const& range,
                   SingleFilterParameters const& params) override {
        call([&] { instance_->maskRange(source, target, maskShader, range, params); });
    }

private:
    template <class Operation>
    auto call(Operation const& operation) const -> decltype(operation()) {
        failing_allocations::Pause const pause; // GL drivers crash when allocations fail
        bool const fails = ++calls_ == failing_;
        if (fails && when_ != When::After) throw StandInFailure("this operation was to fail");
        if constexpr (std::is_void_v<decltype(operation())>) {
            operation();
            if (fails) throw StandInFailure("this operation was to fail when done");
        } else {
            auto const result = operation();
            if (fails) throw StandInFailure("this operation was to fail when done");
            return result;
        }
    }

    std::shared_ptr<RenderBackendInstance> instance_;
    size_t mutable calls_ = 0;
    size_t failing_ = 0;
    When when_ = When::Before;
};
