#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;

/// Reads a tile store as docs/STORE.md describes it, with SQLite, zstd and zlib alone. Slow, and independent of the
/// product: if the two differ, one of them is wrong, or the description is.
///
/// Every operation throws std::runtime_error if the file is not as described.
class DocumentedReader {
public:
    explicit DocumentedReader(std::string const& path);

    std::int64_t version() const { return version_; }
    std::map<std::string, std::string> const& description() const { return description_; }
    std::int64_t number(std::string const& key) const;

    /// Every sample of the picture: width * height * bands of them, interleaved, rows from the top.
    std::vector<std::int64_t> picture() const;

    /// T * T samples. band: LL 0, HL 1, LH 2, HH 3, residual 4.
    std::vector<std::int64_t> tile(std::int64_t id) const;
    /// The keys of all tiles that must exist, in ascending order.
    std::vector<std::int64_t> ids() const;
    /// The keys in the index of the places with data, in ascending order.
    std::vector<std::int64_t> idsWithData() const;

    /// From version 4 on; bytes and checksums are compared.
    struct Item {
        std::string kind;
        std::string name;
        std::vector<std::uint8_t> bytes;
    };
    std::vector<Item> const& metadata() const { return metadata_; }

    static std::int64_t idOf(std::int64_t level, std::int64_t band, std::int64_t plane, std::int64_t column,
                             std::int64_t row);

    /// The bytes of a tile's codes before compression.
    static std::vector<std::uint8_t> codesOf(std::vector<std::int64_t> const& samples, std::int64_t version);
    /// The checksum of a description.
    static std::uint32_t checksumOf(std::map<std::string, std::string> const& description);

private:
    /// Rows of samples.
    struct Plane {
        std::int64_t width = 0;
        std::int64_t height = 0;
        std::vector<std::int64_t> samples;
    };

    std::vector<std::int64_t> column(std::string const& statement) const;
    void readDescription();
    void checkDescription() const;
    void checkIndex() const;
    void readMetadata();

    Plane bandOf(std::int64_t level, std::int64_t band, std::int64_t plane) const;
    Plane planeOf(std::int64_t level, std::int64_t plane) const;
    std::int64_t columns(std::int64_t level) const;
    std::int64_t rows(std::int64_t level) const;

    std::shared_ptr<sqlite3> database_;
    std::int64_t version_ = 0;
    std::map<std::string, std::string> description_;
    std::vector<Item> metadata_;
};
