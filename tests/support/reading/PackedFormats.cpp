// Radiance's pictures and GIF, by parsers of our own.
#include "tests/support/reading/FileSamples.h"

#include <cmath>
#include <stdexcept>
#include <string>

using filesamples::Bytes;
using filesamples::Samples;

namespace {

// Four bytes per pixel in runs: red, green, blue and their common exponent, each for a whole row.
Bytes radianceRow(Bytes const& bytes, size_t& at, size_t width) {
    Bytes row(4 * width);
    if (bytes.at(at) != 2 || bytes.at(at + 1) != 2) {
        for (auto& byte : row)
            byte = bytes.at(at++);
        return row;
    }
    at += 4;
    for (size_t component = 0; component < 4; ++component)
        for (size_t x = 0; x < width;) {
            size_t const count = bytes.at(at++);
            bool const isRun = count > 128;
            size_t const length = isRun ? count - 128 : count;
            for (size_t i = 0; i < length; ++i)
                row[4 * x++ + component] = isRun ? bytes.at(at) : bytes.at(at + i);
            at += isRun ? 1 : length;
        }
    return row;
}

// The sub-blocks from a position on, each preceded by its length, concatenated.
Bytes gifBlocks(Bytes const& bytes, size_t& at) {
    Bytes data;
    while (true) {
        size_t const length = bytes.at(at++);
        if (length == 0) return data;
        for (size_t i = 0; i < length; ++i)
            data.push_back(bytes.at(at++));
    }
}

// GIF's variant of Lempel, Ziv and Welch: codes from the lowest bit, one bit wider as the table grows.
Bytes gifIndices(Bytes const& data, unsigned codeBits, size_t count) {
    size_t const clear = size_t{1} << codeBits;
    std::vector<Bytes> table;
    Bytes indices;
    Bytes last;
    unsigned width = codeBits + 1;
    size_t bit = 0;
    auto const reset = [&] {
        table.assign(clear + 2, Bytes());
        for (size_t i = 0; i < clear; ++i)
            table[i] = {static_cast<std::uint8_t>(i)};
        width = codeBits + 1;
        last.clear();
    };
    reset();
    while (indices.size() < count) {
        size_t code = 0;
        for (unsigned i = 0; i < width; ++i, ++bit)
            code |= static_cast<size_t>(data.at(bit / 8) >> (bit % 8) & 1) << i;
        if (code == clear) {
            reset();
            continue;
        }
        if (code == clear + 1) break;
        Bytes string = code < table.size() ? table[code] : last;
        if (code >= table.size()) string.push_back(last.at(0));
        if (!last.empty() && table.size() < 4096) {
            last.push_back(string.at(0));
            table.push_back(last);
        }
        if (table.size() == size_t{1} << width && width < 12) ++width;
        indices.insert(indices.end(), string.begin(), string.end());
        last = std::move(string);
    }
    return indices;
}

// Whether any frame has a transparent colour, or leaves a part of the picture uncovered.
bool isSeenThrough(Bytes const& bytes, size_t at) {
    auto const word = [&](size_t place) { return bytes.at(place) + 256u * bytes.at(place + 1); };
    bool found = false;
    while (bytes.at(at) != ';') {
        if (bytes.at(at) == '!') {
            found = found || (bytes.at(at + 1) == 0xf9 && (bytes.at(at + 3) & 1) != 0);
            at += 2;
        } else {
            found = found || word(at + 5) != word(6) || word(at + 7) != word(8);
            unsigned const flags = bytes.at(at + 9);
            at += 11 + ((flags & 0x80) != 0 ? size_t{3} << ((flags & 7) + 1) : 0);
        }
        gifBlocks(bytes, at);
    }
    return found;
}

} // namespace

Samples filesamples::readRadiance(Bytes const& bytes) {
    std::string const text(bytes.begin(), bytes.end());
    size_t const size = text.find("\n\n") + 2;
    size_t at = text.find('\n', size) + 1;
    if (text.compare(size, 3, "-Y ") != 0) throw std::runtime_error("rows do not go down");
    Samples samples{std::stoul(text.substr(text.find("+X ", size) + 3)), std::stoul(text.substr(size + 3)), 3, {}};
    for (size_t y = 0; y < samples.height; ++y) {
        Bytes const row = radianceRow(bytes, at, samples.width);
        for (size_t x = 0; x < samples.width; ++x)
            for (size_t band = 0; band < 3; ++band)
                // The middle of the step that a byte represents.
                samples.values.push_back(
                    row[4 * x + 3] == 0 ? 0 : std::ldexp(row[4 * x + band] + 0.5, row[4 * x + 3] - 136));
    }
    return samples;
}

Samples filesamples::readGif(Bytes const& bytes, size_t page) {
    if (page != 1) throw std::runtime_error("frames are drawn over one another: only the first is read");
    auto const word = [&](size_t at) { return bytes.at(at) + 256u * bytes.at(at + 1); };
    Samples samples{word(6), word(8), 3, {}};
    size_t at = 13;
    size_t palette = at;
    if ((bytes.at(10) & 0x80) != 0) at += size_t{3} << ((bytes.at(10) & 7) + 1);
    bool const hasAlpha = isSeenThrough(bytes, at);
    int transparent = -1;
    while (bytes.at(at) == '!') {
        if (bytes.at(at + 1) == 0xf9 && (bytes.at(at + 3) & 1) != 0) transparent = bytes.at(at + 6);
        at += 2;
        gifBlocks(bytes, at);
    }
    size_t const left = word(at + 1);
    size_t const top = word(at + 3);
    size_t const width = word(at + 5);
    size_t const height = word(at + 7);
    unsigned const flags = bytes.at(at + 9);
    if ((flags & 0x40) != 0) throw std::runtime_error("interlaced GIF");
    at += 10;
    if ((flags & 0x80) != 0) {
        palette = at;
        at += size_t{3} << ((flags & 7) + 1);
    }
    unsigned const codeBits = bytes.at(at++);
    Bytes const indices = gifIndices(gifBlocks(bytes, at), codeBits, width * height);
    samples.bands = hasAlpha ? 4 : 3;
    samples.values.assign(samples.width * samples.height * samples.bands, 0);
    for (size_t i = 0; i < width * height; ++i) {
        if (indices.at(i) == transparent) continue;
        double* const pixel = &samples.values[((top + i / width) * samples.width + left + i % width) * samples.bands];
        for (size_t band = 0; band < 3; ++band)
            pixel[band] = bytes.at(palette + size_t{3} * indices[i] + band);
        if (hasAlpha) pixel[3] = 255;
    }
    return samples;
}
