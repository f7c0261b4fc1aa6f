#include "host/image/BmpFile.h"

#include "host/image/RawSamples.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

// Size of the file's header, which the picture's header follows.
constexpr size_t kFileHeaderBytes = 14;
constexpr size_t kOldHeaderBytes = 12;
constexpr size_t kMasksHeaderBytes = 56; // from this size on a header has masks of all bands
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kMasks = 3;

struct Header {
    std::uint32_t pixels = 0; // offset in the file
    std::uint32_t bytes = 0;  // size of the picture's header
    std::int64_t width = 0;
    std::int64_t height = 0; // below 0: rows go from the top down
    unsigned bits = 0;       // bits of a pixel
    std::uint32_t compression = kPlain;
    std::uint32_t colours = 0; // in the palette
    std::array<std::uint32_t, 4> masks{0xff0000, 0xff00, 0xff, 0};
};

class Bytes {
public:
    Bytes(InputFile& file, std::uint64_t offset, size_t count) : bytes_(count) {
        file.readAll(offset, bytes_.data(), count);
    }

    std::uint32_t at(size_t offset, size_t count) const {
        std::uint32_t value = 0;
        for (size_t i = 0; i < count && offset + i < bytes_.size(); ++i)
            value |= std::uint32_t{bytes_[offset + i]} << (8 * i);
        return value;
    }

private:
    std::vector<std::uint8_t> bytes_;
};

Header headerOf(InputFile& file) {
    Header header;
    Bytes const start(file, 0, kFileHeaderBytes + 4);
    header.pixels = start.at(10, 4);
    header.bytes = start.at(kFileHeaderBytes, 4);
    if (header.bytes < kOldHeaderBytes || header.bytes > 1024)
        throw unreadableImage(file.path(), "its header has " + std::to_string(header.bytes) + " bytes");
    // A short header is followed by the masks.
    Bytes const info(file, kFileHeaderBytes, header.bytes);
    if (header.bytes == kOldHeaderBytes) {
        header.width = info.at(4, 2);
        header.height = info.at(6, 2);
        header.bits = info.at(10, 2);
        return header;
    }
    header.width = static_cast<std::int32_t>(info.at(4, 4));
    header.height = static_cast<std::int32_t>(info.at(8, 4));
    header.bits = info.at(14, 2);
    header.compression = info.at(16, 4);
    header.colours = info.at(32, 4);
    if (header.compression != kMasks) return header;
    bool const inside = header.bytes >= kMasksHeaderBytes;
    Bytes const masks(file, kFileHeaderBytes + 40, inside ? 16 : 12);
    for (size_t i = 0; i < header.masks.size(); ++i)
        header.masks[i] = masks.at(4 * i, 4);
    return header;
}

// The byte, from 0, that a mask selects; 4 if it selects another part of a pixel.
size_t byteOf(std::uint32_t mask) {
    size_t byte = 0;
    while (byte < 4 && mask != std::uint32_t{0xff} << (8 * byte))
        ++byte;
    return byte;
}

HostError notRead(InputFile const& file, std::string const& what) {
    return imageNotRead(file.path(), "Windows bitmaps " + what + " are not read; save it as PNG");
}

std::vector<std::uint8_t> paletteOf(InputFile& file, Header const& header) {
    size_t const entryBytes = header.bytes == kOldHeaderBytes ? 3 : 4;
    size_t const most = size_t{1} << header.bits;
    size_t const count = header.colours == 0 ? most : std::min<size_t>(header.colours, most);
    Bytes const entries(file, kFileHeaderBytes + header.bytes, count * entryBytes);
    std::vector<std::uint8_t> palette;
    for (size_t i = 0; i < count; ++i)
        for (size_t const band : {2u, 1u, 0u})
            palette.push_back(static_cast<std::uint8_t>(entries.at(i * entryBytes + band, 1)));
    return palette;
}

ImageFacts factsOf(Header const& header) {
    ImageFacts facts;
    facts.format = "BMP";
    facts.pageNoun = "pictures";
    facts.layout.width = static_cast<size_t>(header.width);
    facts.layout.height = static_cast<size_t>(std::llabs(header.height));
    facts.layout.bands = 3;
    facts.layout.colours = 3;
    return facts;
}

// Drops a fourth byte that is neither colour nor alpha.
class WithoutFourthByte final : public SampleSource {
public:
    WithoutFourthByte(std::unique_ptr<SampleSource> source, ImageFacts facts)
        : source_(std::move(source)), facts_(std::move(facts)) {}

    ImageFacts const& facts() const override { return facts_; }

    void read(Region const& region, std::uint8_t* samples) override {
        pixels_.resize(region.width * region.height * 4);
        source_->read(region, pixels_.data());
        for (size_t i = 0; i < pixels_.size(); i += 4, samples += 3)
            std::copy_n(&pixels_[i], 3, samples);
    }

private:
    std::unique_ptr<SampleSource> source_;
    ImageFacts facts_;
    std::vector<std::uint8_t> pixels_;
};

std::unique_ptr<SampleSource> openDeep(std::shared_ptr<InputFile> const& file, Header const& header, RawLayout raw) {
    ImageFacts facts = factsOf(header);
    for (size_t i = 0; i < 3; ++i)
        raw.bandOrder.push_back(byteOf(header.masks[i]));
    size_t const last = std::max({raw.bandOrder[0], raw.bandOrder[1], raw.bandOrder[2]});
    if (last >= header.bits / 8) throw notRead(*file, "with colours of other than 8 bits");
    if (header.bits == 24) return std::make_unique<RawSamples>(file, facts, raw);
    facts.layout.alpha = byteOf(header.masks[3]) < 4;
    ImageFacts four = facts;
    four.layout.bands = 4;
    raw.bandOrder.push_back(6 - raw.bandOrder[0] - raw.bandOrder[1] - raw.bandOrder[2]);
    auto source = std::make_unique<RawSamples>(file, four, raw);
    if (facts.layout.alpha) return source;
    return std::make_unique<WithoutFourthByte>(std::move(source), facts);
}

} // namespace

bool bmpfile::is(std::string const& start) {
    return start.rfind("BM", 0) == 0;
}

std::unique_ptr<SampleSource> bmpfile::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    requirePage(*file, request, 1, "pictures");
    Header const header = headerOf(*file);
    if (header.width < 1 || header.height == 0)
        throw unreadableImage(file->path(), "its header says " + std::to_string(header.width) + " x " +
                                                std::to_string(header.height) + " pixels");
    bool const deep = header.bits == 24 || header.bits == 32;
    bool const masked = header.compression == kMasks && header.bits == 32;
    if (header.compression != kPlain && !masked) throw notRead(*file, "that are compressed");
    if (!deep && header.bits != 1 && header.bits != 4 && header.bits != 8)
        throw notRead(*file, "of " + std::to_string(header.bits) + " bits");
    RawLayout raw;
    raw.offset = header.pixels;
    // Rows are padded to multiples of 4 bytes.
    raw.rowBytes = (static_cast<std::uint64_t>(header.width) * header.bits + 31) / 32 * 4;
    raw.bottomUp = header.height > 0;
    if (deep) return openDeep(file, header, raw);
    return std::make_unique<IndexedSamples>(file, factsOf(header), raw, header.bits, paletteOf(*file, header));
}
