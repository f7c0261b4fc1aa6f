#include "bench/FilterReads.h"

#include "host/filter/FilterDescriptions.h"

#include <gtest/gtest.h>

namespace {

TEST(FilterReadsTest, EveryFilterIsMeasured) {
    for (std::string const& name : description::names())
        EXPECT_NO_THROW(filterReads(name));
}

TEST(FilterReadsTest, EveryRowIsOfAFilter) {
    for (FilterReads const& row : kFilterReads)
        EXPECT_NO_THROW(description::byName(row.filter)) << row.filter;
}

TEST(FilterReadsTest, NameWithoutARowIsToldWhereItGoes) {
    try {
        filterReads("FilterNone");
        FAIL() << "there is a row";
    } catch (std::out_of_range const& failure) {
        EXPECT_STREQ(failure.what(),
                     "FilterNone has no row in the benchmarks: add one to kFilterReads of bench/FilterReads.h");
    }
}

} // namespace
