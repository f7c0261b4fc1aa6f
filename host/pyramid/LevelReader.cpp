#include "host/pyramid/LevelReader.h"

bool isSmaller(Size const& a, Size const& b) {
    return a.width <= b.width && a.height <= b.height && (a.width < b.width || a.height < b.height);
}

void requireSame(std::string const& path, PyramidFacts const& facts, size_t level, ImageFacts const& opened) {
    SampleFormat const& a = facts.image.layout;
    SampleFormat const& b = opened.layout;
    Size const& size = facts.levels[level].size;
    bool const isSame = b.width == size.width && b.height == size.height && a.type == b.type && a.bands == b.bands;
    if (!isSame) throw changed(path);
}

HostError changed(std::string const& path) {
    return imageNotRead(path, "it has changed while it was being read; open it once more");
}
