#include "apps/velmora/view/SystemFonts.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>

namespace {

constexpr size_t kMostBytes = 64 * 1024 * 1024;
constexpr int kIndexBits = 0xffff; // the others tell instances of variable fonts apart

struct PatternDestroyer {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDestroyer>;

struct CharacterSetDestroyer {
    void operator()(FcCharSet* characters) const { FcCharSetDestroy(characters); }
};

// Of the best font without serifs that has the character, as fontconfig has it.
Pattern match(char32_t character) {
    if (FcInit() != FcTrue) return nullptr;
    Pattern wanted(FcPatternCreate());
    std::unique_ptr<FcCharSet, CharacterSetDestroyer> const characters(FcCharSetCreate());
    if (!wanted || !characters) return nullptr;
    FcCharSetAddChar(characters.get(), character);
    FcPatternAddCharSet(wanted.get(), FC_CHARSET, characters.get());
    FcPatternAddBool(wanted.get(), FC_SCALABLE, FcTrue);
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<FcChar8 const*>("sans-serif"));
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    return Pattern(FcFontMatch(nullptr, wanted.get(), &result));
}

bool has(FcPattern* font, char32_t character) {
    FcCharSet* characters = nullptr;
    return FcPatternGetCharSet(font, FC_CHARSET, 0, &characters) == FcResultMatch &&
           FcCharSetHasChar(characters, character) == FcTrue;
}

// TrueType or CFF, or a collection of them.
bool isOutlines(std::vector<unsigned char> const& bytes) {
    std::array<std::string, 4> const starts{std::string("\0\1\0\0", 4), "OTTO", "true", "ttcf"};
    return std::any_of(starts.begin(), starts.end(), [&](std::string const& start) {
        return bytes.size() > start.size() && std::equal(start.begin(), start.end(), bytes.begin());
    });
}

} // namespace

// What fontconfig keeps belongs to the program.
SystemFonts::~SystemFonts() {
    if (!found_.empty()) FcFini();
}

std::optional<SystemFonts::Face> SystemFonts::with(char32_t character) {
    auto const known = found_.find(character);
    if (known != found_.end()) return known->second;
    std::optional<Face>& face = found_[character];
    Pattern const font = match(character);
    FcChar8* file = nullptr;
    int index = 0;
    if (!font || !has(font.get(), character) || FcPatternGetString(font.get(), FC_FILE, 0, &file) != FcResultMatch ||
        FcPatternGetInteger(font.get(), FC_INDEX, 0, &index) != FcResultMatch)
        return face;
    Face const found{reinterpret_cast<char const*>(file), index & kIndexBits};
    if (!bytes(found).empty()) face = found;
    return face;
}

std::vector<unsigned char> const& SystemFonts::bytes(Face const& face) {
    auto const known = files_.find(face.file);
    if (known != files_.end()) return known->second;
    std::ifstream file(face.file, std::ios::binary);
    std::vector<unsigned char> read;
    std::array<char, 1 << 16> part{};
    while (read.size() <= kMostBytes && (file.read(part.data(), part.size()), file.gcount() > 0))
        read.insert(read.end(), part.begin(), part.begin() + file.gcount());
    if (read.size() > kMostBytes || !isOutlines(read)) read.clear();
    return files_.emplace(face.file, std::move(read)).first->second;
}
