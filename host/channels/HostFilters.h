#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"

/// The program's own filters.
namespace hostfilters {

/// For backends that show pictures of any samples: ChannelMixFilter and BackdropFilter.
Gles3RenderBackend::FilterRegistry registry();

} // namespace hostfilters
