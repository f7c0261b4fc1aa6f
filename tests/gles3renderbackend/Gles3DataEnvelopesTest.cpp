#include "gles3renderbackend/Gles3DataEnvelopes.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <cstdint>
#include <cstring>

namespace {

using namespace backendtest;

using Data = DataEnvelopes::Data;
using Cells = std::vector<std::vector<unsigned int>>;

constexpr char const* kMissing =
    "#Name:Requested DataEnvelopes doesn't exist#Location:DataEnvelopes Gles3RenderBackendInstance::dataEnvelopes(  "
    "std::string const& id)";

// One element with these cells.
Data one(Cells const& cells) {
    return {{{}, cells}};
}

// Cells that touch nowhere: as many rectangles.
Cells apart(unsigned int count) {
    Cells cells;
    for (unsigned int i = 0; i < count; ++i)
        cells.push_back({2 * i, 0});
    return cells;
}

class Gles3DataEnvelopesTest : public BackendRecordingTest {
protected:
    template <class T>
    std::vector<T> contents(Gles3Buffer const& buffer) const {
        auto const& bytes = gl.buffer(buffer.buffer()).bytes;
        std::vector<T> values(bytes.size() / sizeof(T));
        if (!values.empty()) std::memcpy(values.data(), bytes.data(), bytes.size());
        return values;
    }
    std::vector<float> vertices(Gles3DataEnvelopes const& set) const { return contents<float>(set.vertexBuffer()); }
    std::vector<GLushort> indices(Gles3DataEnvelopes const& set) const { return contents<GLushort>(set.indexBuffer()); }

    static Gles3DataEnvelopes const& gles3Set(std::shared_ptr<DataEnvelopes const> const& set) {
        return dynamic_cast<Gles3DataEnvelopes const&>(*set);
    }

    void restart(size_t budget) {
        instance.reset();
        other = std::make_unique<Gles3RenderBackend>(RenderBackend::RGBA32, budget);
        instance = other->createInstance(surface);
    }

