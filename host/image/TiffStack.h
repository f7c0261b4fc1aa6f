#pragma once

#include "host/image/SampleSource.h"
#include "host/image/TiffDirectory.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The pages of a TIFF file as planes of one picture. OME-XML says which page is which channel, slice and time, and so
/// does ImageJ; pages of the same kind, of which the file says nothing, are slices.
struct TiffStack {
    ImageStack size;
    std::vector<size_t> pages;    ///< of TiffChain::pages: that of plane (time * slices + slice) * planes + plane
    std::vector<BandFacts> bands; ///< of all planes of a slice; empty: the file says nothing of them

    /// description: of the first directory. Empty if the file has one page, or pages of different kinds, and where
    /// planes lie in other files.
    static std::optional<TiffStack> of(TiffChain const& chain, std::string const& description);
};
