#include "apps/velmora/view/StepSwitches.h"

#include <gtest/gtest.h>

using enhancement::Equalise;
using enhancement::Gamma;
using enhancement::LinearToSrgb;
using enhancement::Sharpen;

namespace {

std::vector<size_t> kinds(StepSwitches const& switches) {
    std::vector<size_t> kinds;
    for (auto const& step : switches.steps())
        kinds.push_back(step.index());
    return kinds;
}

template <class Kind>
size_t kind() {
    return enhancement::Step(Kind()).index();
}

} // namespace

TEST(StepSwitchesTest, GivenStepsAreOnInTheirOrder) {
    StepSwitches const switches({Gamma(), Sharpen{2}, LinearToSrgb(), Sharpen{3}});
    EXPECT_EQ(kinds(switches), (std::vector{kind<Gamma>(), kind<Sharpen>(), kind<LinearToSrgb>(), kind<Sharpen>()}));
    EXPECT_TRUE(switches.on<Sharpen>());
    EXPECT_FALSE(switches.on<Equalise>());
}

TEST(StepSwitchesTest, AKindGoesOffAndComesBackInItsPlace) {
    StepSwitches switches({Sharpen{2}, Gamma(), Sharpen{3}});
    switches.toggle(Sharpen{9});
    EXPECT_EQ(kinds(switches), (std::vector{kind<Gamma>()}));
    switches.toggle(Sharpen{9});
    EXPECT_EQ(kinds(switches), (std::vector{kind<Sharpen>(), kind<Gamma>(), kind<Sharpen>()}));
    EXPECT_EQ(std::get<Sharpen>(switches.steps().back()).gain, 3);
}

TEST(StepSwitchesTest, AKindThatWasNotGivenIsAddedAtTheEnd) {
    StepSwitches switches({Gamma()});
    switches.toggle(Equalise{4});
    EXPECT_EQ(kinds(switches), (std::vector{kind<Gamma>(), kind<Equalise>()}));
    switches.toggle(Equalise{4});
    EXPECT_EQ(kinds(switches), (std::vector{kind<Gamma>()}));
}

TEST(StepSwitchesTest, SettingReplacesTheLastOfItsKind) {
    StepSwitches switches({Gamma{1, 2, 3}, Gamma{4, 5, 6}, Sharpen()});
    switches.toggle(Gamma());
    switches.set(Gamma{7, 8, 9});
    EXPECT_EQ(kinds(switches), (std::vector{kind<Gamma>(), kind<Sharpen>()})) << "only the replaced one is on";
    EXPECT_EQ(std::get<Gamma>(switches.steps().front()).black, 8u);
    EXPECT_EQ(switches.last<Gamma>()->white, 9u);
}

TEST(StepSwitchesTest, WithoutAnyThereIsNoLast) {
    StepSwitches switches({});
    EXPECT_FALSE(switches.last<Gamma>());
    switches.set(Gamma{1, 2, 3});
    EXPECT_EQ(switches.last<Gamma>()->white, 3u);
    switches.toggle(Gamma());
    EXPECT_TRUE(switches.steps().empty());
    EXPECT_EQ(switches.last<Gamma>()->white, 3u) << "kept while it is off";
}
