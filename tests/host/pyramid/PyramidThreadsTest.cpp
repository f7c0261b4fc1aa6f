// Readers of one file on several threads; without libvips, which has data races that are no concern of ours.
#include "host/pyramid/PyramidTiles.h"
#include "host/pyramid/StorePyramid.h"
#include "host/pyramid/TiffPyramid.h"
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/host/store/TestPictures.h"

#include <atomic>
#include <thread>

namespace {

class PyramidThreadsTest : public PyramidFixture {
protected:
    static constexpr int kThreads = 4;
    static constexpr int kReads = 60;

    // Each thread reads other regions of all levels; the results are those of one thread.
    static void expectSame(Pyramid const& pyramid, size_t levels) {
        std::vector<Bytes> expected;
        std::vector<Size> sizes;
        PyramidTiles alone(pyramid.reader());
        size_t const pixelBytes = pyramid.facts().image.layout.pixelBytes();
        for (size_t level = 0; level < levels; ++level) {
            sizes.push_back(alone.size(level));
            expected.emplace_back(sizes[level].width * sizes[level].height * pixelBytes);
            alone.read(level, wholeOf(sizes[level]), expected[level].data());
        }
        std::atomic<int> wrong{0};
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int thread = 0; thread < kThreads; ++thread)
            threads.emplace_back([&, thread] {
                PyramidTiles tiles(pyramid.reader());
                auto const numbers = noise<std::uint32_t>(kReads * 5, static_cast<std::uint32_t>(thread));
                for (size_t i = 0; i < numbers.size(); i += 5) {
                    size_t const level = numbers[i] % levels;
                    Size const& size = sizes[level];
                    size_t const x = numbers[i + 1] % size.width;
                    size_t const y = numbers[i + 2] % size.height;
                    Region const region{x, y, numbers[i + 3] % (size.width - x) + 1,
                                        numbers[i + 4] % (size.height - y) + 1};
                    Bytes samples(region.width * region.height * pixelBytes);
                    tiles.read(level, region, samples.data());
                    if (samples != crop(expected[level], size.width, pixelBytes, region)) ++wrong;
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(wrong, 0);
    }
};

} // namespace

TEST_F(PyramidThreadsTest, FourReadersOfATiffReadWhatOneReads) {
    for (std::uint16_t const compression : Numbers{COMPRESSION_NONE, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_JPEG}) {
        std::vector<Directory> all{level(300, 200, 3, 1), reduced(150, 100, 3, 2), reduced(38, 25, 3, 3)};
        for (Directory& one : all)
            one.compression = compression;
        std::string const file = write(all);
        InputFile input(file);
        // A part of the tiles stays. openPyramid() would ask libvips whether it is a slide.
        expectSame(Pyramid(file, tiffpyramid::open(input, {}, 20 * 32 * 16 * 3), {}), 6);
    }
}

TEST_F(PyramidThreadsTest, FourReadersOfAFileInMemoryReadWhatOneReads) {
    std::string content = "P6\n300 200\n255\n";
    for (std::uint8_t const sample : noise<std::uint8_t>(300 * 200 * 3, 4))
        content += static_cast<char>(sample);
    writeFile(path("a.ppm"), content);
    expectSame(*open(path("a.ppm")), 6);
}

TEST_F(PyramidThreadsTest, FourReadersOfAStoreReadWhatOneReads) {
    ImportOptions options;
    options.tileSize = 32;
    testpictures::import(testpictures::picture(300, 200, 3, 16, testpictures::Content::Noise), path("a.vlm"), options);
    // A part of the tiles stays.
    expectSame(Pyramid(path("a.vlm"), storepyramid::open(path("a.vlm"), 100000, {}), {}), 6);
}
