#include "tests/support/PixelMatchers.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <string>

namespace {

struct Picture {
    std::vector<std::uint8_t> const& bytes;
    size_t width;
    size_t bytesPerTexel;

    size_t height() const { return bytes.size() / (width * bytesPerTexel); }

    std::string texel(size_t x, size_t y) const {
        std::ostringstream text;
        text << "(";
        for (size_t i = 0; i < bytesPerTexel; ++i)
            text << (i == 0 ? "" : " ") << std::setw(3) << int{bytes[(y * width + x) * bytesPerTexel + i]};
        text << ")";
        return text.str();
    }

    std::string around(size_t x, size_t y) const {
        std::ostringstream text;
        for (auto row = y - std::min<size_t>(y, 1); row < std::min(y + 2, height()); ++row) {
            text << "  row " << row << ":";
            for (auto column = x - std::min<size_t>(x, 1); column < std::min(x + 2, width); ++column)
                text << " " << texel(column, row);
            text << "\n";
        }
        return text.str();
    }
};

} // namespace

::testing::AssertionResult pixelsEqual(std::vector<std::uint8_t> const& actual,
                                       std::vector<std::uint8_t> const& expected, size_t widthTexels,
                                       size_t bytesPerTexel) {
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure() << actual.size() << " bytes instead of " << expected.size();
    auto const rowBytes = widthTexels * bytesPerTexel;
    if (rowBytes == 0 || expected.size() % rowBytes != 0)
        return ::testing::AssertionFailure() << expected.size() << " bytes are no whole rows of " << rowBytes;

    size_t wrong = 0;
    size_t first = 0;
    for (auto i = actual.size(); i-- > 0;) {
        if (actual[i] == expected[i]) continue;
        ++wrong;
        first = i;
    }
    if (wrong == 0) return ::testing::AssertionSuccess();

    auto const x = first % rowBytes / bytesPerTexel;
    auto const y = first / rowBytes;
    Picture const got{actual, widthTexels, bytesPerTexel};
    Picture const want{expected, widthTexels, bytesPerTexel};
    return ::testing::AssertionFailure() << wrong << " of " << actual.size() << " bytes are wrong, the first in texel "
                                         << x << ", " << y << ": " << got.texel(x, y) << " instead of "
                                         << want.texel(x, y) << "\naround it, read:\n"
                                         << got.around(x, y) << "around it, expected:\n"
                                         << want.around(x, y);
}
