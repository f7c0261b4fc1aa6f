#include "apps/velmora/view/ImportJob.h"

#include "host/HostError.h"
#include "host/store/TileStore.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/FailingThreads.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <future>

using testpictures::Content;

namespace {

// Reads another picture, and waits before each strip until it may go on.
class SlowSource final : public PixelSource {
public:
    SlowSource(std::unique_ptr<PixelSource> source, std::shared_future<void> go)
        : source_(std::move(source)), go_(std::move(go)) {}

    size_t width() const override { return source_->width(); }
    size_t height() const override { return source_->height(); }
    size_t bands() const override { return source_->bands(); }
    std::string description() const override { return source_->description(); }

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override {
        if (region.y > 0) go_.wait();
        std::vector<std::uint8_t> buffer;
        source_->read(region, buffer);
        std::copy(buffer.begin(), buffer.end(), pixels);
    }

private:
    std::unique_ptr<PixelSource> source_;
    std::shared_future<void> go_;
};

void waitFor(ImportJob const& job) {
    while (!job.done())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace

TEST(ImportJobTest, MakesAStore) {
    TemporaryFolder const folder;
    auto const picture = testpictures::picture(300, 200, 3, 8, Content::Noise);
    ImportJob job([&] { return testpictures::source(picture); }, folder.path("a.vlm"), {});
    waitFor(job);
    EXPECT_EQ(job.share(), 1);
    EXPECT_EQ(TileStore(folder.path("a.vlm")).info().width, 300u);
    size_t seen = 0;
    EXPECT_EQ(job.picture().takeNew(seen).height, 200u);
}

TEST(ImportJobTest, ThePictureIsSeenWhileItGrows) {
    TemporaryFolder const folder;
    auto const picture = testpictures::picture(300, 500, 3, 8, Content::Noise);
    std::promise<void> go;
    auto const may = go.get_future().share();
    ImportJob job([&] { return std::make_unique<SlowSource>(testpictures::source(picture), may); },
                  folder.path("a.vlm"), {});
    size_t seen = 0;
    ImportPreview::Image image;
    while (image.rgba.empty())
        image = job.picture().takeNew(seen);
    EXPECT_FALSE(job.done());
    EXPECT_LT(job.share(), 1);
    EXPECT_EQ(image.rgba[3], 255) << "the first row is there";
    EXPECT_EQ(image.rgba.back(), 0) << "the last is not";
    go.set_value();
    waitFor(job);
}

TEST(ImportJobTest, OneThatIsStoppedLeavesNothing) {
    TemporaryFolder const folder;
    auto const picture = testpictures::picture(300, 500, 3, 8, Content::Noise);
    std::promise<void> go;
    auto const may = go.get_future().share();
    std::thread later;
    {
        ImportJob job([&] { return std::make_unique<SlowSource>(testpictures::source(picture), may); },
                      folder.path("a.vlm"), {});
        size_t seen = 0;
        while (job.picture().takeNew(seen).rgba.empty())
            std::this_thread::yield();
        EXPECT_FALSE(folder.names().empty()) << "its temporary file";
        later = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            go.set_value();
        });
    }
    later.join();
    EXPECT_TRUE(folder.names().empty());
}

TEST(ImportJobTest, WithoutAThreadTheStoreIsThereAtOnce) {
    TemporaryFolder const folder;
    auto const picture = testpictures::picture(300, 200, 3, 8, Content::Noise);
    ThreadLimit const limit(0);
    ImportJob const job([&] { return testpictures::source(picture); }, folder.path("a.vlm"), {});
    EXPECT_GT(ThreadLimit::refused(), 0u);
    EXPECT_TRUE(job.done());
    EXPECT_EQ(TileStore(folder.path("a.vlm")).info().width, 300u);
    ImportJob const failing(
        []() -> std::unique_ptr<PixelSource> { throw HostError(HostError::Kind::UnreadableImage, "no image"); },
        folder.path("b.vlm"), {});
    EXPECT_THROW(failing.done(), HostError);
}

TEST(ImportJobTest, AFailureArrivesWhereItIsAskedFor) {
    TemporaryFolder const folder;
    ImportJob job(
        []() -> std::unique_ptr<PixelSource> { throw HostError(HostError::Kind::UnreadableImage, "no image"); },
        folder.path("a.vlm"), {});
    EXPECT_THROW(waitFor(job), HostError);
    EXPECT_TRUE(folder.names().empty());
}
