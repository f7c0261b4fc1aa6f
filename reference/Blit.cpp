#include "reference/Blit.h"

namespace reference {

void blit(Texels const& source, int sourceX, int sourceY, int width, int height, Texels& destination, int x, int y) {
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            destination.set(x + column, y + row, source.at(sourceX + column, sourceY + row));
        }
    }
}

Texels cropped(Texels const& source, int x, int y, int width, int height) {
    Texels rectangle(width, height);
    blit(source, x, y, width, height, rectangle, 0, 0);
    return rectangle;
}

} // namespace reference
