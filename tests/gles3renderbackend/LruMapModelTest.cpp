#include "tests/gles3renderbackend/LruMapModel.h"

#include <cstdint>
#include <map>
#include <random>
#include <string>

namespace lrumaptest {
namespace {

// Every key starts its probe at the same slot, with the same stored hash.
struct ConstantHash {
    size_t operator()(Key const&) const { return 42; }
};
// Few distinct hashes, so that runs of several homes overlap and wrap around the end of the table.
struct CrowdedHash {
    size_t operator()(Key const& key) const { return (key.first + key.second) % 5; }
};

template <class Hash>
class LruMapModelTest : public LruMapTest {};

using Hashes = testing::Types<boost::hash<Key>, CrowdedHash, ConstantHash>;
TYPED_TEST_SUITE(LruMapModelTest, Hashes, ); // C++17 wants something after the comma of a variadic macro

TYPED_TEST(LruMapModelTest, RandomOperationsAgreeWithTheNaiveMapAfterEveryStep) {
    for (size_t const capacity : {0u, 1u, 30u, 90u}) {
        for (std::uint64_t start = 1; start <= 4; ++start) {
            SCOPED_TRACE("capacity " + std::to_string(capacity) + ", start " + std::to_string(start));
            std::mt19937_64 random(start);
            Pair<LruMap<Key, Counted, TypeParam>> pair(capacity, [&](size_t end) { return random() % end; });
            for (int i = 0; i < 20000; ++i) {
                pair.step();
                pair.compare();
                if (this->HasFatalFailure()) FAIL() << "step " << i;
            }
            pair.drain();
            if (this->HasFatalFailure()) return;
        }
    }
}

// Enough keys for several growths of the table, and enough churn for long runs to be closed up by erasing.
TYPED_TEST(LruMapModelTest, EveryKeyIsFoundWhileTheTableGrowsAndShrinks) {
    LruMap<Key, Counted, TypeParam> map(kNoLimit);
    std::map<Key, int> model;
    std::mt19937_64 random(11);
    for (int i = 0; i < 3000; ++i) {
        Key const key{1, random() % 400};
        if (random() % 3 != 0) {
            map.get(key).tag = i;
            model[key] = i;
        } else {
            map.erase(key);
            model.erase(key);
        }
        ASSERT_TRUE(invariantsHold(map)) << "step " << i;
        for (size_t id = 0; id < 400; ++id) {
            auto const expected = model.find({1, id});
            Counted const* const value = map.peek({1, id});
            ASSERT_EQ(value != nullptr, expected != model.end()) << "step " << i;
            if (value != nullptr) {
                ASSERT_EQ(value->tag, expected->second);
            }
        }
    }
}

} // namespace
} // namespace lrumaptest
