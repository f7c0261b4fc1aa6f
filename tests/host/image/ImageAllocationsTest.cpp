// Each `new` fails in turn while an image file is read: no picture is called damaged for want of memory, and the same
// reader reads the same pixels afterwards.
#include "host/image/ImageMetadata.h"
#include "host/image/ImageReader.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

namespace {

struct File {
    std::string ending;
    std::string options; // libvips'
};

class ImageAllocationsTest : public testing::TestWithParam<File> {
protected:
    using Bytes = std::vector<std::uint8_t>;

    void SetUp() override {
        testimages::writePattern16(path_, GetParam().options, kSize.width, kSize.height, 3);
        // libvips writes FITS from the lowest row up.
        bool const isUpsideDown = GetParam().ending == ".fits";
        for (size_t row = 0; row < kSize.height; ++row)
            for (size_t x = 0; x < kSize.width; ++x)
                for (size_t band = 0; band < 3; ++band) {
                    size_t const y = isUpsideDown ? kSize.height - 1 - row : row;
                    std::uint16_t const sample = testimages::sample16(x, y, band);
                    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(&sample);
                    expected_.insert(expected_.end(), bytes, bytes + sizeof(sample));
                }
    }

    std::unique_ptr<ImageReader> open() const {
        ImageReader::Options options;
        options.samples = ImageReader::Samples::kAsStored;
        options.lossless = true;
        return std::make_unique<ImageReader>(path_, options);
    }

    // In parts, as an import reads.
    static Bytes readFrom(ImageReader& reader) {
        constexpr size_t kRows = 20;
        Bytes all;
        Bytes part;
        for (size_t y = 0; y < kSize.height; y += kRows) {
            reader.read({0, y, kSize.width, kRows}, part);
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    // libvips keeps threads.
    allocationsweep::Scenario scenario(std::string const& what, std::function<void()> const& work,
                                       std::function<void()> const& check) const {
        allocationsweep::Scenario made{what + " " + path_.substr(path_.rfind('/') + 1), work, check};
        made.countsThreads = false;
        return made;
    }

    static constexpr Size kSize{70, 60};

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a" + GetParam().ending);
    Bytes expected_;
};

} // namespace

TEST_P(ImageAllocationsTest, AFileIsReadAfterwards) {
    auto const work = [&] { readFrom(*open()); };
    auto const check = [&] { EXPECT_TRUE(readFrom(*open()) == expected_); };
    EXPECT_GT(allocationsweep::sweep(scenario("open and read", work, check)).thrown, 8U);
}

TEST_P(ImageAllocationsTest, AReaderReadsTheSameAfterwards) {
    auto const reader = open();
    auto const work = [&] { readFrom(*reader); };
    auto const check = [&] { EXPECT_TRUE(readFrom(*reader) == expected_); };
    EXPECT_GT(allocationsweep::sweep(scenario("read", work, check)).thrown, 2U);
}

TEST_P(ImageAllocationsTest, WhatAFileHoldsBesideItsSamplesIsTheSameAfterwards) {
    ImageFacts facts;
    facts.properties = {
        {"a name", "one"}, {"another name", "two"}, {"a name", "three, which is longer than a few letters"}};
    auto const kept = [&] {
        InputFile file(path_);
        Bytes all;
        for (MetadataItem const& item : imagemetadata::of(file, facts, {}).items)
            all.insert(all.end(), item.bytes.begin(), item.bytes.end());
        return all;
    };
    Bytes const expected = kept();
    ASSERT_FALSE(expected.empty());
    auto const work = [&] { kept(); };
    auto const check = [&] { EXPECT_TRUE(kept() == expected); };
    EXPECT_GT(allocationsweep::sweep(scenario("keep what it holds", work, check)).thrown, 8U);
}

INSTANTIATE_TEST_SUITE_P(Formats, ImageAllocationsTest,
                         testing::Values(File{".ppm", ""}, File{".png", ""}, File{".tif", ""},
                                         File{".tiff", "[tile,tile-width=32,tile-height=32]"}, File{".v", ""},
                                         File{".fits", ""}, File{".jp2", "[lossless]"}, File{".jxl", "[lossless]"}),
                         [](auto const& file) { return file.param.ending.substr(1); });
