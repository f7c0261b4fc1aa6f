#include "host/channels/BackdropFilter.h"

#include "gles3renderbackend/Gl.h"

#include "ChannelGlsl.h"

BackdropFilter::BackdropFilter(Filter& filter) : Gles3Shader(glsl::backdrop_vert, glsl::backdrop_frag, filter) {
    offerParameters<BackdropParams>();
}

Filter BackdropFilter::description() {
    return Filter(kName, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
}

void BackdropFilter::uploadParameters(SingleFilterParameters const& params) {
    Colour const& colour = params.as<BackdropParams>().colour;
    glUniform3f(uniformLocation("a_backdrop"), colour[0], colour[1], colour[2]);
}
