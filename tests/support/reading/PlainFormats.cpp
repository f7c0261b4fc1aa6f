// Formats with uncompressed samples: Netpbm's, FITS, BMP, libvips' own.
#include "tests/support/reading/FileSamples.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>

using filesamples::Bytes;
using filesamples::Samples;

namespace {

// The bits of a number of `count` bytes.
std::uint64_t bitsAt(Bytes const& bytes, size_t at, size_t count, bool bigEndian) {
    std::uint64_t value = 0;
    for (size_t i = 0; i < count; ++i)
        value |= std::uint64_t{bytes.at(at + i)} << (8 * (bigEndian ? count - 1 - i : i));
    return value;
}

double floatOf(std::uint64_t bits) {
    auto const narrow = static_cast<std::uint32_t>(bits);
    float value = 0;
    std::memcpy(&value, &narrow, sizeof(value));
    return value;
}

double doubleOf(std::uint64_t bits) {
    double value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

// Two's complement.
double signedOf(std::uint64_t bits, size_t bytes) {
    auto const half = std::int64_t{1} << (8 * bytes - 1);
    auto const value = static_cast<std::int64_t>(bits);
    return static_cast<double>(value >= half ? value - 2 * half : value);
}

class Words {
public:
    Words(Bytes const& bytes, size_t at) : bytes_(bytes), at_(at) {}

    std::string next() {
        while (std::isspace(bytes_.at(at_)) != 0 || bytes_.at(at_) == '#') {
            if (bytes_.at(at_) == '#')
                while (bytes_.at(at_) != '\n')
                    ++at_;
            ++at_;
        }
        std::string word;
        while (at_ < bytes_.size() && std::isspace(bytes_[at_]) == 0)
            word += static_cast<char>(bytes_[at_++]);
        return word;
    }

    size_t number() { return std::stoul(next()); }
    size_t afterBlank() const { return at_ + 1; }

private:
    Bytes const& bytes_;
    size_t at_;
};

Samples readPam(Bytes const& bytes) {
    Words words(bytes, 2);
    std::map<std::string, size_t> header;
    for (std::string key = words.next(); key != "ENDHDR"; key = words.next()) {
        if (key == "TUPLTYPE")
            words.next();
        else
            header[key] = words.number();
    }
    Samples samples{header.at("WIDTH"), header.at("HEIGHT"), header.at("DEPTH"), {}};
    size_t const sampleBytes = header.at("MAXVAL") > 255 ? 2 : 1;
    for (size_t i = 0; i < samples.width * samples.height * samples.bands; ++i)
        samples.values.push_back(
            static_cast<double>(bitsAt(bytes, words.afterBlank() + i * sampleBytes, sampleBytes, true)));
    return samples;
}

Samples readPfm(Bytes const& bytes) {
    Words words(bytes, 2);
    Samples samples{words.number(), words.number(), bytes[1] == 'F' ? size_t{3} : size_t{1}, {}};
    bool const bigEndian = std::stod(words.next()) > 0;
    size_t const row = samples.width * samples.bands;
    // The bottom row comes first.
    for (size_t y = samples.height; y-- > 0;)
        for (size_t i = 0; i < row; ++i)
            samples.values.push_back(floatOf(bitsAt(bytes, words.afterBlank() + 4 * (y * row + i), 4, bigEndian)));
    return samples;
}

// The numbers and words of a FITS header, by their keys, and its end.
struct FitsHeader {
    std::map<std::string, std::string> cards;
    size_t end = 0;

    double number(std::string const& key, double otherwise) const {
        auto const card = cards.find(key);
        return card == cards.end() ? otherwise : std::stod(card->second);
    }
    size_t axis(size_t index) const { return static_cast<size_t>(number("NAXIS" + std::to_string(index), 1)); }
};

constexpr size_t kFitsBlock = 2880;
constexpr size_t kFitsCard = 80;

size_t wholeBlocks(size_t bytes) {
    return (bytes + kFitsBlock - 1) / kFitsBlock * kFitsBlock;
}

FitsHeader fitsHeader(Bytes const& bytes, size_t at) {
    FitsHeader header;
    for (size_t card = at;; card += kFitsCard) {
        std::string const text(reinterpret_cast<char const*>(&bytes.at(card)), kFitsCard);
        std::string key = text.substr(0, 8);
        key.erase(key.find_last_not_of(' ') + 1);
        if (key == "END") {
            header.end = at + wholeBlocks(card + kFitsCard - at);
            return header;
        }
        if (text.substr(8, 2) == "= ") header.cards.emplace(key, text.substr(10, text.find('/') - 10));
    }
}

} // namespace

Samples filesamples::readPnm(Bytes const& bytes) {
    char const kind = static_cast<char>(bytes.at(1));
    if (kind == '7') return readPam(bytes);
    if (kind == 'F' || kind == 'f') return readPfm(bytes);
    Words words(bytes, 2);
    Samples samples{words.number(), words.number(), kind == '3' || kind == '6' ? size_t{3} : size_t{1}, {}};
    bool const bitmap = kind == '1' || kind == '4';
    size_t const largest = bitmap ? 1 : words.number();
    size_t const start = words.afterBlank();
    size_t const count = samples.width * samples.height * samples.bands;
    size_t const bitmapRow = (samples.width + 7) / 8;
    for (size_t i = 0; i < count; ++i) {
        if (kind == '4') {
            size_t const x = i % samples.width;
            auto const byte = bytes.at(start + i / samples.width * bitmapRow + x / 8);
            samples.values.push_back((byte >> (7 - x % 8) & 1) != 0 ? 0 : 255);
        } else if (kind < '4') {
            samples.values.push_back(bitmap ? (words.number() == 0 ? 255 : 0) : static_cast<double>(words.number()));
        } else {
            size_t const sampleBytes = largest > 255 ? 2 : 1;
            samples.values.push_back(static_cast<double>(bitsAt(bytes, start + i * sampleBytes, sampleBytes, true)));
        }
    }
    return samples;
}

Samples filesamples::readFits(Bytes const& bytes, size_t page) {
    size_t at = 0;
    while (true) {
        FitsHeader const header = fitsHeader(bytes, at);
        auto const bits = static_cast<int>(header.number("BITPIX", 0));
        auto const sampleBytes = static_cast<size_t>(std::abs(bits)) / 8;
        auto const axes = static_cast<size_t>(header.number("NAXIS", 0));
        size_t count = axes == 0 ? 0 : 1;
        for (size_t axis = 1; axis <= axes; ++axis)
            count *= header.axis(axis);
        bool const table =
            header.cards.count("XTENSION") != 0 && header.cards.at("XTENSION").find("IMAGE") == std::string::npos;
        if (count == 0 || table || --page > 0) {
            auto const heap = static_cast<size_t>(header.number("PCOUNT", 0));
            at = header.end + wholeBlocks(sampleBytes * (count + heap));
            continue;
        }
        Samples samples{header.axis(1), header.axis(2), header.axis(3), std::vector<double>(count)};
        double const scale = header.number("BSCALE", 1);
        double const zero = header.number("BZERO", 0);
        size_t const pixels = samples.width * samples.height;
        for (size_t i = 0; i < count; ++i) {
            std::uint64_t const raw = bitsAt(bytes, header.end + i * sampleBytes, sampleBytes, true);
            auto value = static_cast<double>(raw);
            if (bits > 8) value = signedOf(raw, sampleBytes);
            if (bits == -32) value = floatOf(raw);
            if (bits == -64) value = doubleOf(raw);
            // Planar: plane after plane.
            samples.values[i % pixels * samples.bands + i / pixels] = value * scale + zero;
        }
        return samples;
    }
}

Samples filesamples::readBmp(Bytes const& bytes) {
    size_t const start = bitsAt(bytes, 10, 4, false);
    auto const height = static_cast<std::int32_t>(bitsAt(bytes, 22, 4, false));
    size_t const bits = bitsAt(bytes, 28, 2, false);
    if (bits != 24 || bitsAt(bytes, 30, 4, false) != 0) throw std::runtime_error("no BMP of plain 24 bits");
    Samples samples{bitsAt(bytes, 18, 4, false), static_cast<size_t>(std::abs(height)), 3, {}};
    size_t const rowBytes = (samples.width * 3 + 3) / 4 * 4;
    for (size_t y = 0; y < samples.height; ++y)
        for (size_t x = 0; x < samples.width; ++x)
            for (size_t band = 0; band < 3; ++band) {
                size_t const row = height > 0 ? samples.height - 1 - y : y;
                samples.values.push_back(bytes.at(start + row * rowBytes + 3 * x + 2 - band));
            }
    return samples;
}

Samples filesamples::readVips(Bytes const& bytes) {
    Samples samples{bitsAt(bytes, 4, 4, false), bitsAt(bytes, 8, 4, false), bitsAt(bytes, 12, 4, false), {}};
    size_t const format = bitsAt(bytes, 20, 4, false);
    size_t const sampleBytes = format >= 8 ? 8 : format >= 4 ? 4 : format >= 2 ? 2 : 1;
    for (size_t i = 0; i < samples.width * samples.height * samples.bands; ++i) {
        std::uint64_t const raw = bitsAt(bytes, 64 + i * sampleBytes, sampleBytes, false);
        bool const isSigned = format == 1 || format == 3 || format == 5;
        double value = isSigned ? signedOf(raw, sampleBytes) : static_cast<double>(raw);
        if (format == 6) value = floatOf(raw);
        if (format == 8) value = doubleOf(raw);
        samples.values.push_back(value);
    }
    return samples;
}
