#include "host/image/OmeXml.h"

#include <gtest/gtest.h>

using Colour = std::array<std::uint8_t, 3>;

namespace {

std::string image(std::string const& attributes, std::string const& children = "", std::string const& root = "") {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!-- a comment --><OME " + root +
           " xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\"><Instrument/><Image ID=\"Image:0\"><Pixels " +
           attributes + ">" + children + "</Pixels></Image><Image><Pixels SizeZ=\"99\"/></Image></OME>";
}

} // namespace

TEST(OmeXmlTest, TheFirstImageIsTaken) {
    auto const found = omexml::parse(
        image(R"(DimensionOrder="XYZTC" SizeC="2" SizeZ="3" SizeT="4" PhysicalSizeX="0.5" PhysicalSizeY="2"
                 PhysicalSizeYUnit="mm")",
              R"(<Channel Name="DAPI &amp; more" Color="65535"/><Channel Color="-16776961"/>
                 <TiffData FirstC="1" FirstZ="2" FirstT="3" IFD="7" PlaneCount="5"/><TiffData/>)"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->order, "XYZTC");
    EXPECT_EQ(found->samples, 2u);
    EXPECT_EQ(found->slices, 3u);
    EXPECT_EQ(found->times, 4u);
    EXPECT_DOUBLE_EQ(found->millimetresX, 5e-4);
    EXPECT_DOUBLE_EQ(found->millimetresY, 2);
    ASSERT_EQ(found->channels.size(), 2u);
    EXPECT_EQ(found->channels[0].name, "DAPI & more");
    EXPECT_EQ(found->channels[0].colour, (Colour{0, 0, 255})) << "0x0000ffff";
    EXPECT_EQ(found->channels[1].name, "");
    EXPECT_EQ(found->channels[1].colour, (Colour{255, 0, 0})) << "0xff0000ff, as a signed number";
    ASSERT_EQ(found->blocks.size(), 2u);
    OmeImage::Block const& block = found->blocks[0];
    EXPECT_EQ(block.channel, 1u);
    EXPECT_EQ(block.slice, 2u);
    EXPECT_EQ(block.time, 3u);
    EXPECT_EQ(block.directory, 7u);
    EXPECT_EQ(block.planes, 5u);
    OmeImage::Block const& plain = found->blocks[1];
    EXPECT_EQ(plain.channel + plain.slice + plain.time, 0u);
    EXPECT_FALSE(plain.directory || plain.planes);
}

TEST(OmeXmlTest, WhatIsNotStatedIsOneOfEach) {
    auto const found = omexml::parse("<OME><Image><Pixels><Channel/></Pixels></Image></OME>");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->order, "XYZCT");
    EXPECT_EQ(found->samples * found->slices * found->times, 1u);
    EXPECT_EQ(found->millimetresX, 0);
    EXPECT_EQ(found->channels.size(), 1u);
    EXPECT_FALSE(found->channels[0].colour);
}

TEST(OmeXmlTest, NumbersThatAreNoneAreLeftOut) {
    for (char const* const wrong : {"", "x", "3x", "-3", "1000001", "99999999999999999999", "3.0"}) {
        auto const found = omexml::parse(
            image("SizeZ=\"" + std::string(wrong) + "\" PhysicalSizeX=\"x\"", "<Channel Color=\"4294967295\"/>"));
        ASSERT_TRUE(found);
        EXPECT_EQ(found->slices, 1u) << wrong;
        EXPECT_EQ(found->millimetresX, 0);
        EXPECT_FALSE(found->channels[0].colour) << "beyond 32 bits with a sign";
    }
    EXPECT_EQ(omexml::parse(image("SizeZ=\"1000000\""))->slices, 1000000u);
}

TEST(OmeXmlTest, PlanesOfOtherFilesAreKnownByTheirId) {
    std::string const blocks = "<TiffData><UUID FileName=\"a.tif\">urn:1</UUID></TiffData>"
                               "<TiffData><UUID FileName=\"b.tif\">urn:2</UUID></TiffData><TiffData/>";
    auto const found = omexml::parse(image("", blocks, "UUID=\"urn:1\""));
    ASSERT_EQ(found->blocks.size(), 3u);
    EXPECT_FALSE(found->blocks[0].isElsewhere);
    EXPECT_TRUE(found->blocks[1].isElsewhere);
    EXPECT_FALSE(found->blocks[2].isElsewhere);
    // A file that has no id of its own.
    EXPECT_FALSE(omexml::parse(image("", blocks))->blocks[1].isElsewhere);
}

TEST(OmeXmlTest, OtherTextsAreNone) {
    for (char const* const other : {"", "ImageJ=1.53", "<OME>", "<OME/>", "<OME><Image/></OME>", "<OMEGA></OMEGA>",
                                    "<a><OME><Image><Pixels/></Image></OME></a>", "<OME><Image><Pixels></OME>"})
        EXPECT_FALSE(omexml::parse(other)) << other;
}
