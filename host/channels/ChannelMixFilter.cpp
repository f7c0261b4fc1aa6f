#include "host/channels/ChannelMixFilter.h"

#include "gles3renderbackend/Gl.h"
#include "renderbackend/VelmoraException.h"

#include "ChannelGlsl.h"

#include <utility>
#include <vector>

namespace {

constexpr size_t kTableSide = 256;
constexpr size_t kTexelBytes = 4;
constexpr size_t kInputs = 2;
constexpr GLuint kFirstTableUnit = 2;
constexpr GLuint kSecondTableUnit = 3;

GLfloat isAlpha(ChannelTable const& table) {
    return table.role() == ChannelTable::Role::Alpha ? 1.0F : 0.0F;
}

} // namespace

ChannelMixFilter::ChannelMixFilter(Filter& filter) : Gles3Shader(glsl::channelMix_vert, glsl::channelMix_frag, filter) {
    offerParameters<ChannelMixParams>();
}

Filter ChannelMixFilter::description() {
    return Filter(kName, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, kInputs, RenderBackend::NEAREST);
}

void ChannelMixFilter::uploadParameters(SingleFilterParameters const& params) {
    auto const& tables = params.as<ChannelMixParams>();
    if (!tables.first || !tables.second)
        throw VelmoraException("a channel without a table",
                               "void ChannelMixFilter::uploadParameters(SingleFilterParameters const& params)");
    bindTable(*tables.first, kFirstTableUnit, "s_firstTable");
    bindTable(*tables.second, kSecondTableUnit, "s_secondTable");
    glUniform2f(uniformLocation("a_isAlpha"), isAlpha(*tables.first), isAlpha(*tables.second));
}

void ChannelMixFilter::bindTable(ChannelTable const& table, GLuint unit, char const* sampler) {
    glActiveTexture(GL_TEXTURE0 + unit);
    std::optional<Gles3Texture>* kept = tables_.find(table.key());
    if (kept == nullptr) {
        Gles3Texture texture;
        texture.setPixels(table.entries(), {kTableSide, kTableSide, kTexelBytes});
        kept = &tables_.get(table.key());
        kept->emplace(std::move(texture));
        tables_.setSize(table.key(), 1);
    }
    glBindTexture(GL_TEXTURE_2D, (*kept)->texture());
    glUniform1i(uniformLocation(sampler), static_cast<GLint>(unit));
}
