#include "tests/host/image/RawTiff.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

using namespace rawtiff;

// Bytes of a number: fractions (5, 10) have two.
size_t widthOf(std::uint16_t type) {
    static std::map<std::uint16_t, size_t> const kWidths{{1, 1},  {2, 1},  {3, 2},  {4, 4},  {5, 4},  {6, 1},
                                                         {7, 1},  {8, 2},  {9, 4},  {10, 4}, {11, 4}, {12, 8},
                                                         {13, 4}, {16, 8}, {17, 8}, {18, 8}};
    auto const found = kWidths.find(type);
    return found == kWidths.end() ? 1 : found->second;
}

size_t perValue(std::uint16_t type) {
    return type == 5 || type == 10 ? 2 : 1;
}

class Writer {
public:
    explicit Writer(Layout const& layout) : layout_(layout) {
        file_ = layout.bigEndian ? Bytes{'M', 'M'} : Bytes{'I', 'I'};
        put(file_, layout.big ? 43 : 42, 2);
        if (layout.big) {
            put(file_, 8, 2);
            put(file_, 0, 2);
        }
        put(file_, 0, word());
    }

    std::uint64_t append(Bytes const& bytes) {
        if (file_.size() % 2 != 0) file_.push_back(0);
        std::uint64_t const offset = file_.size();
        file_.insert(file_.end(), bytes.begin(), bytes.end());
        return offset;
    }

    std::uint64_t append(Directory const& directory) {
        auto tags = directory.tags;
        for (auto const& [number, inner] : directory.inner)
            tags[number] = {static_cast<std::uint16_t>(layout_.big ? 18 : 4), {append(inner)}};
        Bytes entries;
        put(entries, tags.size(), layout_.big ? 8 : 2);
        for (auto const& [number, tag] : tags) {
            Bytes values;
            for (std::uint64_t const value : tag.numbers)
                put(values, value, widthOf(tag.type));
            put(entries, number, 2);
            put(entries, tag.type, 2);
            put(entries, tag.numbers.size() / perValue(tag.type), word());
            if (values.size() > word()) {
                put(entries, append(values), word());
            } else {
                values.resize(word());
                entries.insert(entries.end(), values.begin(), values.end());
            }
        }
        put(entries, 0, word());
        return append(entries);
    }

    Bytes finish(Directory const& directory) {
        std::uint64_t const offset = append(directory);
        Bytes start;
        put(start, offset, word());
        std::copy(start.begin(), start.end(), file_.begin() + (layout_.big ? 8 : 4));
        return file_;
    }

private:
    size_t word() const { return layout_.big ? 8 : 4; }

    void put(Bytes& bytes, std::uint64_t number, size_t width) const {
        for (size_t i = 0; i < width; ++i)
            bytes.push_back(static_cast<std::uint8_t>(number >> (8 * (layout_.bigEndian ? width - 1 - i : i))));
    }

    Layout layout_;
    Bytes file_;
};

class Reader {
public:
    explicit Reader(Bytes const& file) : file_(file), layout_{file.at(0) == 'M', false} {
        layout_.big = number(2, 2) == 43;
    }

    std::uint64_t first() const { return number(layout_.big ? 8 : 4, word()); }

    std::uint64_t next(std::uint64_t at) const {
        std::uint64_t const count = number(at, head());
        return number(at + head() + count * (4 + 2 * word()), word());
    }

    Directory directory(std::uint64_t at) const {
        Directory found;
        std::uint64_t const count = number(at, head());
        for (std::uint64_t i = 0; i < count; ++i) {
            std::uint64_t const entry = at + head() + i * (4 + 2 * word());
            auto const tag = static_cast<std::uint16_t>(number(entry, 2));
            auto const type = static_cast<std::uint16_t>(number(entry + 2, 2));
            std::uint64_t const numbers = number(entry + 4, word()) * perValue(type);
            std::uint64_t const inside = entry + 4 + word();
            std::uint64_t const values = numbers * widthOf(type) > word() ? number(inside, word()) : inside;
            Tag& made = found.tags[tag];
            made.type = type;
            for (std::uint64_t n = 0; n < numbers; ++n)
                made.numbers.push_back(number(values + n * widthOf(type), widthOf(type)));
            if (tag == 34665 || tag == 34853 || tag == 40965) found.inner[tag] = directory(made.numbers.at(0));
        }
        return found;
    }

private:
    size_t word() const { return layout_.big ? 8 : 4; }
    size_t head() const { return layout_.big ? 8 : 2; }

    std::uint64_t number(std::uint64_t at, size_t width) const {
        std::uint64_t value = 0;
        for (size_t i = 0; i < width; ++i)
            value |= std::uint64_t{file_.at(at + i)} << (8 * (layout_.bigEndian ? width - 1 - i : i));
        return value;
    }

    Bytes const& file_;
    Layout layout_;
};

} // namespace

Tag rawtiff::text(std::string const& letters) {
    Tag tag{2, {letters.begin(), letters.end()}};
    tag.numbers.push_back(0);
    return tag;
}

Tag rawtiff::doubles(std::vector<double> const& numbers) {
    Tag tag{12, {}};
    for (double const number : numbers) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &number, sizeof(bits));
        tag.numbers.push_back(bits);
    }
    return tag;
}

Bytes rawtiff::structure(Directory const& directory, Layout const& layout) {
    return Writer(layout).finish(directory);
}

Bytes rawtiff::picture(std::uint16_t width, std::uint16_t height, std::uint16_t bands, Bytes const& samples,
                       Directory directory, Layout const& layout) {
    Writer writer(layout);
    std::uint64_t const offset = writer.append(samples);
    std::map<std::uint16_t, Tag> const needed{{256, {3, {width}}},
                                              {257, {3, {height}}},
                                              {258, {3, std::vector<std::uint64_t>(bands, 8)}},
                                              {259, {3, {1}}},
                                              {262, {3, {bands >= 3 ? 2U : 1U}}},
                                              {273, {4, {offset}}},
                                              {277, {3, {bands}}},
                                              {278, {3, {height}}},
                                              {279, {4, {samples.size()}}}};
    directory.tags.insert(needed.begin(), needed.end());
    return writer.finish(directory);
}

Directory rawtiff::read(Bytes const& file, size_t number) {
    Reader const reader(file);
    std::uint64_t at = reader.first();
    for (size_t i = 0; i < number; ++i)
        at = reader.next(at);
    if (at == 0) throw std::out_of_range("there is no directory " + std::to_string(number));
    return reader.directory(at);
}

Bytes rawtiff::fileBytes(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void rawtiff::write(std::string const& path, Bytes const& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}
