#include "host/channels/HostFilters.h"

#include "host/channels/BackdropFilter.h"
#include "host/channels/ChannelMixFilter.h"

#include <memory>

Gles3RenderBackend::FilterRegistry hostfilters::registry() {
    using Registry = Gles3RenderBackend::FilterRegistry;
    Registry registry;
    registry.registerFactory(ChannelMixFilter::kName,
                             std::make_shared<Registry::SpecializedFactory<ChannelMixFilter>>());
    registry.registerFactory(BackdropFilter::kName, std::make_shared<Registry::SpecializedFactory<BackdropFilter>>());
    return registry;
}
