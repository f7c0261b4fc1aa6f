// An input is a capacity, a hash, and then operations on the map and on its model, as choices.
#include "tests/fuzz/Fuzz.h"
#include "tests/gles3renderbackend/LruMapModel.h"

namespace {

using namespace lrumaptest;

// Runs of several homes overlap and wrap around the end of the table.
struct CrowdedHash {
    size_t operator()(Key const& key) const { return (key.first + key.second) % 5; }
};

template <class Hash>
void run(size_t capacity, fuzz::Input& input) {
    Pair<LruMap<Key, Counted, Hash>> pair(capacity, [&](size_t end) { return input.below(end); });
    while (input.left() > 0) {
        pair.step();
        pair.compare();
    }
    pair.drain();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    testing::FLAGS_gtest_break_on_failure = true;
    fuzz::Input input(bytes, size);
    bool const crowded = input.flag();
    size_t const capacity = input.byte();
    crowded ? run<CrowdedHash>(capacity, input) : run<boost::hash<Key>>(capacity, input);
    fuzz::require(Counted::alive() == 0, "no value outlives its map");
    return 0;
}
