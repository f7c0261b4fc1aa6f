// Whatever a picture's metadata: the written description can be read, or nothing is written.
#include "host/HostError.h"
#include "host/store/TileStore.h"
#include "host/store/TileStoreWriter.h"
#include "tests/host/store/SourceOf.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using testpictures::Content;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class ResolvedSource final : public SourceOf {
public:
    ResolvedSource(std::unique_ptr<PixelSource> source, double pixelsPerMillimetreX, double pixelsPerMillimetreY)
        : SourceOf(std::move(source)), x_(pixelsPerMillimetreX), y_(pixelsPerMillimetreY) {}

    double pixelsPerMillimetreX() const override { return x_; }
    double pixelsPerMillimetreY() const override { return y_; }

private:
    double x_;
    double y_;
};

class ClippedSource final : public SourceOf {
public:
    ClippedSource(std::unique_ptr<PixelSource> source, Lost const& lost) : SourceOf(std::move(source)), lost_(lost) {}

    Lost lost() const override { return lost_; }

private:
    Lost lost_;
};

class VastSource final : public SourceOf {
public:
    VastSource(std::unique_ptr<PixelSource> source, size_t width, size_t height)
        : SourceOf(std::move(source)), width_(width), height_(height) {}

    size_t width() const override { return width_; }
    size_t height() const override { return height_; }

private:
    size_t width_;
    size_t height_;
};

class StoreDescriptionTest : public testing::Test {
protected:
    // The description that is read back for a picture with this resolution and name.
    StoreInfo imported(double x, double y, std::string const& name = "a.tif") {
        ImportOptions options;
        options.replace = true;
        options.sourceName = name;
        notes_.clear();
        options.note = [this](std::string const& line) { notes_.push_back(line); };
        auto const open = [&] { return std::make_unique<ResolvedSource>(testpictures::source(picture_), x, y); };
        importStore(open, path_, options, [](size_t, size_t) {});
        return TileStore(path_).info();
    }

    // What an import says of samples that the picture's source has changed.
    std::vector<std::string> notesOf(PixelSource::Lost const& lost) {
        ImportOptions options;
        options.replace = true;
        options.sourceName = "a.tif";
        notes_.clear();
        options.note = [this](std::string const& line) { notes_.push_back(line); };
        auto const open = [&] { return std::make_unique<ClippedSource>(testpictures::source(picture_), lost); };
        importStore(open, path_, options, [](size_t, size_t) {});
        return notes_;
    }

    StoreInfo plain() const {
        StoreInfo info;
        info.width = info.height = 20;
        info.bands = 1;
        info.tileSize = 32;
        return info;
    }

    void expectRefused(StoreInfo const& info, std::string const& words) const {
        try {
            TileStoreWriter const writer(folder_.path("b.vlm"), info);
            ADD_FAILURE() << words;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::UnwritableOutput);
            EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
        }
        EXPECT_TRUE(folder_.names().empty());
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    testpictures::Picture picture_ = testpictures::picture(20, 20, 1, 8, Content::Ramp);
    std::vector<std::string> notes_;
};

} // namespace

TEST_F(StoreDescriptionTest, AResolutionThatCanBeIsKept) {
    for (double const microns : {0.25, 1e-300, 1e12, 1e-3, 1.0 / 3}) {
        StoreInfo const info = imported(1000 / microns, 4000);
        EXPECT_DOUBLE_EQ(info.micronsPerPixelX, microns);
        EXPECT_EQ(info.micronsPerPixelY, 0.25);
        EXPECT_TRUE(notes_.empty());
    }
}

TEST_F(StoreDescriptionTest, OneThatCannotBeIsLeftOutWithAWord) {
    for (double const nonsense : {1e-10, 1e-320, -1.0, -kInfinity, kInfinity, std::nan("")}) {
        SCOPED_TRACE(nonsense);
        EXPECT_EQ(imported(nonsense, 4000).micronsPerPixelX, 0);
        ASSERT_EQ(notes_.size(), 1u);
        EXPECT_NE(notes_.front().find("the resolution of 'a.tif'"), std::string::npos) << notes_.front();
        StoreInfo const info = imported(4000, nonsense);
        EXPECT_EQ(info.micronsPerPixelX, 0.25);
        EXPECT_EQ(info.micronsPerPixelY, 0);
        EXPECT_EQ(notes_.size(), 1u);
    }
    EXPECT_EQ(imported(0, 0).micronsPerPixelX, 0);
    EXPECT_TRUE(notes_.empty()) << "it is not known";
}

