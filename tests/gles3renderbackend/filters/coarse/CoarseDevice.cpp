#include "tests/gles3renderbackend/filters/coarse/CoarseDevice.h"

#include <cctype>
#include <ostream>
#include <stdexcept>
#include <string>

std::ostream& operator<<(std::ostream& stream, CoarseDevice const& device) {
    return stream << device.name << ": " << device.why;
}

namespace {

// 10 bits after the leading one, and steps that grow no smaller below 2^-14.
constexpr char const* kHalfFloat = R"(
    highp vec4 unit = exp2(floor(log2(max(abs(v), vec4(1.0 / 16384.0)))) - 10.0);
    return unit * floor(v / unit + 0.5);
)";
// The second and the fourth of a coordinate's numbers go down the rows: varyings of four hold two coordinates.
constexpr char const* kHalfFloatRows = R"(
    highp vec4 unit = exp2(floor(log2(max(abs(v), vec4(1.0 / 16384.0)))) - 10.0);
    highp vec4 coarse = unit * floor(v / unit + 0.5);
    return vec4(v.x, coarse.y, v.z, coarse.w);
)";
constexpr char const* kTwelveFractionalBits = "return floor(4096.0 * v + 0.5) / 4096.0;";
constexpr char const* kSixteenFractionalBits = "return floor(65536.0 * v + 0.5) / 65536.0;";

// The body as a function on every vector that a varying can be.
std::string functions(std::string const& body) {
    return "highp vec4 kept(highp vec4 v) { " + body +
           " }\n"
           "highp vec2 kept(highp vec2 v) { return kept(vec4(v, 0.0, 0.0)).xy; }\n"
           "highp vec3 kept(highp vec3 v) { return kept(vec4(v, 0.0)).xyz; }\n";
}

bool isWordAt(std::string const& text, size_t at, size_t length) {
    auto const inWord = [&](size_t i) {
        return i < text.size() && (std::isalnum(static_cast<unsigned char>(text[i])) != 0 || text[i] == '_');
    };
    return (at == 0 || !inWord(at - 1)) && !inWord(at + length);
}

// Rounds the text's reads of this name from offset `from` on; returns their number.
size_t roundReads(std::string& text, size_t from, std::string const& name) {
    std::string const rounded = "kept(" + name + ")";
    size_t count = 0;
    for (size_t at = text.find(name, from); at != std::string::npos; at = text.find(name, at)) {
        if (!isWordAt(text, at, name.size())) {
            at += name.size();
            continue;
        }
        text.replace(at, name.size(), rounded);
        at += rounded.size();
        ++count;
    }
    return count;
}

// A declaration is "varying highp vec2 name;".
size_t roundVaryings(std::string& text) {
    std::string const declaration = "\nvarying ";
    size_t count = 0;
    for (size_t at = text.find(declaration); at != std::string::npos; at = text.find(declaration, at + 1)) {
        size_t const end = text.find(';', at);
        size_t const name = text.rfind(' ', end) + 1;
        roundReads(text, end, text.substr(name, end - name));
        ++count;
    }
    return count;
}

// The version and the precision stay the first two lines.
void insertFunctions(std::string& text, std::string const& functions) {
    size_t const second = text.find('\n', text.find('\n') + 1);
    if (second == std::string::npos) throw std::invalid_argument("a fragment text has a version and a precision");
    text.insert(second + 1, functions);
}

} // namespace

std::vector<CoarseDevice> const& coarseDevices() {
    using Quantity = CoarseDevice::Quantity;
    static std::vector<CoarseDevice> const all = {
        {"CoordinatesInHalfFloats", Quantity::kVaryings, kHalfFloat, true,
         "in more than 1024 texels the middle of one falls on its edge"},
        {"RowsInHalfFloats", Quantity::kVaryings, kHalfFloatRows, true,
         "in more than 1024 rows the middle of one falls on its edge"},
        {"CoordinatesWithTwelveFractionalBits", Quantity::kVaryings, kTwelveFractionalBits, true,
         "in more than 2048 texels the middle of one falls on its edge"},
        {"CoordinatesWithSixteenFractionalBits", Quantity::kVaryings, kSixteenFractionalBits, false,
         "a texel of 16384 is four of these steps wide: its middle stays inside"},
        {"FragmentsInHalfFloats", Quantity::kFragCoord, kHalfFloat, true,
         "columns and rows beyond 1023 have no halves, and so no parity"},
    };
    return all;
}

ShaderEdit::Rewriting emulating(CoarseDevice const& device) {
    return [=](std::string& text) {
        size_t const count = device.quantity == CoarseDevice::Quantity::kVaryings ? roundVaryings(text)
                                                                                  : roundReads(text, 0, "gl_FragCoord");
        insertFunctions(text, functions(device.rounding));
        return count;
    };
}
