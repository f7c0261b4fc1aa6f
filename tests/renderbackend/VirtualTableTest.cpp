#include "renderbackend/Canvas.h"
#include "renderbackend/ConcurrentStagingBuffer.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterParameters.h"
#include "renderbackend/GenericMultiFactory.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/RenderContext.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

// Hosts are compiled against the order of the virtual operations. A pointer to a virtual member holds the operation's
// offset in the virtual table, where the destructor takes the first two places and every other operation one.

namespace {

using Sizes = std::vector<size_t>;
using Bytes = std::vector<unsigned char>;

// The number of an operation, counted from 1 with the destructor; 0 if the member is not virtual.
template <class Member>
size_t slotOf(Member member) {
    std::array<std::ptrdiff_t, 2> raw{};
    static_assert(sizeof member == sizeof raw);
    std::memcpy(raw.data(), &member, sizeof member);
    // "Virtual" is the lowest bit of the first word, or of the second where code addresses may be odd (Arm).
    bool const inFirst = (raw[0] & 1) != 0 && raw[0] < 4096;
    bool const inSecond = (raw[1] & 1) != 0;
    if (!inFirst && !inSecond) return 0;
    return static_cast<size_t>(raw[0]) / sizeof(void*);
}

TEST(VirtualTableTest, RenderBackendInstanceKeepsItsOrder) {
    using I = RenderBackendInstance;
    using EnvelopeData = std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>>;
    EXPECT_EQ(slotOf(&I::pixelTypeid), 2u);
    EXPECT_EQ(slotOf(&I::pixelSize), 3u);
    EXPECT_EQ(slotOf(&I::numComponents), 4u);
    EXPECT_EQ(slotOf(&I::clear), 5u);
    EXPECT_EQ(slotOf(&I::clearRect), 6u);
    EXPECT_EQ(slotOf(&I::drawTiles), 7u);
    EXPECT_EQ(slotOf(static_cast<size_t (I::*)(void*, size_t, size_t, Sizes const&) const>(&I::getPixels)), 8u);
    EXPECT_EQ(slotOf(static_cast<Bytes (I::*)(size_t, Sizes const&)>(&I::getPixels)), 9u);
    EXPECT_EQ(slotOf(&I::getPixelsBufferSize), 10u);
    EXPECT_EQ(slotOf(&I::setTile), 11u);
    EXPECT_EQ(slotOf(&I::tileSet), 12u);
    EXPECT_EQ(slotOf(&I::lockTile), 13u);
    EXPECT_EQ(slotOf(&I::unlockTile), 14u);
    EXPECT_EQ(slotOf(static_cast<std::shared_ptr<DataEnvelopes const> (I::*)(Bytes const&) const>(&I::dataEnvelopes)),
              15u);
    EXPECT_EQ(slotOf(static_cast<void (I::*)(Bytes const&, EnvelopeData const&)>(&I::dataEnvelopes)), 16u);
    EXPECT_EQ(slotOf(&I::dataEnvelopesSet), 17u);
    EXPECT_EQ(slotOf(&I::lockDataEnvelopes), 18u);
    EXPECT_EQ(slotOf(&I::unlockDataEnvelopes), 19u);
    EXPECT_EQ(slotOf(&I::createTarget), 20u);
    EXPECT_EQ(slotOf(&I::finalizeDrawSequence), 21u);
    EXPECT_EQ(slotOf(&I::freeSlots), 22u);
    EXPECT_EQ(slotOf(&I::targetReady), 23u);
    EXPECT_EQ(slotOf(&I::targetSize), 24u);
    EXPECT_EQ(slotOf(&I::targetAlignment), 25u);
    EXPECT_EQ(slotOf(&I::targetFiltering), 26u);
    EXPECT_EQ(slotOf(&I::eraseTarget), 27u);
    EXPECT_EQ(slotOf(&I::eraseTiles), 28u);
    EXPECT_EQ(slotOf(&I::eraseTile), 29u);
    EXPECT_EQ(slotOf(&I::clearTargets), 30u);
    EXPECT_EQ(slotOf(&I::waitForTarget), 31u);
    EXPECT_EQ(slotOf(&I::clearTiles), 32u);
    EXPECT_EQ(slotOf(&I::executeFilter), 33u);
    EXPECT_EQ(slotOf(&I::createFilterInstance), 34u);
    EXPECT_EQ(slotOf(&I::destroyFilterInstance), 35u);
    EXPECT_EQ(slotOf(&I::maskRange), 36u);
    EXPECT_EQ(slotOf(&I::concurrentStagingBuffer), 37u);
    EXPECT_EQ(slotOf(&I::synchronizeConcurrentStagingBuffer), 38u);
}

TEST(VirtualTableTest, RenderBackendKeepsItsOrder) {
    EXPECT_EQ(slotOf(&RenderBackend::createInstance), 2u);
}

TEST(VirtualTableTest, CanvasAndRenderContextHaveTheSameShape) {
    EXPECT_EQ(slotOf(&Canvas::width), 2u);
    EXPECT_EQ(slotOf(&Canvas::height), 3u);
    EXPECT_EQ(slotOf(&RenderContext::width), 2u);
    EXPECT_EQ(slotOf(&RenderContext::height), 3u);
}

TEST(VirtualTableTest, ConcurrentStagingBufferKeepsItsOrder) {
    EXPECT_EQ(slotOf(&ConcurrentStagingBuffer::write), 2u);
    EXPECT_EQ(slotOf(&ConcurrentStagingBuffer::ready), 3u);
    EXPECT_EQ(slotOf(&ConcurrentStagingBuffer::nativeHandle), 4u);
    EXPECT_EQ(slotOf(&ConcurrentStagingBuffer::keepAlive), 5u);
    EXPECT_EQ(slotOf(&ConcurrentStagingBuffer::targetOrTileId), 6u);
}

TEST(VirtualTableTest, FilterKeepsItsOrder) {
    EXPECT_EQ(slotOf(&Filter::clone), 2u);
    EXPECT_EQ(slotOf(&Filter::invalidLeft), 3u);
    EXPECT_EQ(slotOf(&Filter::invalidRight), 4u);
    EXPECT_EQ(slotOf(&Filter::invalidTop), 5u);
    EXPECT_EQ(slotOf(&Filter::invalidBottom), 6u);
    EXPECT_EQ(slotOf(&Filter::changesGeometry), 7u);
    EXPECT_EQ(slotOf(&Filter::inputRange), 8u);
    EXPECT_EQ(slotOf(&Filter::outputRange), 9u);
}

TEST(VirtualTableTest, OtherFilterOperationsAreNotVirtual) {
    EXPECT_EQ(slotOf(&Filter::inputPosX0), 0u);
    EXPECT_EQ(slotOf(&Filter::setAlignXIn), 0u);
    EXPECT_EQ(slotOf(&Filter::nextSerial), 0u);
    EXPECT_EQ(slotOf(&Filter::bind), 0u);
    EXPECT_EQ(slotOf(&Filter::execute), 0u);
}

TEST(VirtualTableTest, RecordsFactoriesAndEnvelopesStartWithTheirFirstOperation) {
    EXPECT_EQ(slotOf(&ComparableSingleFilterParameters<std::string>::key), 2u);
    EXPECT_EQ(slotOf(&ComparableSingleFilterParameters<unsigned char>::key), 2u);
    EXPECT_EQ(slotOf(&GenericFactory<int, Filter&>::create), 2u);
    EXPECT_EQ(slotOf(&DataEnvelopes::set), 2u);
}

} // namespace
