#pragma once

#include "host/Geometry.h"
#include "host/filter/FilterRunner.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Draws blocks of a 16-bit picture through the backend, each band as a plane of its own. Every bit is kept, because
/// the filters are copies: all others take 16-bit samples as signed. GL thread only. Throws VelmoraException.
class DeepBlocks {
public:
    DeepBlocks(std::shared_ptr<RenderBackendInstance> const& instance, size_t bands);

    /// Draws `block`, a part of `strip` whose pixels are given, and writes it to the same place of `out`: samples in
    /// the machine's byte order.
    void drawBlock(Region const& block, Region const& strip, std::vector<std::uint8_t> const& pixels,
                   std::vector<std::uint8_t>& out);

private:
    FilterRunner targets_;
    size_t bands_;
    std::vector<unsigned char> plane_;
};
