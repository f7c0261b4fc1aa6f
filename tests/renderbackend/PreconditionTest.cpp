#include "renderbackend/Precondition.h"
#include "renderbackend/Filter.h"

#include <gtest/gtest.h>

// Checked builds only: in others a violated precondition is undefined, and there is nothing to see.
#ifdef VELMORA_CHECKED

namespace {

TEST(PreconditionDeathTest, ViolatedOneEndsTheProgramWithItsText) {
    EXPECT_DEATH(precondition(false, "one is two"), "precondition violated: one is two");
}

TEST(PreconditionDeathTest, OneThatHoldsLetsTheProgramGoOn) {
    EXPECT_EXIT((precondition(true, "one is one"), std::exit(7)), testing::ExitedWithCode(7), "^$");
}

TEST(PreconditionDeathTest, FilterWithAZeroStrideEndsTheProgram) {
    EXPECT_DEATH(Filter("zero", 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST), "strides are not 0");
}

} // namespace

#endif
