#include "tests/gles3renderbackend/filters/coarse/CoarseDevice.h"

#include <ostream>
#include <regex>
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

// Replaces the name from `from` on; the count of places.
size_t replaceReads(std::string& text, size_t from, std::string const& name) {
    std::string const head = text.substr(0, from);
    std::string const tail = text.substr(from);
    std::regex const reads("\\b" + name + "\\b");
    auto const count = std::distance(std::sregex_iterator(tail.begin(), tail.end(), reads), std::sregex_iterator());
    text = head + std::regex_replace(tail, reads, "kept(" + name + ")");
    return static_cast<size_t>(count);
}

size_t roundVaryings(std::string& text) {
    std::regex const declaration(R"(varying\s+(?:(?:highp|mediump|lowp)\s+)?vec[234]\s+(\w+);)");
    size_t count = 0;
    std::smatch match;
    for (size_t at = 0;
         std::regex_search(text.cbegin() + static_cast<std::ptrdiff_t>(at), text.cend(), match, declaration); ++count) {
        at += static_cast<size_t>(match.position() + match.length());
        std::string const name = match[1];
        replaceReads(text, at, name);
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
        size_t const count = device.quantity == CoarseDevice::Quantity::kVaryings
                                 ? roundVaryings(text)
                                 : replaceReads(text, 0, "gl_FragCoord");
        insertFunctions(text, functions(device.rounding));
        return count;
    };
}
