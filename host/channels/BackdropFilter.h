#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"
#include "host/display/ColourMap.h"
#include "renderbackend/Filter.h"
#include "renderbackend/SingleFilterParameters.h"

struct BackdropParams : SingleFilterParameters {
    Colour colour = {};
};

/// Puts a picture over a colour: (colour of the picture * alpha + backdrop * (255 - alpha)) / 255, rounded; the result
/// is opaque. With a BackdropParams.
class BackdropFilter : public Gles3Shader {
public:
    /// In the host's registry.
    static constexpr char const* kName = "Backdrop";

    explicit BackdropFilter(Filter& filter);

    static Filter description();

    /// Throws VelmoraException for another record.
    void uploadParameters(SingleFilterParameters const& params) override;
};
