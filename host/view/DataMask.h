#pragma once

#include "host/filter/FilterRunner.h"
#include "host/view/EmptyAreas.h"
#include "host/view/View.h"

#include <cstdint>
#include <memory>
#include <vector>

/// A mask of where a store has data for a view's level, which the backend draws from data envelopes. GL thread only.
class DataMask {
public:
    /// All of them outlive it.
    DataMask(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, EmptyAreas& emptyAreas,
             StoreInfo const& info);

    /// One byte per pixel of the view, rows from the top: 255 where there is data, else 0, off by less than 8 pixels.
    std::vector<std::uint8_t> draw(View const& view);

private:
    using Cells = std::vector<std::vector<unsigned int>>;

    Cells cellsOf(View const& view);
    std::vector<unsigned char> drawn(Cells const& cells, Size const& size);

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    EmptyAreas& emptyAreas_;
    StoreInfo info_;
};
