#include "host/image/PnmFile.h"

#include "host/image/PnmHeader.h"
#include "host/image/RawSamples.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace {

// Pictures in text form: decimal numbers, or zeros and ones.
class TextSamples final : public SampleSource {
public:
    TextSamples(std::shared_ptr<InputFile> file, ImageFacts facts, PnmHeader const& header)
        : file_(std::move(file)), facts_(std::move(facts)), header_(header), characters_(*file_, header.pixels) {}

    ImageFacts const& facts() const override { return facts_; }
    bool readsAnywhere() const override { return false; }

    void read(Region const& region, std::uint8_t* samples) override {
        size_t const pixelBytes = facts_.layout.pixelBytes();
        row_.resize(facts_.layout.rowBytes());
        for (size_t y = region.y; y < region.y + region.height; ++y) {
            while (rows_ <= y)
                readRow();
            std::copy_n(&row_[region.x * pixelBytes], region.width * pixelBytes, samples);
            samples += region.width * pixelBytes;
        }
    }

private:
    void readRow() {
        size_t const sampleBytes = bytesOf(facts_.layout.type);
        for (size_t i = 0; i < row_.size(); i += sampleBytes) {
            size_t const value = header_.isBitmap() ? 255 * (1 - digit()) : number();
            auto const wide = static_cast<std::uint16_t>(value);
            if (sampleBytes == 1)
                row_[i] = static_cast<std::uint8_t>(value);
            else
                std::copy_n(reinterpret_cast<std::uint8_t const*>(&wide), sampleBytes, &row_[i]);
        }
        ++rows_;
    }

    // The next digit of a bitmap; digits need not be separated.
    size_t digit() {
        characters_.skipBlanks();
        int const character = characters_.next();
        if (character != '0' && character != '1') throw damaged();
        return static_cast<size_t>(character - '0');
    }

    size_t number() {
        characters_.skipBlanks();
        if (std::isdigit(std::max(characters_.peek(), 0)) == 0) throw damaged();
        size_t value = 0;
        while (std::isdigit(std::max(characters_.peek(), 0)) != 0) {
            value = 10 * value + static_cast<size_t>(characters_.next() - '0');
            if (value > header_.largest) throw damaged();
        }
        return value;
    }

    HostError damaged() const {
        return unreadableImage(file_->path(), "row " + std::to_string(rows_) + " of its picture has other text than " +
                                                  "numbers from 0 to " + std::to_string(header_.largest));
    }

    std::shared_ptr<InputFile> file_;
    ImageFacts facts_;
    PnmHeader header_;
    FileCharacters characters_;
    std::vector<std::uint8_t> row_; // the last row read
    size_t rows_ = 0;
};

bool endsIn(std::string const& text, std::string const& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

SampleType typeOf(PnmHeader const& header) {
    if (header.isFloat()) return SampleType::Float32;
    return header.largest > 255 ? SampleType::Unsigned16 : SampleType::Unsigned8;
}

// Derives the bands' meaning from a PAM's tuple type, or in other files from their number.
void nameBands(PnmHeader const& header, ImageFacts& facts) {
    SampleFormat& layout = facts.layout;
    layout.alpha = endsIn(header.tuple, "_ALPHA");
    if (header.tuple.rfind("RGB", 0) == 0)
        layout.colours = 3;
    else if (header.tuple.rfind("GRAYSCALE", 0) == 0 || header.tuple.rfind("BLACKANDWHITE", 0) == 0)
        layout.colours = 1;
    else if (header.depth == 1 || header.depth == 3)
        layout.colours = header.depth;
    if (header.tuple.rfind("CMYK", 0) == 0) facts.colourSpace = "CMYK";
}

ImageFacts factsOf(PnmHeader const& header) {
    ImageFacts facts;
    facts.format = header.isFloat() ? "PFM" : header.kind == '7' ? "PAM" : "PNM";
    facts.pageNoun = "pictures";
    facts.layout.width = header.width;
    facts.layout.height = header.height;
    facts.layout.bands = header.depth;
    facts.layout.type = typeOf(header);
    nameBands(header, facts);
    return facts;
}

RawLayout layoutOf(PnmHeader const& header, SampleFormat const& layout) {
    RawLayout raw;
    raw.offset = header.pixels;
    raw.rowBytes = header.isBitmap() ? (header.width + 7) / 8 : layout.rowBytes();
    raw.bigEndian = !header.littleEndian;
    raw.bottomUp = header.isFloat();
    return raw;
}

// Offset at which another picture may follow this one.
std::uint64_t endOf(PnmHeader const& header, RawLayout const& raw) {
    return raw.offset + raw.rowBytes * header.height;
}

bool isPictureAt(InputFile& file, std::uint64_t offset) {
    std::string magic(3, '\0');
    auto const got = file.readAt(offset, magic.data(), magic.size());
    file.rethrow();
    return got == static_cast<std::int64_t>(magic.size()) && pnmfile::is(magic);
}

struct Pages {
    PnmHeader chosen;
    size_t count;
};

Pages pagesOf(InputFile& file, size_t wanted) {
    Pages pages{PnmHeader::read(file, 0), 1};
    PnmHeader header = pages.chosen;
    while (!header.isText()) {
        RawLayout const raw = layoutOf(header, factsOf(header).layout);
        requireRows(file, factsOf(header).layout, raw, raw.rowBytes);
        std::uint64_t const end = endOf(header, raw);
        if (!isPictureAt(file, end)) break;
        header = PnmHeader::read(file, end);
        if (++pages.count == wanted) pages.chosen = header;
    }
    return pages;
}

} // namespace

bool pnmfile::is(std::string const& start) {
    if (start.size() < 3 || start[0] != 'P') return false;
    std::string const kinds = "1234567Ff";
    return kinds.find(start[1]) != std::string::npos && std::isspace(static_cast<unsigned char>(start[2])) != 0;
}

std::unique_ptr<SampleSource> pnmfile::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    Pages const pages = pagesOf(*file, request.page.value_or(1));
    requirePage(*file, request, pages.count, "pictures");
    PnmHeader const& header = pages.chosen;
    ImageFacts facts = factsOf(header);
    facts.pages = pages.count;
    RawLayout raw = layoutOf(header, facts.layout);
    if (header.isText()) {
        // At least one character per sample.
        raw.rowBytes = header.width * header.depth;
        requireRows(*file, facts.layout, raw, raw.rowBytes);
        return std::make_unique<TextSamples>(file, facts, header);
    }
    if (header.isBitmap())
        return std::make_unique<IndexedSamples>(file, facts, raw, 1, std::vector<std::uint8_t>{255, 0});
    // Samples 0 and 1 of a PAM are black and white, like those of a bitmap.
    if (header.tuple == "BLACKANDWHITE" && header.depth == 1 && header.largest == 1)
        return std::make_unique<IndexedSamples>(file, facts, raw, 8, std::vector<std::uint8_t>{0, 255});
    return std::make_unique<RawSamples>(file, facts, raw);
}
