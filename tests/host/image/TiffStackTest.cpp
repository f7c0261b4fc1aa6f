#include "host/image/TiffStack.h"

#include <gtest/gtest.h>

namespace {

// Pages of one kind; `masks` and reduced copies would lie between them.
TiffChain chainOf(size_t pages, std::uint16_t bands = 1) {
    TiffChain chain;
    for (size_t page = 0; page < pages; ++page) {
        TiffChain::Entry entry;
        entry.kind = {40, 30, bands, 16, 1, 1};
        entry.offset = 8 + page;
        chain.entries.push_back(entry);
        chain.pages.push_back(page);
    }
    return chain;
}

std::string ome(std::string const& attributes, std::string const& children = "", std::string const& root = "") {
    return "<OME " + root + "><Image><Pixels " + attributes + ">" + children + "</Pixels></Image></OME>";
}

using Pages = std::vector<size_t>;

// Of an OME image, in the order of planes, slices, times.
Pages pagesOf(size_t count, std::string const& description) {
    auto const stack = TiffStack::of(chainOf(count), description);
    return stack ? stack->pages : Pages();
}

} // namespace

TEST(TiffStackTest, PagesOfOneKindAreSlices) {
    auto const stack = TiffStack::of(chainOf(3), "holiday");
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->size.planes, 1u);
    EXPECT_EQ(stack->size.slices, 3u);
    EXPECT_EQ(stack->size.times, 1u);
    EXPECT_EQ(stack->size.sliceNoun, "page");
    EXPECT_EQ(stack->pages, (Pages{0, 1, 2}));
    EXPECT_TRUE(stack->bands.empty());
    EXPECT_FALSE(TiffStack::of(chainOf(1), ""));
}

TEST(TiffStackTest, PagesOfOtherKindsAreNone) {
    auto const differs = [](auto const& change) {
        TiffChain chain = chainOf(3);
        change(chain.entries.back());
        return !TiffStack::of(chain, "");
    };
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.kind.width = 41; }));
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.kind.height = 31; }));
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.kind.bands = 3; }));
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.kind.bits = 8; }));
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.kind.sampleFormat = 2; }));
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.kind.photometric = 0; }));
    EXPECT_TRUE(differs([](TiffChain::Entry& entry) { entry.subDirectories = {7}; }));
    EXPECT_FALSE(differs([](TiffChain::Entry& entry) { entry.offset = 1000; }));
}

