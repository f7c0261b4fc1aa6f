// A failed attempt to store an envelope set leaves the stored one unchanged.
#include "gles3renderbackend/Gles3DataEnvelopes.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"
#include "tests/gles3renderbackend/FailingAllocation.h"

namespace {

using namespace backendtest;

using Data = DataEnvelopes::Data;

constexpr char const* kBadCell = "#Name:a cell needs two coordinates: column and row#Location:void "
                                 "DataEnvelopes::set(std::vector<uint8_t> const& id, Data const& data)";

class Gles3DataEnvelopesFailureTest : public BackendRecordingTest {
public:
    ~Gles3DataEnvelopesFailureTest() override { letAllocationsSucceed(); }

protected:
    Bytes meshOf(std::shared_ptr<DataEnvelopes const> const& set) const {
        return gl.buffer(dynamic_cast<Gles3DataEnvelopes const&>(*set).vertexBuffer().buffer()).bytes;
    }

    // The last cell of the last element is the bad one.
    Data const twoCells = {{{}, {{4, 2}}}, {{}, {{8, 3}}}};
    Data const badCell = {{{}, {{1, 1}}}, {{}, {{2, 2}, {7}}}};
    Bytes const id = {1, 0, 255};
};

TEST_F(Gles3DataEnvelopesFailureTest, BadCellLeavesTheStoredSetAsItWas) {
    instance->dataEnvelopes(id, twoCells);
    auto const stored = instance->dataEnvelopes(id);
    Bytes const mesh = meshOf(stored);
    auto const living = gl.living();
    EXPECT_EQ(failureOf([&] { instance->dataEnvelopes(id, badCell); }), kBadCell);
    EXPECT_EQ(instance->dataEnvelopes(id), stored);
    EXPECT_EQ(stored->total(), 2U);
    EXPECT_EQ(meshOf(stored), mesh);
    EXPECT_EQ(gl.living(), living);
}

TEST_F(Gles3DataEnvelopesFailureTest, BadCellLeavesAnUnsetIdUnset) {
    auto const living = gl.living();
    EXPECT_EQ(failureOf([&] { instance->dataEnvelopes(id, badCell); }), kBadCell);
    EXPECT_FALSE(instance->dataEnvelopesSet(id));
    EXPECT_EQ(gl.living(), living);
}

TEST_F(Gles3DataEnvelopesFailureTest, ExhaustedMemoryLeavesTheStoredSetAsItWas) {
    instance->dataEnvelopes(id, twoCells);
    auto const stored = instance->dataEnvelopes(id);
    auto const living = gl.living();
    Data const other = {{{}, {{1, 1}, {2, 1}, {5, 5}}}};
    size_t const failures = failEachAllocation([&] { instance->dataEnvelopes(id, other); },
                                               [&] {
                                                   EXPECT_EQ(instance->dataEnvelopes(id), stored);
                                                   EXPECT_EQ(gl.living(), living);
                                               });
    EXPECT_GT(failures, 10U) << "cells, keys, rectangles, the index, the mesh, the object, the key";
    EXPECT_EQ(instance->dataEnvelopes(id)->total(), 3U) << "the last attempt was let through";
}

TEST_F(Gles3DataEnvelopesFailureTest, ExhaustedMemoryLeavesAnUnsetIdUnset) {
    auto const living = gl.living();
    size_t const failures = failEachAllocation([&] { instance->dataEnvelopes(id, twoCells); },
                                               [&] {
                                                   EXPECT_FALSE(instance->dataEnvelopesSet(id));
                                                   EXPECT_EQ(gl.living(), living);
                                               });
    EXPECT_GT(failures, 10U);
    EXPECT_TRUE(instance->dataEnvelopesSet(id));
}

TEST_F(Gles3DataEnvelopesFailureTest, SetThatFailsLeavesCellsIdAndMeshOfTheObject) {
    auto const set = std::make_shared<Gles3DataEnvelopes>();
    set->set(id, twoCells);
    Bytes const mesh = meshOf(set);
    auto const expectUnchanged = [&] {
        EXPECT_EQ(set->total(), 2U);
        EXPECT_EQ(set->count(), 2U);
        EXPECT_EQ(set->id(), id);
        EXPECT_EQ(set->indexCount(), 12U);
        EXPECT_EQ(meshOf(set), mesh);
    };
    EXPECT_EQ(failureOf([&] { set->set(Bytes{9}, badCell); }), kBadCell);
    expectUnchanged();
    Data const other = {{{}, {{1, 1}, {2, 1}, {5, 5}}}};
    EXPECT_GT(failEachAllocation([&] { set->set(Bytes{9}, other); }, expectUnchanged), 10U);
    EXPECT_EQ(set->total(), 3U);
}

} // namespace
