#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

/// Contrast-limited adaptive histogram equalisation of the first of four 16-bit components; see CLAHE. Runs on the CPU:
/// it has no GL program. With a FilterClaheParams.
///
/// Source and destination are targets of 48 or 64 bits per pixel in RGBA32, a pixel in two texels of which all eight
/// bytes count: four components, little-endian. The histograms are those of the whole input area; the other components
/// pass through. An area smaller than 41 pixels in either direction passes through unchanged.
class Gles3FilterCLAHE : public Gles3Shader {
public:
    explicit Gles3FilterCLAHE(Filter& filter);

    /// Reads the input area back, equalises it and uploads its valid part at `offset`, in texels. Throws
    /// VelmoraException if source or destination are no such targets, or if the input area is larger than the source,
    /// before anything is read.
    void draw(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination,
              size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
              SingleFilterParameters const& params, std::vector<size_t> const& offset,
              Gles3RenderBackendInstance& instance, Filter const& filter) override;
};
