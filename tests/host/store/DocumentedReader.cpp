#include "tests/host/store/DocumentedReader.h"

#include <sqlite3.h>
#include <zlib.h>
#include <zstd.h>

#include <stdexcept>

namespace {

using Number = std::int64_t;
using Numbers = std::vector<Number>;
using Bytes = std::vector<std::uint8_t>;

constexpr Number kResidual = 4;

void require(bool holds, std::string const& what) {
    if (!holds) throw std::runtime_error(what);
}

Number floorOf(Number dividend, Number divisor) {
    return dividend >= 0 ? dividend / divisor : -((-dividend + divisor - 1) / divisor);
}

std::shared_ptr<sqlite3_stmt> prepared(sqlite3* database, std::string const& text) {
    sqlite3_stmt* statement = nullptr;
    int const code = sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr);
    require(code == SQLITE_OK, sqlite3_errmsg(database));
    return {statement, sqlite3_finalize};
}

bool next(sqlite3_stmt* statement) {
    int const code = sqlite3_step(statement);
    require(code == SQLITE_ROW || code == SQLITE_DONE, "a row cannot be read");
    return code == SQLITE_ROW;
}

std::string textAt(sqlite3_stmt* statement, int column) {
    auto const* const text = reinterpret_cast<char const*>(sqlite3_column_text(statement, column));
    return {text, static_cast<size_t>(sqlite3_column_bytes(statement, column))};
}

std::uint32_t crcOf(Bytes const& bytes) {
    return static_cast<std::uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

void append(Bytes& bytes, Number number, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(number) >> (8 * i)));
}

// The least even number M with 2M - 4 >= N.
Number bandSamples(Number samples) {
    Number count = 0;
    while (2 * count - 4 < samples)
        count += 2;
    return count;
}

// One row or column: low from L[0], high from H[-1].
Numbers rebuilt(Numbers const& low, Numbers const& high, Number count) {
    Numbers x(2 * low.size());
    for (size_t n = 0; n + 1 < low.size(); ++n)
        x[2 * n] = low[n] - floorOf(high[n] + high[n + 1] + 2, 4);
    for (size_t n = 0; n + 2 < low.size(); ++n)
        x[2 * n + 1] = high[n + 1] + floorOf(x[2 * n] + x[2 * n + 2], 2);
    x.resize(static_cast<size_t>(count));
    return x;
}

Numbers codesToSamples(Bytes const& bytes, Number version) {
    size_t const count = bytes.size() / 2;
    Numbers samples(count);
    for (size_t i = 0; i < count; ++i) {
        Number const code = bytes[i] + 256 * bytes[count + i];
        if (version == 1)
            samples[i] = code < 32768 ? code : code - 65536;
        else
            samples[i] = code % 2 == 0 ? code / 2 : -(code + 1) / 2;
    }
    return samples;
}

Bytes unpacked(void const* data, int size, size_t expected) {
    require(data != nullptr, "a tile has neither value nor data");
    auto const frameBytes = static_cast<size_t>(size);
    require(ZSTD_getFrameContentSize(data, frameBytes) == expected, "a frame has another length");
    Bytes bytes(expected);
    require(ZSTD_decompress(bytes.data(), expected, data, frameBytes) == expected, "a frame does not unpack");
    return bytes;
}

} // namespace

DocumentedReader::DocumentedReader(std::string const& path) {
    sqlite3* database = nullptr;
    int const code = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
    database_.reset(database, sqlite3_close);
    require(code == SQLITE_OK, "the file does not open");
    require(column("PRAGMA application_id").at(0) == 0x564c4d53, "the file is no store");
    version_ = column("PRAGMA user_version").at(0);
    require(version_ >= 1 && version_ <= 4, "the version is unknown");
    require(column("PRAGMA page_size").at(0) == (version_ == 1 ? 16384 : 4096), "a page has another size");
    readDescription();
    checkDescription();
    if (version_ >= 3) checkIndex();
    if (version_ >= 4) readMetadata();
}

Number DocumentedReader::number(std::string const& key) const {
    return std::stoll(description_.at(key));
}

Number DocumentedReader::idOf(Number level, Number band, Number plane, Number column, Number row) {
    constexpr Number kPositions = 1 << 24;
    return (((level * kPositions + row) * kPositions + column) * 8 + band) * 4 + plane;
}

Numbers DocumentedReader::column(std::string const& statement) const {
    auto const query = prepared(database_.get(), statement);
    Numbers numbers;
    while (next(query.get()))
        numbers.push_back(sqlite3_column_int64(query.get(), 0));
    return numbers;
}