TEST(TiffStackTest, ImageJCountsChannelsThenSlicesThenTimes) {
    auto const stack =
        TiffStack::of(chainOf(12), "ImageJ=1.53t\nimages=12\nchannels=2\nslices=3\nframes=2\nhyperstack=true\n");
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->size.planes, 2u);
    EXPECT_EQ(stack->size.slices, 3u);
    EXPECT_EQ(stack->size.times, 2u);
    EXPECT_EQ(stack->size.sliceNoun, "z");
    EXPECT_EQ(stack->pages, (Pages{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    // Numbers that are not those of the pages.
    for (char const* const wrong : {"channels=2\n", "channels=0\n", "channels=x\nslices=12\n", "slices=13\n",
                                    "slices=18446744073709551615\nframes=2\n", "images=12\n"})
        EXPECT_FALSE(TiffStack::of(chainOf(12), std::string("ImageJ=1\n") + wrong)) << wrong;
}

TEST(TiffStackTest, OmePlanesFollowTheOrderOfTheAxes) {
    std::string const sizes = R"(SizeC="2" SizeZ="3" SizeT="2" DimensionOrder=")";
    // Page of (c, z, t), with c varying fastest, then z, then t.
    auto const expected = [](size_t c, size_t z, size_t t) {
        Pages pages;
        for (size_t time = 0; time < 2; ++time)
            for (size_t slice = 0; slice < 3; ++slice)
                for (size_t channel = 0; channel < 2; ++channel)
                    pages.push_back(c * channel + z * slice + t * time);
        return pages;
    };
    EXPECT_EQ(pagesOf(12, ome(sizes + "XYCZT\"")), expected(1, 2, 6));
    EXPECT_EQ(pagesOf(12, ome(sizes + "XYCTZ\"")), expected(1, 4, 2));
    EXPECT_EQ(pagesOf(12, ome(sizes + "XYZCT\"")), expected(3, 1, 6));
    EXPECT_EQ(pagesOf(12, ome(sizes + "XYZTC\"")), expected(6, 1, 3));
    EXPECT_EQ(pagesOf(12, ome(sizes + "XYTCZ\"")), expected(2, 4, 1));
    EXPECT_EQ(pagesOf(12, ome(sizes + "XYTZC\"")), expected(6, 2, 1));
    EXPECT_EQ(pagesOf(12, ome(R"(SizeC="2" SizeZ="3" SizeT="2")")), expected(3, 1, 6)) << "XYZCT if none is stated";
    for (char const* const wrong : {"XYZ", "XYCC", "", "CZTT", "XYCZTC"})
        EXPECT_EQ(pagesOf(12, ome(sizes + wrong + "\"")), Pages()) << wrong;
}

TEST(TiffStackTest, OmeSaysWhereBlocksOfPlanesBegin) {
    std::string const sizes = R"(SizeC="2" SizeZ="2" SizeT="1" DimensionOrder="XYCZT")";
    EXPECT_EQ(pagesOf(4, ome(sizes, R"(<TiffData/>)")), (Pages{0, 1, 2, 3}));
    EXPECT_EQ(pagesOf(4, ome(sizes, R"(<TiffData IFD="2" PlaneCount="2"/><TiffData FirstZ="1" PlaneCount="2"/>)")),
              (Pages{2, 3, 0, 1}));
    EXPECT_EQ(pagesOf(5, ome(sizes, R"(<TiffData IFD="1" PlaneCount="4"/>)")), (Pages{1, 2, 3, 4}))
        << "a label before them";
    EXPECT_EQ(pagesOf(4, ome(sizes, R"(<TiffData IFD="3"/><TiffData FirstC="1" IFD="2"/>
                                        <TiffData FirstZ="1" IFD="1"/><TiffData FirstC="1" FirstZ="1" IFD="0"/>)")),
              (Pages{3, 2, 1, 0}));
    struct {
        char const* what;
        std::string blocks;
    } const wrong[] = {{"a plane is missing", R"(<TiffData PlaneCount="3"/>)"},
                       {"more planes than there are", R"(<TiffData PlaneCount="5"/>)"},
                       {"more from the second one on", R"(<TiffData FirstC="1" IFD="0" PlaneCount="4"/>)"},
                       {"a channel too many", R"(<TiffData FirstC="2"/>)"},
                       {"a slice too many", R"(<TiffData FirstZ="2"/>)"},
                       {"a time too many", R"(<TiffData FirstT="1"/>)"},
                       {"a page that is not there", R"(<TiffData IFD="1" PlaneCount="4"/>)"},
                       {"one page twice", R"(<TiffData PlaneCount="3"/><TiffData FirstC="1" FirstZ="1" IFD="0"/>)"}};
    for (auto const& one : wrong)
        EXPECT_EQ(pagesOf(4, ome(sizes, one.blocks)), Pages()) << one.what;
    EXPECT_EQ(pagesOf(4, ome(sizes, "<TiffData><UUID>b</UUID></TiffData>", "UUID=\"a\"")), Pages())
        << "in another file";
    EXPECT_EQ(pagesOf(3, ome(sizes)), Pages()) << "fewer pages than planes";
}

TEST(TiffStackTest, PagesThatAreNoneOfThePlanesAreLeftOut) {
    EXPECT_EQ(pagesOf(6, ome(R"(SizeC="4")")), (Pages{0, 1, 2, 3}));
}

TEST(TiffStackTest, PagesAreCountedWithoutReducedCopies) {
    TiffChain chain = chainOf(4);
    chain.entries[1].subfileType = 1;
    chain.pages = {0, 2, 3};
    auto const stack =
        TiffStack::of(chain, ome(R"(SizeC="2")", R"(<TiffData IFD="0"/><TiffData FirstC="1" IFD="3"/>)"));
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->pages, (Pages{0, 2}));
    EXPECT_FALSE(TiffStack::of(chain, ome(R"(SizeC="2")"))) << "the second directory is no page";
}

TEST(TiffStackTest, ChannelsOfOnePlaneEachAreNamed) {
    std::string const channels = R"(<Channel Name="A" Color="255"/><Channel Name="B"/>)";
    auto const stack = TiffStack::of(chainOf(2), ome(R"(SizeC="2")", channels));
    ASSERT_TRUE(stack);
    ASSERT_EQ(stack->bands.size(), 2u);
    EXPECT_EQ(stack->bands[0].name, "A");
    EXPECT_TRUE(stack->bands[0].colour);
    EXPECT_EQ(stack->bands[1].name, "B");
    EXPECT_FALSE(stack->bands[1].colour);
    EXPECT_TRUE(TiffStack::of(chainOf(3), ome(R"(SizeC="3")", channels))->bands.empty()) << "one channel is not told";
}

TEST(TiffStackTest, APlaneMayHaveSeveralSamplesPerPixel) {
    std::string const description = ome(R"(SizeC="3" SizeZ="2")", R"(<Channel SamplesPerPixel="3" Name="RGB"/>)");
    auto const stack = TiffStack::of(chainOf(2, 3), description);
    ASSERT_TRUE(stack);
    EXPECT_EQ(stack->size.planes, 1u);
    EXPECT_EQ(stack->size.slices, 2u);
    EXPECT_TRUE(stack->bands.empty());
    EXPECT_FALSE(TiffStack::of(chainOf(2, 2), description)) << "3 samples in pages of 2";
}
