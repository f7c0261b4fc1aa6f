#pragma once

#include "host/Geometry.h"
#include "host/filter/FilterRunner.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Blocks of a picture of 16 bits through the backend, each band as a plane of its own: every bit comes out again,
/// which copies alone do, for what else takes 16 bits takes them as signed. GL thread only. Throws VelmoraException.
class DeepBlocks {
public:
    DeepBlocks(std::shared_ptr<RenderBackendInstance> const& instance, size_t bands);

    /// Draws `block`, a part of `strip` whose pixels are given, and puts it at the same place into `out`: samples in
    /// the machine's byte order.
    void drawBlock(Region const& block, Region const& strip, std::vector<std::uint8_t> const& pixels,
                   std::vector<std::uint8_t>& out);

private:
    FilterRunner targets_;
    size_t bands_;
    std::vector<unsigned char> plane_;
};
