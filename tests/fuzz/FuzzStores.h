#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;

/// Stores for the fuzz targets: valid ones, ways to change them that no program takes, and what is done with each.
namespace fuzzstores {

/// A folder of the process.
TemporaryFolder const& folder();

/// How many there are, and the bytes of one: 8 bits of RGB, 16 bits of grey and alpha, and each in versions 1, 2
/// and 3.
constexpr size_t kValid = 8;
std::string const& valid(size_t which);

/// Opens, checks, reads and exports what lies there. Ends the program where it fails with anything but what a damaged
/// store is documented to fail with, or where what is read contradicts itself.
void use(std::string const& path);

/// A file that a plain SQLite changes: whatever a statement says, it comes to an end, and failures are passed over.
class Surgery {
public:
    explicit Surgery(std::string const& path);

    void run(std::string const& statements);
    void run(std::string const& statement, std::vector<std::uint8_t> const& blob);
    /// Checksums as they have to be, of every tile that can be decompressed, of the index, of the metadata and of the
    /// description.
    void seal();

private:
    std::int64_t version();
    void sealTiles();
    void sealIndex();
    void sealMetadata();
    void sealDescription();

    std::shared_ptr<sqlite3> database_;
};

} // namespace fuzzstores
