#include "host/view/StoreTileStages.h"

StoreTileStages::StoreTileStages(std::shared_ptr<RenderBackendInstance> const& instance, FilterRunner& targets,
                                 std::string const& storePath, Options const& options)
    : instance_(instance),
      store_(storePath, options.interruption),
      cache_(std::make_shared<SampleCache>(options.hostBytes)),
      rebuilt_(instance, targets, store_.info()),
      samples_(targets, rebuilt_, store_.info()),
      enhanced_(instance, targets, rebuilt_, samples_, store_.info()),
      emptyAreas_(instance, store_),
      loader_(storePath, options.threads, cache_) {}
