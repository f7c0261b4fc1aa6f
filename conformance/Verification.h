#pragma once

#include "conformance/Trial.h"
#include "host/Progress.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class RenderBackendInstance;

namespace conformance {

/// How one filter did.
struct Outcome {
    std::string filter;
    Tally tally;
    std::string failure; ///< what the backend reported where the filter could not be run to the end; else empty
    double seconds = 0.0;

    bool exact() const { return tally.differingBytes == 0 && failure.empty(); }
};

/// Progress counts filters. Runs every built-in filter name against its plain integer model, in the order of their
/// descriptions. A filter that the backend cannot run is an outcome like another. GL thread only; uses targets and tile
/// ids of the instance and gives them back, and empties its pool of erased targets.
std::vector<Outcome> verify(std::shared_ptr<RenderBackendInstance> const& instance, Scope const& scope,
                            Progress const& progress);

/// The same for one of the names. A name without runs is an outcome too, whose failure says where they go.
Outcome verifyFilter(std::string const& name, TexelRunner& runner, Scope const& scope);
/// Shows the pointwise filters that the runs of a name lay everywhere, each once for every layout and record.
void visitPointwise(std::string const& name, TexelRunner& runner, PointwiseVisitor const& visitor);
/// The names that have runs.
std::vector<std::string> namesWithRuns();

} // namespace conformance
