// An input is which valid store is changed, and what plain SQL does to it: operations and their values, as choices.
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/FuzzStores.h"
#include "tests/host/store/HostileStores.h"

#include <zstd.h>

#include <array>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::array<char const*, 26> kKeys{"width",
                                            "height",
                                            "bands",
                                            "bits",
                                            "residualBits",
                                            "levels",
                                            "tileSize",
                                            "micronsPerPixelX",
                                            "sourceName",
                                            "interpretation",
                                            "selection",
                                            "rangeLow",
                                            "rangeHigh",
                                            "crc",
                                            "version",
                                            "micronsPerPixelY",
                                            "index0",
                                            "index1",
                                            "index2",
                                            "index12",
                                            "",
                                            "Width",
                                            "x",
                                            "index-1",
                                            "metadata",
                                            "metadataCrc"};
constexpr std::array<char const*, 16> kNumbers{"0",         "1",          "-1",         "2",
                                               "16",        "17",         "2048",       "134217728",
                                               "134217729", "2147483648", "4294967296", "9223372036854775807",
                                               "1e12",      "-0.0",       "nan",        "00000000000000000016"};
constexpr std::array<char const*, 14> kSchema{
    "DROP TABLE tiles",
    "DROP TABLE meta",
    "DROP INDEX tiles_with_data",
    "ALTER TABLE tiles ADD COLUMN more",
    "ALTER TABLE meta RENAME TO other",
    "ALTER TABLE tiles RENAME COLUMN value TO values_",
    "CREATE INDEX tiles_with_data ON tiles(id) WHERE value IS NULL",
    "CREATE TABLE more(id INTEGER PRIMARY KEY)",
    "CREATE VIEW tiles_with_data AS SELECT 1",
    "CREATE TRIGGER tiles AFTER INSERT ON tiles BEGIN DELETE FROM tiles; END",
    "CREATE TRIGGER meta AFTER UPDATE ON meta BEGIN UPDATE meta SET value = key; END",
    "DROP TABLE metadata",
    "CREATE TABLE metadata(id INTEGER PRIMARY KEY, kind, name, crc, data)",
    "ANALYZE"};
constexpr std::array<char const*, 11> kPragmas{
    "user_version = 1",        "user_version = 2",    "user_version = 3",        "user_version = 5",
    "application_id = 1",      "encoding = 'UTF-16'", "page_size = 512; VACUUM", "page_size = 16384; VACUUM",
    "auto_vacuum = 1; VACUUM", "journal_mode = WAL",  "writable_schema = ON"};

std::string quoted(std::string const& text) {
    std::string hex = "CAST(x'";
    constexpr char kDigits[] = "0123456789abcdef";
    for (char const byte : text) {
        hex += kDigits[static_cast<unsigned char>(byte) / 16];
        hex += kDigits[static_cast<unsigned char>(byte) % 16];
    }
    return hex + "' AS TEXT)";
}

std::string value(fuzz::Input& input) {
    switch (input.below(8)) {
    case 0:
        return std::to_string(input.number<std::int64_t>());
    case 1:
        return std::to_string(input.number<std::int16_t>());
    case 2:
        return "NULL";
    case 3:
        return quoted(input.text(input.byte()));
    case 4:
        return "zeroblob(" + std::to_string(input.below(1 << 20)) + ")";
    case 5:
        return "'" + std::string(kNumbers.at(input.below(kNumbers.size()))) + "'";
    case 6:
        return std::to_string(static_cast<double>(input.number<std::int32_t>()) / 7);
    default:
        return std::to_string(input.byte());
    }
}

std::string aTile(fuzz::Input& input) {
    return " WHERE id = (SELECT id FROM tiles LIMIT 1 OFFSET " + std::to_string(input.byte()) + ")";
}

std::string aKey(fuzz::Input& input) {
    return std::string(" WHERE key = '") + kKeys.at(input.below(kKeys.size())) + "'";
}