    std::unique_ptr<Gles3RenderBackend> other;
    Bytes const id = {1, 0, 255};
    Bytes const a = {'a'};
    Bytes const b = {'b'};
    Bytes const c = {'c'};
};

// The mesh

TEST_F(Gles3DataEnvelopesTest, NewObjectHasTwoBufferNamesAndNothingToDraw) {
    gl.forgetCalls();
    Gles3DataEnvelopes const set;
    EXPECT_EQ(gl.names(), (std::vector<std::string>{"glGenBuffers", "glGenBuffers"}));
    EXPECT_NE(set.vertexBuffer().buffer(), set.indexBuffer().buffer());
    EXPECT_EQ(set.indexCount(), 0U);
    EXPECT_EQ(set.count(), 0U);
    EXPECT_EQ(set.total(), 0U);
}

// Deliberate: the inclusive corners as they are, so the triangles end one pixel before the last cell does.
TEST_F(Gles3DataEnvelopesTest, RectangleBecomesFourFloatCornersAndSixIndices) {
    Gles3DataEnvelopes set;
    set.set(id, one({{3, 7}, {4, 7}, {5, 7}, {3, 8}, {4, 8}, {5, 8}}));
    EXPECT_EQ(vertices(set), (std::vector<float>{3, 7, 3, 8, 5, 8, 5, 7}));
    EXPECT_EQ(indices(set), (std::vector<GLushort>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(set.indexCount(), 6U);
    EXPECT_EQ(set.total(), 6U);
    EXPECT_EQ(set.id(), id);
}

TEST_F(Gles3DataEnvelopesTest, CornersAreStoredAsFloatBits) {
    Gles3DataEnvelopes set;
    set.set(id, one({{1, 2}}));
    std::vector<std::uint32_t> const bits = contents<std::uint32_t>(set.vertexBuffer());
    std::uint32_t const oneBits = 0x3F800000;
    std::uint32_t const twoBits = 0x40000000;
    EXPECT_EQ(bits,
              (std::vector<std::uint32_t>{oneBits, twoBits, oneBits, twoBits, oneBits, twoBits, oneBits, twoBits}));
}

TEST_F(Gles3DataEnvelopesTest, LargestCoordinatesBecomeTheNearestFloat) {
    Gles3DataEnvelopes set;
    set.set(id, one({{4294967295U, 4294967294U}}));
    EXPECT_EQ(vertices(set).at(0), 4294967296.0F);
    EXPECT_EQ(vertices(set).at(1), 4294967296.0F);
}

TEST_F(Gles3DataEnvelopesTest, RectanglesFollowEachOtherRowBeforeColumn) {
    Gles3DataEnvelopes set;
    set.set(id, one({{9, 4}, {1, 6}, {5, 4}}));
    EXPECT_EQ(vertices(set), (std::vector<float>{5, 4, 5, 4, 5, 4, 5, 4, //
                                                 9, 4, 9, 4, 9, 4, 9, 4, //
                                                 1, 6, 1, 6, 1, 6, 1, 6}));
    EXPECT_EQ(indices(set), (std::vector<GLushort>{0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7, 8, 9, 10, 8, 10, 11}));
}

TEST_F(Gles3DataEnvelopesTest, ElementsAreMergedEachAloneForTheMeshAndTogetherForTheIndex) {
    Gles3DataEnvelopes set;
    set.set(id, {{{}, {{5, 0}}}, {{}, {}}, {{}, {{4, 0}, {4, 0}}}});
    EXPECT_EQ(set.count(), 1U);
    EXPECT_EQ(set.total(), 2U);
    EXPECT_EQ(vertices(set), (std::vector<float>{5, 0, 5, 0, 5, 0, 5, 0, 4, 0, 4, 0, 4, 0, 4, 0}))
        << "in the order of the elements";
    EXPECT_EQ(set.indexCount(), 12U);
}

TEST_F(Gles3DataEnvelopesTest, SixteenBitListsChangeNothing) {
    Gles3DataEnvelopes set;
    set.set(id, {{{1, 2, 65535}, {{4, 3}}}});
    EXPECT_EQ(vertices(set), (std::vector<float>{4, 3, 4, 3, 4, 3, 4, 3}));
    EXPECT_EQ(set.total(), 1U);
}

TEST_F(Gles3DataEnvelopesTest, EmptyDataGivesAnEmptyMeshAndNoCoverage) {
    Gles3DataEnvelopes set;
    set.set(id, {});
    EXPECT_EQ(set.indexCount(), 0U);
    EXPECT_EQ(set.total(), 0U);
    EXPECT_TRUE(vertices(set).empty());
    EXPECT_TRUE(indices(set).empty());
    EXPECT_EQ(set.coverage({0, 0}, {4294967295U, 4294967295U}), 0);
}

TEST_F(Gles3DataEnvelopesTest, CoverageIsThatOfTheBase) {
    Gles3DataEnvelopes set;
    set.set(id, one({{3, 7}, {4, 7}, {3, 8}, {4, 8}}));
    EXPECT_EQ(set.coverage({3, 7}, {4, 8}), 2) << "just the one envelope";
    EXPECT_EQ(set.coverage({3, 7}, {5, 8}), 1) << "one column more";
    EXPECT_EQ(set.coverage({5, 7}, {9, 8}), 0);
}

TEST_F(Gles3DataEnvelopesTest, EachBufferIsFilledWithOneCallForStaticDrawing) {
    Gles3DataEnvelopes set;
    gl.forgetCalls();
    set.set(id, one(apart(5)));
    EXPECT_EQ(gl.texts(),
              (std::vector<std::string>{
                  "glBindBuffer(GL_ARRAY_BUFFER, " + std::to_string(set.vertexBuffer().buffer()) + ")",
                  "glBufferData(GL_ARRAY_BUFFER, 160, data, GL_STATIC_DRAW)",
                  "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, " + std::to_string(set.indexBuffer().buffer()) + ")",
                  "glBufferData(GL_ELEMENT_ARRAY_BUFFER, 60, data, GL_STATIC_DRAW)"}));
}

TEST_F(Gles3DataEnvelopesTest, SettingAgainReplacesTheMesh) {
    Gles3DataEnvelopes set;
    set.set(id, one(apart(5)));
    set.set(a, one({{8, 9}}));
    EXPECT_EQ(vertices(set), (std::vector<float>{8, 9, 8, 9, 8, 9, 8, 9}));
    EXPECT_EQ(set.indexCount(), 6U);
    EXPECT_EQ(set.total(), 1U);
    EXPECT_EQ(set.id(), a);
}

TEST_F(Gles3DataEnvelopesTest, LargestIndexBelongsToTheLastOf16384Rectangles) {
    Gles3DataEnvelopes set;
    set.set(id, one(apart(16384)));
    std::vector<GLushort> const all = indices(set);
    ASSERT_EQ(all.size(), 16384U * 6);
    EXPECT_EQ(std::vector<GLushort>(all.end() - 6, all.end()),
              (std::vector<GLushort>{65532, 65533, 65534, 65532, 65534, 65535}));
}

// Deliberate: a limit that is accepted; the rectangles beyond it are drawn at the place of the first ones.
TEST_F(Gles3DataEnvelopesTest, IndicesWrapBeyond16384Rectangles) {
    Gles3DataEnvelopes set;
    set.set(id, one(apart(16386)));
    std::vector<GLushort> const all = indices(set);
    ASSERT_EQ(all.size(), 16386U * 6);
    EXPECT_EQ(set.indexCount(), all.size());
    EXPECT_EQ(std::vector<GLushort>(all.end() - 12, all.end()),
              (std::vector<GLushort>{0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7}));
    EXPECT_EQ(vertices(set).size(), 16386U * 8) << "the vertices are all there";
}

TEST_F(Gles3DataEnvelopesTest, CopiesShareTheBuffersAndTheLastOneDeletesThem) {
    gl.forgetCalls();
    {
        Gles3DataEnvelopes copy;
        {
            Gles3DataEnvelopes set;
            set.set(id, one({{1, 1}}));
            copy = set;
            EXPECT_EQ(copy.vertexBuffer().buffer(), set.vertexBuffer().buffer());
            EXPECT_EQ(gl.count("glDeleteBuffers"), 2U) << "those that the copy had before";
        }
        EXPECT_EQ(gl.count("glDeleteBuffers"), 2U);
        EXPECT_EQ(copy.indexCount(), 6U);
    }
    EXPECT_EQ(gl.count("glDeleteBuffers"), 4U);
}

// The instance's cache

TEST_F(Gles3DataEnvelopesTest, StoredSetIsFoundUnderItsIdAndNoOther) {
    EXPECT_FALSE(instance->dataEnvelopesSet(id));
    instance->dataEnvelopes(id, one({{1, 2}}));
    EXPECT_TRUE(instance->dataEnvelopesSet(id));
    EXPECT_FALSE(instance->dataEnvelopesSet({1, 0}));
    EXPECT_FALSE(instance->dataEnvelopesSet({}));
    EXPECT_EQ(instance->dataEnvelopes(id)->total(), 1U);
    EXPECT_EQ(instance->dataEnvelopes(id)->id(), id);
    EXPECT_EQ(gles3Set(instance->dataEnvelopes(id)).indexCount(), 6U);
}

TEST_F(Gles3DataEnvelopesTest, EmptyIdIsAnIdLikeAnyOther) {
    instance->dataEnvelopes(Bytes{}, one(apart(2)));
    EXPECT_TRUE(instance->dataEnvelopesSet({}));
    EXPECT_EQ(instance->dataEnvelopes(Bytes{})->total(), 2U);
}

TEST_F(Gles3DataEnvelopesTest, EmptySetIsASetThatExists) {
    instance->dataEnvelopes(id, {});
    EXPECT_TRUE(instance->dataEnvelopesSet(id));
    EXPECT_EQ(instance->dataEnvelopes(id)->total(), 0U);
}

TEST_F(Gles3DataEnvelopesTest, GetterOfAnIdThatWasNeverSetThrowsAndCreatesNothing) {
    EXPECT_EQ(failureOf([&] { instance->dataEnvelopes(id); }), kMissing);
    EXPECT_FALSE(instance->dataEnvelopesSet(id));
}

TEST_F(Gles3DataEnvelopesTest, GetterSharesTheStoredObject) {
    instance->dataEnvelopes(id, one({{1, 2}}));
    EXPECT_EQ(instance->dataEnvelopes(id), instance->dataEnvelopes(id));
}

TEST_F(Gles3DataEnvelopesTest, ReplacedObjectStaysAsItWasForItsHolders) {
    instance->dataEnvelopes(id, one({{1, 2}}));
    auto const before = instance->dataEnvelopes(id);
    instance->dataEnvelopes(id, one(apart(3)));
    EXPECT_NE(instance->dataEnvelopes(id), before);
    EXPECT_EQ(instance->dataEnvelopes(id)->total(), 3U);
    EXPECT_EQ(before->total(), 1U);
    EXPECT_EQ(vertices(gles3Set(before)), (std::vector<float>{1, 2, 1, 2, 1, 2, 1, 2}));
}

TEST_F(Gles3DataEnvelopesTest, ReplacedObjectWithoutHoldersIsDeleted) {
    instance->dataEnvelopes(id, one({{1, 2}}));
    auto const living = gl.living().size();
    gl.forgetCalls();
    instance->dataEnvelopes(id, one({{1, 3}}));
    EXPECT_EQ(gl.count("glDeleteBuffers"), 2U);
    EXPECT_EQ(gl.living().size(), living);
}

TEST_F(Gles3DataEnvelopesTest, EnvelopeCosts112Bytes) {
    restart(2 * 112);
    instance->dataEnvelopes(a, one(apart(1)));
    instance->dataEnvelopes(b, one(apart(1)));
    EXPECT_TRUE(instance->dataEnvelopesSet(a)) << "224 bytes hold two";
    instance->dataEnvelopes(c, one(apart(1)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a));
    EXPECT_TRUE(instance->dataEnvelopesSet(b));
    EXPECT_TRUE(instance->dataEnvelopesSet(c));

    restart(2 * 112 - 1);
    instance->dataEnvelopes(a, one(apart(1)));
    instance->dataEnvelopes(b, one(apart(1)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a)) << "223 bytes hold one";
}

TEST_F(Gles3DataEnvelopesTest, CostCountsMergedEnvelopesNotCells) {
    restart(112);
    instance->dataEnvelopes(a, one({{0, 0}, {1, 0}, {0, 1}, {1, 1}, {1, 1}}));
    instance->dataEnvelopes(b, {});
    EXPECT_TRUE(instance->dataEnvelopesSet(a)) << "one envelope, and an empty set costs nothing";
    instance->dataEnvelopes(b, one(apart(1)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a));
}

TEST_F(Gles3DataEnvelopesTest, ReplacingASetReplacesItsCost) {
    restart(4 * 112);
    instance->dataEnvelopes(a, one(apart(3)));
    instance->dataEnvelopes(a, one(apart(1)));
    instance->dataEnvelopes(b, one(apart(3)));
    EXPECT_TRUE(instance->dataEnvelopesSet(a));
    instance->dataEnvelopes(b, one(apart(4)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a));
}

TEST_F(Gles3DataEnvelopesTest, GettingASetIsNoUseThatKeepsIt) {
    restart(2 * 112);
    instance->dataEnvelopes(a, one(apart(1)));
    instance->dataEnvelopes(b, one(apart(1)));
    instance->dataEnvelopes(a); // still the oldest
    EXPECT_TRUE(instance->dataEnvelopesSet(a));
    instance->dataEnvelopes(c, one(apart(1)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a));
    EXPECT_TRUE(instance->dataEnvelopesSet(b));
}

TEST_F(Gles3DataEnvelopesTest, EvictedSetStaysValidForItsHolders) {
    restart(112);
    instance->dataEnvelopes(a, one({{1, 2}}));
    auto const held = instance->dataEnvelopes(a);
    instance->dataEnvelopes(b, one(apart(1)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a));
    EXPECT_EQ(vertices(gles3Set(held)), (std::vector<float>{1, 2, 1, 2, 1, 2, 1, 2}));
}

TEST_F(Gles3DataEnvelopesTest, LockedSetStaysAndItsBytesDoNotCount) {
    restart(112);
    instance->dataEnvelopes(a, one(apart(1)));
    instance->lockDataEnvelopes(a);
    instance->lockDataEnvelopes(a); // a flag, not a count
    instance->dataEnvelopes(b, one(apart(1)));
    EXPECT_TRUE(instance->dataEnvelopesSet(a));
    EXPECT_TRUE(instance->dataEnvelopesSet(b)) << "the budget is all for the unlocked one";
    instance->unlockDataEnvelopes(a);
    instance->dataEnvelopes(c, one(apart(1)));
    EXPECT_FALSE(instance->dataEnvelopesSet(a));
    EXPECT_FALSE(instance->dataEnvelopesSet(b));
    EXPECT_TRUE(instance->dataEnvelopesSet(c));
}

TEST_F(Gles3DataEnvelopesTest, ReplacedSetStaysLocked) {
    restart(112);
    instance->dataEnvelopes(a, one(apart(1)));
    instance->lockDataEnvelopes(a);
    instance->dataEnvelopes(a, one(apart(5)));
    instance->dataEnvelopes(b, one(apart(1)));
    instance->dataEnvelopes(c, one(apart(1)));
    EXPECT_TRUE(instance->dataEnvelopesSet(a));
    EXPECT_FALSE(instance->dataEnvelopesSet(b));
    EXPECT_TRUE(instance->dataEnvelopesSet(c));
}

TEST_F(Gles3DataEnvelopesTest, LockingAndUnlockingAnAbsentIdIsIgnored) {
    instance->lockDataEnvelopes(id);
    EXPECT_FALSE(instance->dataEnvelopesSet(id));
    instance->unlockDataEnvelopes(id);
    EXPECT_FALSE(instance->dataEnvelopesSet(id));
}

TEST_F(Gles3DataEnvelopesTest, SameIdUnderTwoInstancesNamesTwoEntries) {
    instance->dataEnvelopes(id, one(apart(1)));
    auto const first = instance;
    instance->eraseTarget(0); // an empty target table lets the backend make a second instance on the same caches
    instance = backend.createInstance(surface);
    EXPECT_FALSE(instance->dataEnvelopesSet(id));
    EXPECT_EQ(failureOf([&] { instance->dataEnvelopes(id); }), kMissing);
    instance->dataEnvelopes(id, one(apart(2)));
    EXPECT_EQ(instance->dataEnvelopes(id)->total(), 2U);
    EXPECT_EQ(first->dataEnvelopes(id)->total(), 1U);
}

} // namespace