void DocumentedReader::readDescription() {
    auto const query = prepared(database_.get(), "SELECT key, value FROM meta");
    while (next(query.get()))
        description_[textAt(query.get(), 0)] = textAt(query.get(), 1);
}

Bytes DocumentedReader::codesOf(Numbers const& samples, Number version) {
    size_t const count = samples.size();
    Bytes bytes(2 * count);
    for (size_t i = 0; i < count; ++i) {
        Number const sample = samples[i];
        Number const code = version == 1 ? (sample + 65536) % 65536 : sample >= 0 ? 2 * sample : -2 * sample - 1;
        bytes[i] = static_cast<std::uint8_t>(code % 256);
        bytes[count + i] = static_cast<std::uint8_t>(code / 256);
    }
    return bytes;
}

std::uint32_t DocumentedReader::checksumOf(std::map<std::string, std::string> const& description) {
    Bytes bytes;
    // A std::map sorts texts by their bytes.
    for (auto const& [key, value] : description) {
        if (key == "crc") continue;
        for (std::string const& text : {key, value}) {
            bytes.insert(bytes.end(), text.begin(), text.end());
            bytes.push_back(0);
        }
    }
    return crcOf(bytes);
}

void DocumentedReader::checkDescription() const {
    if (version_ >= 3) require(number("version") == version_, "the description is of another version");
    if (version_ == 1 && description_.count("crc") == 0) return;
    require(number("crc") == checksumOf(description_), "the description does not match its checksum");
}

void DocumentedReader::checkIndex() const {
    std::vector<Bytes> keys(static_cast<size_t>(number("levels")) + 1);
    for (Number const id : idsWithData())
        append(keys.at(static_cast<size_t>(id >> 53)), id, 8);
    for (size_t level = 0; level < keys.size(); ++level)
        require(number("index" + std::to_string(level)) == crcOf(keys[level]), "the index does not match its checksum");
}

void DocumentedReader::readMetadata() {
    auto const query = prepared(database_.get(), "SELECT id, kind, name, crc, data FROM metadata ORDER BY id");
    Bytes summed;
    while (next(query.get())) {
        auto const* const data = static_cast<std::uint8_t const*>(sqlite3_column_blob(query.get(), 4));
        Bytes const bytes(data, data + sqlite3_column_bytes(query.get(), 4));
        Number const crc = sqlite3_column_int64(query.get(), 3);
        require(crc == crcOf(bytes), "an item does not match its checksum");
        Item const item{textAt(query.get(), 1), textAt(query.get(), 2), bytes};
        metadata_.push_back(item);
        require(sqlite3_column_int64(query.get(), 0) == static_cast<Number>(metadata_.size()), "an item is missing");
        for (std::string const& text : {item.kind, item.name}) {
            summed.insert(summed.end(), text.begin(), text.end());
            summed.push_back(0);
        }
        append(summed, crc, 4);
    }
    require(number("metadata") == static_cast<Number>(metadata_.size()), "items are missing");
    require(number("metadataCrc") == crcOf(summed), "the metadata does not match its checksum");
}

Numbers DocumentedReader::idsWithData() const {
    return column("SELECT id FROM tiles INDEXED BY tiles_with_data WHERE value IS NULL OR value <> 0 ORDER BY id");
}

Number DocumentedReader::columns(Number level) const {
    return level == 0 ? number("width") : bandSamples(columns(level - 1));
}

Number DocumentedReader::rows(Number level) const {
    return level == 0 ? number("height") : bandSamples(rows(level - 1));
}

Numbers DocumentedReader::ids() const {
    Number const side = number("tileSize");
    Numbers ids;
    for (Number level = number("residualBits") > 0 ? 0 : 1; level <= number("levels"); ++level)
        for (Number row = 0; row * side < rows(level); ++row)
            for (Number column = 0; column * side < columns(level); ++column)
                for (Number band = 0; band <= kResidual; ++band) {
                    bool const exists =
                        level == 0 ? band == kResidual : band != kResidual && (band != 0 || level == number("levels"));
                    for (Number plane = 0; exists && plane < number("bands"); ++plane)
                        ids.push_back(idOf(level, band, plane, column, row));
                }
    return ids;
}

