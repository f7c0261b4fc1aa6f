// Slides and JPEG 2000: levels that libvips gives.
#include "host/image/SlideImages.h"
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/support/TestImages.h"

#include <vips/vips8>

#include <atomic>
#include <thread>

namespace {

class DecoderPyramidTest : public PyramidFixture {
protected:
    // As a scanner writes it: full pages of levels, and a thumbnail in strips.
    static Directory scanned(std::uint32_t width, std::uint32_t height, std::uint32_t seed) {
        Directory made = level(width, height, 3, seed);
        made.compression = COMPRESSION_LZW;
        made.description =
            "Aperio Image Library v1\r\n" + std::to_string(width) + "x" + std::to_string(height) + "|MPP = 0.2500";
        return made;
    }

    std::string slide(std::string const& name) const {
        Directory thumbnail = scanned(30, 20, 9);
        thumbnail.tile = 0;
        return write({scanned(300, 200, 1), thumbnail, scanned(75, 50, 2)}, "w", name);
    }

    // Damages the data of a tile of the first page.
    static void damage(std::string const& file, size_t share) {
        std::string content = readFile(file);
        size_t const tile = 8 + (300 * 200 * 3) * share / 100;
        content.replace(tile, 3000, std::string(3000, '\xff'));
        writeFile(file, content);
    }

    std::string jpeg2000(std::string const& name, size_t width, size_t height, bool lossless) const {
        Bytes samples = ramps(width, height, 3);
        vips::VImage::new_from_memory(samples.data(), samples.size(), static_cast<int>(width), static_cast<int>(height),
                                      3, VIPS_FORMAT_UCHAR)
            .jp2ksave(
                path(name).c_str(),
                vips::VImage::option()->set("tile_width", 256)->set("tile_height", 256)->set("lossless", lossless));
        return path(name);
    }
};

} // namespace

TEST_F(DecoderPyramidTest, SlidesHaveTheirLevels) {
    auto const pyramid = open(slide("a.svs"));
    EXPECT_EQ(pyramid->facts().image.format, "slide");
    EXPECT_EQ(pyramid->facts().image.pages, 1u);
    EXPECT_DOUBLE_EQ(pyramid->facts().image.pixelsPerMillimetreX, 4000);
    ASSERT_EQ(sizesOf(pyramid->facts()), (Sizes{"300x200", "75x50"}));
    // Squares of 256 samples, as far as the level has so many.
    EXPECT_EQ(pyramid->facts().levels[0].unit.width, 256u);
    EXPECT_EQ(pyramid->facts().levels[0].unit.height, 200u);
    EXPECT_EQ(pyramid->facts().levels[1].unit.width, 75u);
    EXPECT_EQ(pyramid->facts().levels[1].unit.height, 50u);
    auto const reader = pyramid->reader();
    expectLevel(*reader, 0, scanned(300, 200, 1).bytes);
    expectLevel(*reader, 1, scanned(75, 50, 2).bytes);
}

TEST_F(DecoderPyramidTest, ASlideHasALabelBesideIt) {
    Directory thumbnail = scanned(30, 20, 9);
    thumbnail.tile = 0;
    Directory label = scanned(60, 24, 5);
    label.tile = 0;
    label.subfileType = 1;
    label.description = "Aperio Image Library v10.0.51\nlabel 60x24 \r\n";
    label.subfileType = 0;
    std::string const file = write({scanned(300, 200, 1), thumbnail, scanned(75, 50, 2), label}, "w", "a.svs");
    InputFile input(file);
    EXPECT_EQ(slideimages::names(input), (std::vector<std::string>{"label", "thumbnail"}));
    SmallPicture const whole = slideimages::read(input, "label");
    EXPECT_EQ(whole.size.width, 60u);
    EXPECT_EQ(whole.size.height, 24u);
    EXPECT_EQ(whole.samples, label.bytes);
    SmallPicture const small = smallpicture::shrunk(whole, 30);
    EXPECT_EQ(small.size.width, 30u);
    EXPECT_EQ(small.size.height, 12u);
    ASSERT_EQ(small.samples.size(), 30u * 12 * 4);
    for (size_t y = 0; y < 12; ++y)
        for (size_t x = 0; x < 30; ++x) {
            size_t sum = 0;
            for (size_t const place : {0u, 1u, 60u, 61u})
                sum += label.bytes[3 * (2 * y * 60 + 2 * x + place)];
            ASSERT_EQ(small.samples[4 * (y * 30 + x)], (sum + 2) / 4) << x << "," << y;
            ASSERT_EQ(small.samples[4 * (y * 30 + x) + 3], 255);
        }
    SmallPicture const odd = smallpicture::shrunk(whole, 25);
    EXPECT_EQ(odd.size.width, 20u) << "squares of three pixels";
    EXPECT_EQ(odd.size.height, 8u);
    HostError const error = failure([&] { slideimages::read(input, "macro"); });
    EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
    InputFile plain(write({level(40, 30, 3, 1)}, "w", "plain.tif"));
    EXPECT_TRUE(slideimages::names(plain).empty());
}

