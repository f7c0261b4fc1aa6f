#include "host/filter/ScratchTile.h"

#include "host/Quietly.h"

ScratchTile::ScratchTile(RenderBackendInstance& instance, size_t number) : instance_(instance), number_(number) {
    instance_.eraseTile(number_);
}

// Delegates to a constructor: the destructor runs if storing throws.
ScratchTile::ScratchTile(RenderBackendInstance& instance, size_t number, std::vector<unsigned char> const& pixels,
                         std::vector<size_t> const& size)
    : ScratchTile(instance, number) {
    if (!pixels.empty()) instance_.setTile(number_, pixels, size, 0);
}

ScratchTile::~ScratchTile() {
    quietly([this] { instance_.eraseTile(number_); });
}