TEST_F(StoreDescriptionTest, SamplesThatWereChangedAreCounted) {
    using Notes = std::vector<std::string>;
    EXPECT_EQ(notesOf({0, 0}), Notes{});
    EXPECT_EQ(notesOf({1, 0}), Notes{"'a.tif': 1 sample beyond the range clipped"});
    EXPECT_EQ(notesOf({0, 1}), Notes{"'a.tif': 1 sample that is no number made 0"});
    EXPECT_EQ(notesOf({0, 2}), Notes{"'a.tif': 2 samples that are no number made 0"});
    EXPECT_EQ(notesOf({2, 1}), Notes{"'a.tif': 2 samples beyond the range clipped, 1 sample that is no number made 0"});
}

TEST_F(StoreDescriptionTest, AStoreNeverReplacesWhatItIsMadeOf) {
    writeFile(path_, "the picture");
    ImportOptions options;
    options.replace = true;
    options.sources = {path_};
    bool opened = false;
    auto const open = [&]() -> std::unique_ptr<PixelSource> {
        opened = true;
        return testpictures::source(picture_);
    };
    try {
        importStore(open, path_, options, [](size_t, size_t) {});
        ADD_FAILURE() << "it was replaced";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnwritableOutput);
        EXPECT_NE(std::string(error.what()).find("it is the input itself"), std::string::npos) << error.what();
    }
    EXPECT_FALSE(opened);
    EXPECT_EQ(readFile(path_), "the picture");
}

TEST_F(StoreDescriptionTest, PicturesLargerThanAStoreCanBeAreRefusedBeforeAFileIsMade) {
    for (auto const& [width, height] :
         {std::pair{StoreInfo::kMaxSide + 1, size_t{20}}, {20, StoreInfo::kMaxSide + 1}}) {
        auto const open = [&, width = width, height = height] {
            return std::make_unique<VastSource>(testpictures::source(picture_), width, height);
        };
        try {
            importStore(open, path_, {}, [](size_t, size_t) {});
            ADD_FAILURE() << width << " x " << height;
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
            EXPECT_NE(std::string(error.what()).find("the picture is too large"), std::string::npos) << error.what();
        }
        EXPECT_TRUE(folder_.names().empty());
    }
}

TEST_F(StoreDescriptionTest, NamesOfPicturesAreKeptAsPlainText) {
    EXPECT_EQ(imported(0, 0, "slide 7.tif").sourceName, "slide 7.tif");
    EXPECT_EQ(imported(0, 0, "").sourceName, "");
    EXPECT_EQ(imported(0, 0, std::string("a\0b", 3)).sourceName, "a\xef\xbf\xbd"
                                                                 "b");
    EXPECT_EQ(imported(0, 0, "a\nb").sourceName, "a\xef\xbf\xbd"
                                                 "b");
    EXPECT_EQ(imported(0, 0, "latin\xe4.tif").sourceName, "latin\xef\xbf\xbd.tif");
    EXPECT_EQ(imported(0, 0, "'; DROP TABLE meta; --").sourceName, "'; DROP TABLE meta; --");
    EXPECT_EQ(imported(0, 0, std::string(1 << 20, 'x')).sourceName, std::string(1024, 'x'));
}

TEST_F(StoreDescriptionTest, AWriterRefusesWhatNoReaderWouldOpen) {
    auto const with = [&](auto member, auto value) {
        StoreInfo info = plain();
        info.*member = value;
        return info;
    };
    for (double const microns : {1e13, kInfinity, -1.0, std::nan("")}) {
        expectRefused(with(&StoreInfo::micronsPerPixelX, microns), "micronsPerPixelX");
        expectRefused(with(&StoreInfo::micronsPerPixelY, microns), "micronsPerPixelY");
    }
    expectRefused(with(&StoreInfo::width, size_t{0}), "width");
    expectRefused(with(&StoreInfo::height, StoreInfo::kMaxSide + 1), "height");
    expectRefused(with(&StoreInfo::bands, size_t{5}), "bands");
    expectRefused(with(&StoreInfo::bits, size_t{12}), "bits");
    expectRefused(with(&StoreInfo::residualBits, size_t{8}), "residualBits");
    expectRefused(with(&StoreInfo::levels, size_t{13}), "levels");
    expectRefused(with(&StoreInfo::tileSize, size_t{33}), "tileSize");
    EXPECT_NO_THROW(TileStoreWriter(folder_.path("b.vlm"), plain()));
}
