// A program with one case of each outcome, for the test of scripts/run-tests, which chooses among them.
#include <gtest/gtest.h>

#include <cstdlib>

TEST(Outcomes, Passes) {
    EXPECT_EQ(1 + 1, 2);
}

TEST(Outcomes, PassesToo) {
    EXPECT_EQ(2 + 2, 4);
}

TEST(Outcomes, Fails) {
    EXPECT_EQ(1 + 1, 3);
}

TEST(Outcomes, Skips) {
    GTEST_SKIP() << "no such thing here: <&\"\x01";
}

TEST(Outcomes, DISABLED_IsDisabled) {}

TEST(Outcomes, Crashes) {
    std::abort();
}

TEST(Outcomes, ExitsInTheMiddle) {
    std::_Exit(EXIT_SUCCESS);
}

// As a leak does that is found at the end.
TEST(Outcomes, FailsAtTheEnd) {
    std::atexit([] { std::_Exit(EXIT_FAILURE); });
}