// A frame that says how long its content is, and has other content, none, or another head.
Bytes frame(fuzz::Input& input) {
    Bytes const content(input.flag() ? 2 * 16 * 16 : input.below(1 << 16), input.byte());
    Bytes data(ZSTD_compressBound(content.size()));
    data.resize(ZSTD_compress(data.data(), data.size(), content.data(), content.size(), 1));
    switch (input.below(4)) {
    case 0: {
        // Magic, a head of one segment with 8 bytes of size, a block of one byte repeated: gigabytes of few bytes.
        Bytes claim{0x28, 0xb5, 0x2f, 0xfd, 0xe0};
        for (std::uint64_t size = input.number<std::uint64_t>(), i = 0; i < 8; ++i, size >>= 8)
            claim.push_back(static_cast<std::uint8_t>(size));
        claim.insert(claim.end(), {0x03, 0xff, 0xff, 0x00});
        return claim;
    }
    case 1:
        data.resize(input.below(data.size() + 1));
        return data;
    case 2:
        data.at(input.below(data.size())) = input.byte();
        return data;
    default:
        return data;
    }
}

std::string endlessView(fuzz::Input& input) {
    std::string const select = std::string(hostilestores::kEndless) + " SELECT ";
    if (input.flag()) return "DROP TABLE meta; CREATE VIEW meta(key, value) AS " + select + "n, n FROM r";
    return "DROP TABLE tiles; CREATE VIEW tiles(id, value, crc, data) AS " + select + "n, 0, 0, NULL FROM r";
}

void operate(fuzzstores::Surgery& surgery, fuzz::Input& input) {
    switch (input.below(15)) {
    case 0:
        return surgery.run("UPDATE OR REPLACE meta SET value = " + value(input) + aKey(input));
    case 1:
        return surgery.run("UPDATE OR REPLACE meta SET key = " + value(input) + aKey(input));
    case 2:
        return surgery.run("INSERT OR REPLACE INTO meta VALUES(" + value(input) + "," + value(input) + ")");
    case 3:
        return surgery.run("DELETE FROM meta" + aKey(input));
    case 4: {
        constexpr char const* kColumns[] = {"id", "value", "crc", "data"};
        char const* const column = kColumns[input.below(4)];
        std::string const to = value(input);
        return surgery.run("UPDATE OR REPLACE tiles SET " + std::string(column) + " = " + to + aTile(input));
    }
    case 5:
        return surgery.run("DELETE FROM tiles" + aTile(input));
    case 6:
        return surgery.run("INSERT OR REPLACE INTO tiles VALUES(" + value(input) + "," + value(input) + "," +
                           value(input) + "," + value(input) + ")");
    case 7: {
        Bytes const data = frame(input);
        return surgery.run("UPDATE tiles SET value = NULL, data = ?1" + aTile(input), data);
    }
    case 8:
        return surgery.run(kSchema.at(input.below(kSchema.size())));
    case 9:
        return surgery.run(std::string("PRAGMA ") + kPragmas.at(input.below(kPragmas.size())));
    case 10:
        return surgery.run(endlessView(input));
    case 12: {
        constexpr char const* kColumns[] = {"id", "kind", "name", "crc", "data"};
        char const* const column = kColumns[input.below(5)];
        std::string const to = value(input);
        return surgery.run("UPDATE OR REPLACE metadata SET " + std::string(column) + " = " + to +
                           " WHERE id = " + std::to_string(input.below(8)));
    }
    case 13:
        return surgery.run("INSERT OR REPLACE INTO metadata VALUES(" + value(input) + "," + value(input) + "," +
                           value(input) + "," + value(input) + "," + value(input) + ")");
    case 14: {
        Bytes const data = input.bytes(input.byte());
        return surgery.run("UPDATE metadata SET data = ?1 WHERE id = " + std::to_string(input.below(8)), data);
    }
    default:
        return surgery.run("UPDATE sqlite_master SET sql = " + value(input) + ", rootpage = " + value(input) +
                           " WHERE name = " + (input.flag() ? "'meta'" : "'tiles'"));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    std::string const path = fuzzstores::folder().path("store.vlm");
    writeFile(path, fuzzstores::valid(input.below(fuzzstores::kValid)));
    {
        fuzzstores::Surgery surgery(path);
        bool const sealed = input.flag();
        for (size_t operations = 0; operations < 12 && input.left() > 0; ++operations)
            operate(surgery, input);
        if (sealed) surgery.seal();
    }
    fuzzstores::use(path);
    return 0;
}
