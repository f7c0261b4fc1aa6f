#include "host/filter/OwnedFilter.h"

#include "host/Quietly.h"

#include <utility>

OwnedFilter::OwnedFilter(std::shared_ptr<RenderBackendInstance> instance, Filter const& description)
    : instance_(std::move(instance)), filter_(description) {
    instance_->createFilterInstance(filter_);
}

OwnedFilter::~OwnedFilter() {
    quietly([this] { instance_->destroyFilterInstance(filter_); });
}
