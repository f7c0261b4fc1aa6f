#include "conformance/Inputs.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace conformance;

TEST(InputsTest, EverySampleIsThereOnceInEachChannel) {
    reference::Planes3 const planes = everySampleThrice();
    for (auto const& plane : planes) {
        std::set<std::int32_t> const values(plane.samples.begin(), plane.samples.end());
        EXPECT_EQ(plane.samples.size(), 65536U);
        EXPECT_EQ(values.size(), 65536U);
        EXPECT_EQ(*values.begin(), -32768);
        EXPECT_EQ(*values.rbegin(), 32767);
    }
    EXPECT_NE(planes[0].samples, planes[1].samples);
    EXPECT_NE(planes[1].samples, planes[2].samples);
}

TEST(InputsTest, PartsOfTheColoursAreAllColoursOnce) {
    std::vector<bool> seen(size_t{1} << 24);
    size_t count = 0;
    for (std::uint32_t part = 0; part < kColourParts; ++part) {
        reference::Texels const texels = colours(part);
        for (size_t i = 0; i < texels.bytes.size(); i += 4) {
            size_t colour = 0;
            for (size_t channel = 0; channel < 3; ++channel)
                colour = 256 * colour + texels.bytes[i + channel];
            if (!seen[colour]) ++count;
            seen[colour] = true;
        }
    }
    EXPECT_EQ(count, size_t{1} << 24);
}

TEST(InputsTest, SameStartGivesTheSamePicture) {
    EXPECT_EQ(randomTexels(9, 5, 1).bytes, randomTexels(9, 5, 1).bytes);
    EXPECT_NE(randomTexels(9, 5, 1).bytes, randomTexels(9, 5, 2).bytes);
}

TEST(InputsTest, EveryTripleOfBoundariesIsThere) {
    reference::Planes3 const planes = boundaryTriples();
    std::set<std::array<std::int32_t, 3>> triples;
    for (size_t i = 0; i < planes[0].samples.size(); ++i)
        triples.insert({planes[0].samples[i], planes[1].samples[i], planes[2].samples[i]});
    EXPECT_EQ(triples.size(), kBoundaries.size() * kBoundaries.size() * kBoundaries.size());
}

} // namespace
