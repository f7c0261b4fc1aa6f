// An input is which valid store is edited, whether its checksums are made to fit again afterwards, and edits: places
// and bytes.
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/FuzzStores.h"

#include <algorithm>

namespace {

// Pages begin with what says how they are laid out, and their cells lie at their ends.
size_t placeOf(fuzz::Input& input, size_t size) {
    size_t const page = input.byte();
    bool const fromEnd = input.flag();
    size_t const offset = input.below(1 << 11);
    size_t const place = fromEnd ? page * 4096 + 4095 - offset : page * 4096 + offset;
    return place % size;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    std::string file = fuzzstores::valid(input.below(fuzzstores::kValid));
    bool const sealed = input.flag();
    while (input.left() > 0) {
        size_t const place = placeOf(input, file.size());
        std::string const text = input.text(input.within(1, 16));
        std::copy_n(text.begin(), std::min(text.size(), file.size() - place),
                    file.begin() + static_cast<std::ptrdiff_t>(place));
    }
    std::string const path = fuzzstores::folder().path("store.vlm");
    writeFile(path, file);
    if (sealed) fuzzstores::Surgery(path).seal();
    fuzzstores::use(path);
    return 0;
}
