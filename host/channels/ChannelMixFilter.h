#pragma once

#include "gles3renderbackend/LruMap.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "gles3renderbackend/resources/Gles3Texture.h"
#include "host/display/ChannelTable.h"
#include "renderbackend/Filter.h"
#include "renderbackend/SingleFilterParameters.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

/// The tables of the two channels of a run.
struct ChannelMixParams : SingleFilterParameters {
    std::shared_ptr<ChannelTable const> first;
    std::shared_ptr<ChannelTable const> second;
};

/// Adds two channels to a mixture, looked up in their tables:
///
///     input 0    codes: red and green are the low and high byte of the first channel's, blue and alpha of the second's
///     input 1    the mixture so far
///     output     colours are added, up to 255; alpha is the largest of the mixture's and the tables', but at most what
///                tables of alpha say
///
/// RGBA texels all. With a ChannelMixParams; its tables are kept on the GPU, those used last.
class ChannelMixFilter : public Gles3Shader {
public:
    /// In the host's registry.
    static constexpr char const* kName = "ChannelMix";
    static constexpr size_t kTablesOnGpu = 72;

    explicit ChannelMixFilter(Filter& filter);

    static Filter description();

    /// Binds the tables to units 2 and 3. Throws VelmoraException for another record, or one without both tables.
    void uploadParameters(SingleFilterParameters const& params) override;

private:
    void bindTable(ChannelTable const& table, GLuint unit, char const* sampler);

    LruMap<std::uint64_t, std::optional<Gles3Texture>> tables_{kTablesOnGpu}; // each counts as one
};