Numbers DocumentedReader::tile(Number id) const {
    Number const side = number("tileSize");
    auto const query = prepared(database_.get(), "SELECT value, crc, data FROM tiles WHERE id = " + std::to_string(id));
    require(next(query.get()), "a tile is missing");
    Number const crc = sqlite3_column_int64(query.get(), 1);
    Bytes summed;
    if (version_ >= 3) append(summed, id, 8);
    if (sqlite3_column_type(query.get(), 0) == SQLITE_NULL) {
        Bytes const bytes = unpacked(sqlite3_column_blob(query.get(), 2), sqlite3_column_bytes(query.get(), 2),
                                     static_cast<size_t>(2 * side * side));
        summed.insert(summed.end(), bytes.begin(), bytes.end());
        require(crc == crcOf(summed), "a tile does not match its checksum");
        return codesToSamples(bytes, version_);
    }
    Number const value = sqlite3_column_int64(query.get(), 0);
    Number const level = id >> 53;
    Number const row = id >> 29 & 0xffffff;
    Number const column = id >> 5 & 0xffffff;
    Numbers samples(static_cast<size_t>(side * side));
    for (Number y = 0; y < side && row * side + y < rows(level); ++y)
        for (Number x = 0; x < side && column * side + x < columns(level); ++x)
            samples[static_cast<size_t>(y * side + x)] = value;
    if (version_ >= 3)
        append(summed, value, 2);
    else
        summed = codesOf(samples, version_);
    require(crc == crcOf(summed), "a tile of one value does not match its checksum");
    return samples;
}

DocumentedReader::Plane DocumentedReader::bandOf(Number level, Number band, Number plane) const {
    Number const side = number("tileSize");
    Plane result{columns(level), rows(level), {}};
    result.samples.resize(static_cast<size_t>(result.width * result.height));
    for (Number y = 0; y < result.height; y += side)
        for (Number x = 0; x < result.width; x += side) {
            Numbers const samples = tile(idOf(level, band, plane, x / side, y / side));
            for (Number i = 0; i < side * side; ++i) {
                Number const toX = x + i % side;
                Number const toY = y + i / side;
                if (toX < result.width && toY < result.height)
                    result.samples[static_cast<size_t>(toY * result.width + toX)] = samples[static_cast<size_t>(i)];
            }
        }
    return result;
}

// LL of a level, rebuilt from the next one's bands; the coarsest is stored. At level 0 the plane itself.
DocumentedReader::Plane DocumentedReader::planeOf(Number level, Number plane) const {
    if (level == number("levels")) return bandOf(level, 0, plane);
    Plane const ll = planeOf(level + 1, plane);
    Plane const hl = bandOf(level + 1, 1, plane);
    Plane const lh = bandOf(level + 1, 2, plane);
    Plane const hh = bandOf(level + 1, 3, plane);
    Number const width = columns(level);
    Number const height = rows(level);
    auto const alongColumn = [&](Plane const& low, Plane const& high, Number x) {
        Numbers lows;
        Numbers highs;
        for (Number y = 0; y < low.height; ++y) {
            lows.push_back(low.samples[static_cast<size_t>(y * low.width + x)]);
            highs.push_back(high.samples[static_cast<size_t>(y * high.width + x)]);
        }
        return rebuilt(lows, highs, height);
    };
    std::vector<Numbers> lowColumns;
    std::vector<Numbers> highColumns;
    for (Number x = 0; x < ll.width; ++x) {
        lowColumns.push_back(alongColumn(ll, lh, x));
        highColumns.push_back(alongColumn(hl, hh, x));
    }
    Plane result{width, height, {}};
    for (size_t y = 0; y < static_cast<size_t>(height); ++y) {
        Numbers low;
        Numbers high;
        for (size_t x = 0; x < lowColumns.size(); ++x) {
            low.push_back(lowColumns[x][y]);
            high.push_back(highColumns[x][y]);
        }
        Numbers const row = rebuilt(low, high, width);
        result.samples.insert(result.samples.end(), row.begin(), row.end());
    }
    return result;
}

Numbers DocumentedReader::picture() const {
    auto const bands = static_cast<size_t>(number("bands"));
    Number const residualBits = number("residualBits");
    std::vector<Plane> planes;
    std::vector<Plane> residuals;
    for (size_t plane = 0; plane < bands; ++plane) {
        planes.push_back(planeOf(0, static_cast<Number>(plane)));
        if (residualBits > 0) residuals.push_back(bandOf(0, kResidual, static_cast<Number>(plane)));
    }
    Numbers picture;
    for (size_t i = 0; i < planes[0].samples.size(); ++i) {
        Numbers pixel;
        for (Plane const& plane : planes)
            pixel.push_back(plane.samples[i]);
        if (bands >= 3) {
            Number const t = pixel[0] - floorOf(pixel[2], 2);
            Number const green = pixel[2] + t;
            Number const blue = t - floorOf(pixel[1], 2);
            Number const red = blue + pixel[1];
            pixel[0] = red;
            pixel[1] = green;
            pixel[2] = blue;
        }
        for (size_t band = 0; band < bands; ++band)
            picture.push_back(residualBits > 0 ? pixel[band] * (Number{1} << residualBits) + residuals[band].samples[i]
                                               : pixel[band]);
    }
    return picture;
}
