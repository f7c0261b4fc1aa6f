#pragma once

#include "conformance/Checks.h"
#include "conformance/Trial.h"
#include "host/Progress.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class RenderBackendInstance;

namespace conformance {

/// The result of one filter.
struct Outcome {
    std::string filter;
    Tally tally;
    std::string failure; ///< the exception that kept the filter from running to the end; empty: none
    double seconds = 0.0;

    bool exact() const { return tally.differingBytes == 0 && failure.empty(); }
};

/// Runs every built-in filter name against its plain integer model, in the order of their descriptions. Progress counts
/// filters. The outcome of a filter that the backend cannot run has a failure. GL thread only; uses targets and tile
/// ids of the instance and gives them back, and empties its pool of erased targets.
/// `own`: runs of the host's own filters, which come last.
std::vector<Outcome> verify(std::shared_ptr<RenderBackendInstance> const& instance, Scope const& scope,
                            Progress const& progress, Checks const& own = {});

/// The outcome of one name. A name without runs has a failure that says where to add them.
Outcome verifyFilter(std::string const& name, TexelRunner& runner, Scope const& scope);
/// Passes the pointwise filters in the runs of a name to the visitor, each once per layout and record.
void visitPointwise(std::string const& name, TexelRunner& runner, PointwiseVisitor const& visitor);
/// The names that have runs.
std::vector<std::string> namesWithRuns();

} // namespace conformance
