#include "tests/renderbackend/MinimalInstance.h"

#include "renderbackend/Canvas.h"
#include "renderbackend/ConcurrentStagingBuffer.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace {

static_assert(std::is_abstract_v<RenderBackendInstance>);
static_assert(std::is_abstract_v<RenderBackend>);
static_assert(std::is_abstract_v<RenderContext>);
static_assert(std::is_abstract_v<Canvas>);
static_assert(std::is_abstract_v<ConcurrentStagingBuffer>);
static_assert(std::is_same_v<std::underlying_type_t<RenderBackend::ImageFormatType>, std::uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<RenderBackend::ImageFiltering>, std::uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<RenderBackend::BufferType>, std::uint32_t>);
static_assert(RenderBackend::RGB24 == 0 && RenderBackend::RGBA32 == 1 && RenderBackend::GRAY8 == 2 &&
              RenderBackend::UNDEFINED == 3);
static_assert(RenderBackend::NEAREST == 0 && RenderBackend::LINEAR == 1 && RenderBackend::TRILINEAR == 2);
static_assert(RenderBackend::TARGET == 0 && RenderBackend::TILE == 1);
// A virtual table and the two fields, nothing else.
static_assert(sizeof(RenderBackendInstance) == 3 * sizeof(void*));
static_assert(sizeof(RenderBackend) == 2 * sizeof(void*));

class CountedBuffer : public ConcurrentStagingBuffer {
public:
    CountedBuffer(size_t id, int& alive) : ConcurrentStagingBuffer(id, RenderBackend::TILE, {4, 2, 3}), alive_(alive) {
        ++alive_;
    }
    ~CountedBuffer() override { --alive_; }
    void write(std::vector<std::uint8_t> const&, size_t) override {}
    bool ready() const override { return true; }
    void* nativeHandle() const override { return nullptr; }
    std::shared_ptr<void> keepAlive() const override { return nullptr; }

private:
    int& alive_;
};

class CountingBackend : public RenderBackend {
public:
    std::shared_ptr<RenderBackendInstance> createInstance(RenderContext const& context) override {
        return std::make_shared<MinimalInstance>(nextInstanceId_++, context);
    }
    std::uint64_t created() const { return nextInstanceId_; }
};

TEST(RenderBackendInstanceTest, DefaultOffersNoConcurrentStaging) {
    FixedContext const context;
    MinimalInstance instance(1, context);
    EXPECT_EQ(instance.concurrentStagingBuffer(5, RenderBackend::TILE, {256, 256, 3}), nullptr);
}

TEST(RenderBackendInstanceTest, DefaultSynchronizeDestroysTheBufferAndReturnsTrue) {
    FixedContext const context;
    MinimalInstance instance(1, context);
    int alive = 0;
    std::unique_ptr<ConcurrentStagingBuffer> buffer = std::make_unique<CountedBuffer>(9, alive);
    ASSERT_EQ(alive, 1);
    EXPECT_TRUE(instance.synchronizeConcurrentStagingBuffer(std::move(buffer)));
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(alive, 0);
}

TEST(RenderBackendInstanceTest, DefaultSynchronizeOfNoBufferReturnsTrue) {
    FixedContext const context;
    MinimalInstance instance(1, context);
    std::unique_ptr<ConcurrentStagingBuffer> buffer;
    EXPECT_TRUE(instance.synchronizeConcurrentStagingBuffer(std::move(buffer)));
    EXPECT_EQ(buffer, nullptr);
}

TEST(RenderBackendInstanceTest, CopiesAndMovesCarryTheIdAndTheContext) {
    FixedContext const context;
    MinimalInstance original(41, context);
    MinimalInstance const copy(original);
    MinimalInstance const moved(std::move(original));
    for (MinimalInstance const* instance : {&copy, &moved}) {
        EXPECT_EQ(instance->id(), 41u);
        EXPECT_EQ(&instance->context(), &context);
    }
}

TEST(RenderBackendTest, InstanceCounterStartsAtZeroAndTravelsWithCopiesAndMoves) {
    FixedContext const context;
    CountingBackend backend;
    EXPECT_EQ(backend.created(), 0u);
    backend.createInstance(context);
    backend.createInstance(context);
    CountingBackend const copy(backend);
    EXPECT_EQ(copy.created(), 2u);
    CountingBackend const moved(std::move(backend));
    EXPECT_EQ(moved.created(), 2u);
}

// A host's own class that leaves the defaults.
class PlainBuffer : public ConcurrentStagingBuffer {
public:
    void write(std::vector<std::uint8_t> const&, size_t) override {}
    bool ready() const override { return true; }
    void* nativeHandle() const override { return nullptr; }
    std::shared_ptr<void> keepAlive() const override { return nullptr; }
};

TEST(ConcurrentStagingBufferTest, IsAnEmptyTileZeroByDefault) {
    PlainBuffer const buffer;
    EXPECT_EQ(buffer.targetOrTileId(), 0u);
    EXPECT_EQ(buffer.type(), RenderBackend::TILE);
    EXPECT_TRUE(buffer.size().empty());
}

TEST(ConcurrentStagingBufferTest, KeepsIdTypeAndSize) {
    int alive = 0;
    CountedBuffer const buffer(77, alive);
    EXPECT_EQ(buffer.targetOrTileId(), 77u);
    EXPECT_EQ(buffer.type(), RenderBackend::TILE);
    EXPECT_EQ(buffer.size(), (std::vector<size_t>{4, 2, 3}));
}

} // namespace
