// The catalogue of runs beside the list of filters.
#include "conformance/Verification.h"
#include "host/filter/FilterDescriptions.h"
#include "tests/renderbackend/MinimalInstance.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace {

TEST(CatalogueTest, EveryFilterHasRunsAndNothingElseHas) {
    std::vector<std::string> const withRuns = conformance::namesWithRuns();
    std::set<std::string> const distinct(withRuns.begin(), withRuns.end());
    for (std::string const& name : description::names())
        EXPECT_EQ(distinct.count(name), 1U)
            << name << " has no runs beside a model: add them to the Checks of its subject, conformance/...Checks.cpp";
    for (std::string const& name : withRuns)
        EXPECT_NO_THROW(description::byName(name)) << name << " has runs and is no filter";
}

TEST(CatalogueTest, NameWithoutRunsIsAFailureThatSaysWhereTheyGo) {
    FixedContext context;
    conformance::TexelRunner runner(std::make_shared<MinimalInstance>(1, context));
    conformance::Outcome const outcome = conformance::verifyFilter("FilterNone", runner, {});
    EXPECT_FALSE(outcome.exact());
    EXPECT_EQ(outcome.tally.pixels, 0U);
    EXPECT_EQ(outcome.failure, "FilterNone has no runs beside a model: add them to the Checks of its subject, "
                               "conformance/...Checks.cpp");
}

} // namespace
