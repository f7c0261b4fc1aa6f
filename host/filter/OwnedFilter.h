#pragma once

#include "renderbackend/Filter.h"
#include "renderbackend/RenderBackendInstance.h"

#include <memory>

/// A filter with its program, which is destroyed with the object.
class OwnedFilter {
public:
    /// Throws VelmoraException if the program cannot be made.
    OwnedFilter(std::shared_ptr<RenderBackendInstance> instance, Filter const& description);
    ~OwnedFilter();
    OwnedFilter(OwnedFilter const&) = delete;
    OwnedFilter& operator=(OwnedFilter const&) = delete;

    Filter const& filter() const { return filter_; }

private:
    std::shared_ptr<RenderBackendInstance> instance_;
    Filter filter_;
};
