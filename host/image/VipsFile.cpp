#include "host/image/VipsFile.h"

#include "host/image/PixelDensity.h"
#include "host/image/RawSamples.h"

#include <array>
#include <cstring>
#include <optional>

namespace {

constexpr size_t kHeaderBytes = 64;
// Byte order of the other numbers: Intel's and Sparc's.
constexpr std::array<char const*, 2> kMagics{"\xb6\xa6\xf2\x08", "\x08\xf2\xa6\xb6"};
constexpr std::uint32_t kLargestSide = std::uint32_t{1} << 31;

struct Header {
    std::array<std::uint8_t, kHeaderBytes> bytes{};
    bool bigEndian = false;

    std::uint32_t at(size_t offset) const {
        std::uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i)
            value |= std::uint32_t{bytes[offset + i]} << (8 * (bigEndian ? 3 - i : i));
        return value;
    }

    double floatAt(size_t offset) const {
        std::uint32_t const bits = at(offset);
        float value = 0;
        std::memcpy(&value, &bits, sizeof(value));
        return value;
    }
};

std::optional<SampleType> typeOf(std::uint32_t bandFormat) {
    switch (bandFormat) {
    case 0:
        return SampleType::Unsigned8;
    case 1:
        return SampleType::Signed8;
    case 2:
        return SampleType::Unsigned16;
    case 3:
        return SampleType::Signed16;
    case 4:
        return SampleType::Unsigned32;
    case 5:
        return SampleType::Signed32;
    case 6:
        return SampleType::Float32;
    case 8:
        return SampleType::Float64;
    default:
        return std::nullopt; // complex numbers
    }
}

// Names the bands by libvips' interpretation. One band after the colours is alpha.
void nameBands(std::uint32_t interpretation, ImageFacts& facts) {
    switch (interpretation) {
    case 1:  // grey
    case 26: // grey of 16 bits
        facts.layout.colours = 1;
        break;
    case 17: // RGB
    case 22: // sRGB
    case 25: // RGB of 16 bits
        facts.layout.colours = 3;
        break;
    case 0: // bands without a meaning
    case 10:
    case 24:
    case 27:
        // libvips takes one or three of them for grey or RGB all the same.
        if (facts.layout.bands == 1 || facts.layout.bands == 3) facts.layout.colours = facts.layout.bands;
        return;
    case 12:
        facts.colourSpace = "XYZ";
        return;
    case 15:
        facts.colourSpace = "CMYK";
        return;
    case 28:
        facts.colourSpace = kLinearLight;
        return;
    default:
        facts.colourSpace = "libvips' colour space " + std::to_string(interpretation);
        return;
    }
    facts.layout.alpha = facts.layout.bands == facts.layout.colours + 1;
}

} // namespace

bool vipsfile::is(std::string const& start) {
    return start.rfind(kMagics[0], 0) == 0 || start.rfind(kMagics[1], 0) == 0;
}

std::unique_ptr<SampleSource> vipsfile::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    requirePage(*file, request, 1, "pictures");
    Header header;
    file->readAll(0, header.bytes.data(), header.bytes.size());
    header.bigEndian = std::memcmp(header.bytes.data(), kMagics[1], 4) == 0;
    ImageFacts facts;
    facts.format = "VIPS";
    facts.pageNoun = "pictures";
    facts.layout.width = header.at(4);
    facts.layout.height = header.at(8);
    facts.layout.bands = header.at(12);
    auto const type = typeOf(header.at(20));
    bool const sized = header.at(4) > 0 && header.at(4) < kLargestSide && header.at(8) > 0 &&
                       header.at(8) < kLargestSide && header.at(12) > 0 && header.at(12) < 65536;
    if (!sized || !type || header.at(24) != 0)
        throw sized ? imageNotRead(file->path(), "it has complex numbers or packed colours, which are not read")
                    : unreadableImage(file->path(), "its header has no size that a picture can have");
    facts.layout.type = *type;
    nameBands(header.at(28), facts);
    pixeldensity::set(facts, pixeldensity::Origin::Hint, header.floatAt(32), header.floatAt(36));
    RawLayout raw;
    raw.offset = kHeaderBytes;
    raw.rowBytes = facts.layout.rowBytes();
    raw.bigEndian = header.bigEndian;
    return std::make_unique<RawSamples>(file, facts, raw);
}
