// Appended to the code of README.md: the tile must lie where that code puts it.
#include "HostContext.h"

#include <algorithm>

namespace {

// A row of the tile's 256 pixels, from column 256 of the picture's 512 on.
bool rowIsTheTiles(std::vector<unsigned char> const& picture, std::vector<unsigned char> const& tile, size_t row) {
    auto const drawn = picture.begin() + static_cast<std::ptrdiff_t>((row * 512 + 256) * 4);
    auto const stored = tile.begin() + static_cast<std::ptrdiff_t>(row * 256 * 4);
    return std::equal(stored, stored + 256 * 4, drawn);
}

} // namespace

int main() {
    HostGl const gl;
    if (!gl.current()) return withoutContext();
    std::vector<unsigned char> tile(256 * 256 * 4);
    for (size_t i = 0; i < tile.size(); ++i)
        tile[i] = static_cast<unsigned char>(i * 7 + i / 1024);
    auto const picture = draw(tile);
    Checks checks;
    checks.expect(picture.size() == 512 * 512 * 4, "the picture has 512 x 512 pixels");
    for (size_t row = 0; row < 256 && picture.size() == 512 * 512 * 4; ++row)
        checks.expect(rowIsTheTiles(picture, tile, row), "the tile is drawn at column 1, row 0");
    return checks.exitCode();
}