TEST_F(DecoderPyramidTest, SquaresOfSlidesAreDecodedOnce) {
    auto const pyramid = open(slide("a.svs"));
    auto const reader = pyramid->reader();
    readAll(*reader);
    EXPECT_EQ(reader->statistics().decodedUnits, 2u);
    EXPECT_EQ(reader->statistics().decodedBytes, 300u * 200 * 3);
    auto const other = pyramid->reader();
    readAll(*other);
    EXPECT_EQ(other->statistics().decodedUnits, 0u);
    EXPECT_EQ(other->statistics().cachedUnits, 2u);
}

TEST_F(DecoderPyramidTest, ASlideThatIsReplacedIsNoticed) {
    std::string const file = slide("a.svs");
    auto const pyramid = open(file);
    // Decoders keep 128 MB at most, and the samples that go on to the cache.
    EXPECT_EQ(pyramid->facts().readerBytes, 256u << 20);
    write({scanned(280, 200, 3), scanned(70, 50, 4)}, "w", "a.svs");
    auto const reader = pyramid->reader();
    for (size_t const level : {0u, 1u})
        EXPECT_TRUE(has(failure([&] { readAll(*reader, level); }).what(), "it has changed while it was being read"));
    slide("a.svs");
    expectLevel(*reader, 1, scanned(75, 50, 2).bytes);
}

TEST_F(DecoderPyramidTest, ADamagedPartOfASlideFailsItsReadsAlone) {
    std::string const file = slide("a.svs");
    damage(file, 50);
    auto const reader = open(file)->reader();
    for (int i = 0; i < 2; ++i) {
        HostError const error = failure([&] { readAll(*reader); });
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
        EXPECT_TRUE(has(error.what(), "cannot read '" + file + "': ")) << error.what();
        expectLevel(*reader, 1, scanned(75, 50, 2).bytes);
    }
}

TEST_F(DecoderPyramidTest, Jpeg2000HasTheResolutionsOfItsWavelet) {
    std::string const file = jpeg2000("a.jp2", 1000, 700, true);
    auto const pyramid = open(file);
    EXPECT_EQ(pyramid->facts().image.format, "JPEG 2000");
    ASSERT_GE(pyramid->facts().levels.size(), 3u);
    auto const reader = pyramid->reader();
    expectLevel(*reader, 0, ramps(1000, 700, 3));
    for (size_t level = 1; level < pyramid->facts().levels.size(); ++level) {
        vips::VImage const decoded =
            vips::VImage::jp2kload(file.c_str(), vips::VImage::option()->set("page", static_cast<int>(level)))
                .copy_memory();
        Size const size = pyramid->facts().levels[level].size;
        EXPECT_EQ(size.width, static_cast<size_t>(decoded.width()));
        auto const* const first = static_cast<std::uint8_t const*>(decoded.data());
        expectLevel(*reader, level, Bytes(first, first + size.width * size.height * 3));
    }
}

TEST_F(DecoderPyramidTest, ComplaintsOfOneThreadAreNotThoseOfAnother) {
    std::string const intact = slide("intact.svs");
    std::string const damaged = slide("damaged.svs");
    damage(damaged, 10);
    Bytes const expected = scanned(300, 200, 1).bytes;
    PyramidOptions options;
    options.cacheBytes = 0;
    auto const good = open(intact, options);
    auto const bad = open(damaged, options);
    std::atomic<int> wrong{0};
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            bool const isGood = thread % 2 == 0;
            auto const reader = (isGood ? good : bad)->reader();
            for (int i = 0; i < 12; ++i) {
                try {
                    bool const isSame = readAll(*reader) == expected;
                    ++(isGood && isSame ? right : wrong);
                } catch (HostError const& error) {
                    bool const isNamed = has(error.what(), damaged) && error.kind() == HostError::Kind::UnreadableImage;
                    ++(!isGood && isNamed ? right : wrong);
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(right, 48);
}

TEST_F(DecoderPyramidTest, ACheckThatComesLaterStopsReading) {
    struct Stop {};
    auto const pyramid = open(slide("a.svs"));
    auto const reader = pyramid->reader();
    Bytes samples(10 * 10 * 3);
    reader->read(0, {0, 0, 10, 10}, samples.data());
    reader->setCheck([] { throw Stop(); });
    EXPECT_THROW(reader->read(0, {280, 180, 10, 10}, samples.data()), Stop);
    reader->setCheck({});
    EXPECT_NO_THROW(reader->read(0, {280, 180, 10, 10}, samples.data()));
}
