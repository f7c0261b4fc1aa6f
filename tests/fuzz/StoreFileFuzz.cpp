// An input is a store's file.
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/FuzzStores.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    std::string const path = fuzzstores::folder().path("store.vlm");
    writeFile(path, {bytes, bytes + size});
    fuzzstores::use(path);
    return 0;
}
