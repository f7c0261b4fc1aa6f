#include "host/view/PyramidStages.h"

#include "host/HostError.h"
#include "renderbackend/VelmoraException.h"
#include "tests/host/image/TestTiff.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/ForwardingInstance.h"
#include "tests/support/LivingGlObjects.h"
#include "tests/support/LongRun.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <thread>
#include <tiff.h>

using pictureview::backgroundPixels;
using pictureview::describe;
using pictureview::frameOf;
using pictureview::Level;
using namespace std::chrono_literals;

// Pictures by the levels that their files have, beside a model that knows nothing of tiles.
namespace {

// Counts what goes through the upload ring, which fails from a reservation on.
class RingCounter final : public ForwardingInstance<RingCounter> {
public:
    RingCounter(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : ForwardingInstance(std::move(instance), context) {}

    int reserved() const { return reserved_; }
    int uploaded() const { return uploaded_; }
    void failFrom(int reservation) { failsFrom_ = reservation; }

private:
    friend ForwardingInstance<RingCounter>;

    template <class Operation>
    auto call(char const* member, Operation const& operation) const -> decltype(operation()) {
        if (std::strcmp(member, "Instance::concurrentStagingBuffer(") == 0 && ++reserved_ >= failsFrom_)
            throw VelmoraException("no room", "RingCounter");
        if (std::strcmp(member, "Instance::synchronizeConcurrentStagingBuffer(") == 0) ++uploaded_;
        return operation();
    }

    mutable int reserved_ = 0;
    mutable int uploaded_ = 0;
    int failsFrom_ = std::numeric_limits<int>::max();
};

// A file's levels, each of other noise, so that it shows which one a pixel comes from.
struct FileLevels {
    std::vector<Level> levels;

    Level const& full() const { return levels.front(); }
};

Level noise(size_t width, size_t height, size_t bands, std::mt19937& random) {
    Level level{width, height, bands, std::vector<std::uint8_t>(width * height * bands)};
    for (std::uint8_t& sample : level.bytes)
        sample = static_cast<std::uint8_t>(random() % 256);
    // No pixel looks like the background.
    for (size_t i = 0; bands >= 3 && i < level.bytes.size(); i += bands)
        level.bytes[i + 1] = static_cast<std::uint8_t>(1 + random() % 255);
    return level;
}

FileLevels fileOf(size_t width, size_t height, size_t bands, std::vector<double> const& reductions) {
    std::mt19937 random(width * 31 + bands);
    FileLevels file{{noise(width, height, bands, random)}};
    for (double const reduction : reductions)
        file.levels.push_back(noise(static_cast<size_t>(std::lround(static_cast<double>(width) / reduction)),
                                    static_cast<size_t>(std::lround(static_cast<double>(height) / reduction)), bands,
                                    random));
    return file;
}

void write(std::string const& path, FileLevels const& file, std::uint32_t tile, std::uint16_t compression) {
    std::vector<testtiff::Directory> directories;
    for (Level const& level : file.levels) {
        auto directory =
            testtiff::directory(static_cast<std::uint32_t>(level.width), static_cast<std::uint32_t>(level.height),
                                static_cast<std::uint16_t>(level.bands), level.bytes);
        if (level.bands % 2 == 0) directory.extraSamples = {2};
        directory.tile = tile;
        directory.compression = compression;
        directory.subfileType = directories.empty() ? 0 : 1;
        directories.push_back(directory);
    }
    testtiff::write(path, directories);
}

// Along one axis: the samples of a file's level that show pixels which sample i of level j shows.
struct Shared {
    size_t first;
    size_t end;
};

// Pixels per sample of a file's level: the whole number by which the picture was reduced, where there is one.
struct Reduction {
    size_t pixels;
    size_t samples;
};

Reduction reductionOf(size_t full, size_t inFile) {
    std::vector<size_t> factors;
    for (size_t factor = 1; factor <= full; factor *= 2)
        factors.push_back(factor);
    for (size_t factor = 1; factor <= full; ++factor)
        factors.push_back(factor);
    for (size_t const factor : factors)
        if (full / factor == inFile || (full + factor - 1) / factor == inFile) return {factor, 1};
    return {full, inFile};
}

Shared sharing(size_t full, size_t inFile, size_t halvings, size_t i) {
    size_t const width = ((full - 1) >> halvings) + 1;
    auto const [pixels, samples] = reductionOf(full, inFile);
    if (200 * (std::max(inFile, width) - std::min(inFile, width)) <= width) {
        size_t const middle = std::min((((2 * i + 1) << halvings) * samples) / (2 * pixels), inFile - 1);
        return {middle, middle + 1};
    }
    size_t const from = (i << halvings) * samples;
    size_t const to = ((i + 1) << halvings) * samples;
    Shared shared{inFile, 0};
    for (size_t f = 0; f < inFile; ++f) {
        if (f * pixels >= to || (f + 1) * pixels <= from) continue;
        shared.first = std::min(shared.first, f);
        shared.end = f + 1;
    }
    if (shared.end == 0) return {inFile - 1, inFile};
    return shared;
}

// Of colours weighed by alpha, or plain where all is transparent.
std::uint8_t meanOf(Level const& level, Shared const& rows, Shared const& columns, size_t band) {
    bool const weighed = level.bands % 2 == 0 && band + 1 < level.bands;
    size_t plain = 0;
    size_t sum = 0;
    size_t weights = 0;
    for (size_t row = rows.first; row < rows.end; ++row) {
        for (size_t column = columns.first; column < columns.end; ++column) {
            std::uint8_t const* const pixel = &level.bytes[(row * level.width + column) * level.bands];
            size_t const weight = weighed ? pixel[level.bands - 1] : 1;
            plain += pixel[band];
            sum += weight * pixel[band];
            weights += weight;
        }
    }
    if (weights == 0) {
        sum = plain;
        weights = (rows.end - rows.first) * (columns.end - columns.first);
    }
    return static_cast<std::uint8_t>((2 * sum + weights) / (2 * weights));
}

// Level j, out of the coarsest level of the file that is fine enough.
Level modelOf(FileLevels const& file, size_t halvings) {
    Level const& full = file.full();
    Level result{((full.width - 1) >> halvings) + 1, ((full.height - 1) >> halvings) + 1, full.bands, {}};
    auto const serves = [](size_t has, size_t needs) { return has >= needs || 200 * (needs - has) <= needs; };
    Level const* from = &full;
    for (Level const& level : file.levels)
        if (serves(level.width, result.width) && serves(level.height, result.height)) from = &level;
    std::vector<Shared> columns;
    for (size_t x = 0; x < result.width; ++x)
        columns.push_back(sharing(full.width, from->width, halvings, x));
    for (size_t y = 0; y < result.height; ++y) {
        Shared const rows = sharing(full.height, from->height, halvings, y);
        for (Shared const& across : columns) {
            for (size_t band = 0; band < full.bands; ++band)
                result.bytes.push_back(meanOf(*from, rows, across, band));
        }
    }
    return result;
}

std::vector<Level> modelsOf(FileLevels const& file, size_t levels) {
    std::vector<Level> models;
    for (size_t level = 0; level <= levels; ++level)
        models.push_back(modelOf(file, level));
    return models;
}

class PyramidStagesGLTest : public PictureViewFixture {
protected:
    std::shared_ptr<Pyramid const> open(FileLevels const& file) const {
        write(path(), file, 64, COMPRESSION_NONE);
        return openPyramid(path()).pyramid;
    }

    static size_t views() {
        if (isExhaustiveRun()) return 200;
        return runsOffLlvmpipe() || VELMORA_THREAD_SANITIZER ? 15 : 40;
    }

    void expectRandomViews(FileLevels const& file) {
        auto const pyramid = open(file);
        ASSERT_NE(pyramid, nullptr);
        PictureView view(instance_, pyramid, options());
        auto const levels = modelsOf(file, view.info().levels);
        for (size_t i = 0; i < views(); ++i) {
            View const wanted = randomView(view.info());
            ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
        }
    }

    std::string path() const { return folder_.path("pyramid.tif"); }
};

} // namespace

TEST_F(PyramidStagesGLTest, LevelsOfHalvesAreShownAsTheyAre) {
    expectRandomViews(fileOf(1201, 903, 3, {2, 4, 8}));
}

TEST_F(PyramidStagesGLTest, LevelsOfQuartersAreAveragedInBetween) {
    expectRandomViews(fileOf(1600, 1203, 3, {4, 16}));
}

TEST_F(PyramidStagesGLTest, LevelsOfOtherRatiosAreShownInTheirPlaces) {
    expectRandomViews(fileOf(3001, 1203, 3, {3.99, 15.9}));
    expectRandomViews(fileOf(1600, 1203, 3, {3.6, 11}));
}

TEST_F(PyramidStagesGLTest, GreyAndAlphaAreShown) {
    for (size_t const bands : {1U, 2U, 4U})
        expectRandomViews(fileOf(640, 701, bands, {2}));
}

TEST_F(PyramidStagesGLTest, NoPixelOfThePictureIsBackgroundFromTheCoarsestLevelOn) {
    FileLevels const file = fileOf(1600, 1203, 3, {4, 16});
    auto const pyramid = open(file);
    for (int round = 0; round < 3; ++round) {
        PictureView view(instance_, pyramid, options());
        View const wanted{Zoom(), 300, 200, 700, 600, false};
        view.show(wanted);
        size_t fewest = backgroundPixels(view.pixels());
        while (!view.complete()) {
            if (!view.advance(0ms)) view.wait(50ms);
            size_t const found = backgroundPixels(view.pixels());
            EXPECT_TRUE(found == fewest || found == 0) << found;
            fewest = std::min(fewest, found);
        }
        EXPECT_EQ(backgroundPixels(view.pixels()), 0u);
    }
}

// The ring's buffers, and what lies in them, are shared by all views of an instance.
TEST_F(PyramidStagesGLTest, ViewsComeAndGoWhileTilesAreOnTheirWay) {
    FileLevels const file = fileOf(1201, 903, 3, {2, 4, 8});
    auto const pyramid = open(file);
    auto const levels = modelsOf(file, 3);
    std::unique_ptr<PictureView> other;
    for (int round = 0; round < 20; ++round) {
        auto next = std::make_unique<PictureView>(instance_, pyramid, options());
        View const whole = randomView(next->info());
        next->show(whole);
        for (int turn = 0; turn < round % 4; ++turn)
            next->advance(1ms);
        PictureView view(instance_, pyramid, options());
        View const wanted = randomView(view.info());
        ASSERT_TRUE(completed(view, wanted) == frameOf(levels, wanted)) << describe(wanted);
        other = std::move(next);
    }
    other.reset();
    instance_->clearTiles();
}

// The ring uploads nothing behind a tile that is not written yet.
TEST_F(PyramidStagesGLTest, TilesBehindALateWriterAreShown) {
    FileLevels const file = fileOf(1201, 903, 3, {2, 4, 8});
    auto const pyramid = open(file);
    auto const levels = modelsOf(file, 3);
    for (int round = 0; round < 3; ++round) {
        auto const room = instance_->concurrentStagingBuffer(1, RenderBackend::TILE, {512, 512, 3});
        std::thread writer([&] {
            std::this_thread::sleep_for(300ms);
            room->write(Bytes(512 * 512 * 3), 0);
        });
        PictureView view(instance_, pyramid, options());
        View const whole{Zoom(), 0, 0, 1201, 903, false};
        EXPECT_TRUE(completed(view, whole) == frameOf(levels, whole));
        writer.join();
    }
    instance_->clearTiles();
}

TEST_F(PyramidStagesGLTest, EnhancementsAreThoseOfTheWholeLevel) {
    FileLevels const file = fileOf(1201, 903, 3, {2, 4, 8});
    auto const pyramid = open(file);
    std::vector<enhancement::Step> const steps{enhancement::Sharpen{1.5}};
    PictureView pieces(instance_, pyramid, options());
    PictureView whole(instance_, pyramid, options());
    pieces.enhance(steps);
    whole.enhance(steps);
    Bytes const all = completed(whole, {Zoom(), 0, 0, 1201, 903, false});
    for (int i = 0; i < 10; ++i) {
        View const part{
            Zoom(), static_cast<std::int64_t>(random_() % 1000), static_cast<std::int64_t>(random_() % 700), 200, 200,
            false};
        Bytes const drawn = completed(pieces, part);
        for (size_t row = 0; row < part.height; ++row) {
            auto const at = static_cast<size_t>(part.y) + row;
            auto const from = all.begin() + static_cast<std::ptrdiff_t>(4 * (at * 1201 + static_cast<size_t>(part.x)));
            ASSERT_TRUE(std::equal(from, from + 4 * 200, drawn.begin() + static_cast<std::ptrdiff_t>(4 * 200 * row)))
                << describe(part) << " row " << row;
        }
    }
}

TEST_F(PyramidStagesGLTest, ADamagedTileIsAHoleAndTheRestIsShown) {
    FileLevels const file = fileOf(1201, 903, 3, {2, 4, 8});
    write(path(), file, 64, COMPRESSION_ADOBE_DEFLATE);
    // The first tile of the full picture lies behind the header.
    std::string bytes = readFile(path());
    bytes.replace(16, 60, std::string(60, 'x'));
    writeFile(path(), bytes);
    std::shared_ptr<Pyramid const> const pyramid = openPyramid(path()).pyramid;
    View const whole{Zoom(), 0, 0, 1201, 903, false};
    PictureView strict(instance_, pyramid, options());
    try {
        completed(strict, whole);
        ADD_FAILURE() << "nothing was told";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
    }
    PictureView::Options tolerant = options();
    tolerant.showHoles = true;
    PictureView view(instance_, pyramid, tolerant);
    Bytes const shown = completed(view, whole);
    EXPECT_TRUE(view.hasHoles());
    EXPECT_EQ(view.damages().count(), 1u);
    EXPECT_NE(view.damages().first().find(path()), std::string::npos) << view.damages().first();
    Bytes const model = frameOf({file.full()}, whole);
    for (size_t y = 0; y < 903; ++y) {
        for (size_t x = y < 512 ? 512 : 0; x < 1201; ++x)
            ASSERT_TRUE(
                std::equal(&model[4 * (1201 * y + x)], &model[4 * (1201 * y + x)] + 4, &shown[4 * (1201 * y + x)]))
                << x << "," << y;
    }
}

// Others take more to read than the tiles that they would stand in for.
TEST_F(PyramidStagesGLTest, LevelsOfTheFileAndTheCoarsestStandIn) {
    auto const pyramid = open(fileOf(2000, 1600, 3, {2, 8}));
    FilterRunner targets(instance_);
    PyramidStages const stages(instance_, targets, *pyramid, 1);
    ASSERT_EQ(stages.info().levels, 3u);
    EXPECT_FALSE(stages.standsIn(0));
    EXPECT_TRUE(stages.standsIn(1));
    EXPECT_FALSE(stages.standsIn(2));
    EXPECT_TRUE(stages.standsIn(3));
    auto const coarse = open(fileOf(2000, 1600, 1, {4}));
    PyramidStages const others(instance_, targets, *coarse, 1);
    EXPECT_FALSE(others.standsIn(1));
    EXPECT_TRUE(others.standsIn(2));
    EXPECT_TRUE(others.standsIn(3)) << "the coarsest";
    EXPECT_EQ(stages.info().interpretation, "RGB");
    EXPECT_EQ(others.info().interpretation, "grey");
}

// Tiles that find no way through it are uploaded otherwise, which takes longer.
TEST_F(PyramidStagesGLTest, TilesGoThroughTheUploadRing) {
    auto const pyramid = open(fileOf(1200, 700, 3, {}));
    auto const counting = std::make_shared<RingCounter>(instance_, context_);
    PictureView view(counting, pyramid, options());
    completed(view, {Zoom(), 0, 0, 1200, 700, false});
    // 3 x 2 tiles. One that is to stand in may still be on its way.
    EXPECT_GE(counting->uploaded(), 6);
    EXPECT_GE(counting->reserved(), counting->uploaded());
}

TEST_F(PyramidStagesGLTest, TilesThatTheRingHasNoRoomForAreShownAllTheSame) {
    FileLevels const file = fileOf(1201, 903, 3, {2, 4, 8});
    auto const pyramid = open(file);
    auto const levels = modelsOf(file, 3);
    for (int const first : {1, 3}) {
        auto const failing = std::make_shared<RingCounter>(instance_, context_);
        failing->failFrom(first);
        PictureView view(failing, pyramid, options());
        for (double const zoom : {1.0, 0.5}) {
            Zoom const at = Zoom::nearest(zoom, 3);
            View const whole{at, 0, 0, view.sizeAt(at).width, view.sizeAt(at).height, false};
            EXPECT_TRUE(completed(view, whole) == frameOf(levels, whole)) << zoom;
        }
        EXPECT_EQ(failing->reserved(), first) << "it is not tried again";
        EXPECT_LT(failing->uploaded(), first);
    }
}

// What is late in the ring would come into the cache under numbers that others have by then.
TEST_F(PyramidStagesGLTest, AViewThatGoesBeforeALateWriterWaitsForIt) {
    FileLevels const file = fileOf(1201, 903, 3, {2, 4, 8});
    auto const pyramid = open(file);
    auto const levels = modelsOf(file, 3);
    View const whole{Zoom(), 0, 0, 1201, 903, false};
    auto const room = instance_->concurrentStagingBuffer(1, RenderBackend::TILE, {512, 512, 3});
    std::thread writer([&] {
        std::this_thread::sleep_for(500ms);
        room->write(Bytes(512 * 512 * 3), 0);
    });
    {
        PictureView view(instance_, pyramid, options());
        view.show(whole);
        for (int turn = 0; turn < 10; ++turn)
            if (!view.advance(0ms)) view.wait(20ms);
    }
    writer.join();
    PictureView view(instance_, pyramid, options());
    EXPECT_TRUE(completed(view, whole) == frameOf(levels, whole));
    instance_->clearTiles();
}

TEST_F(PyramidStagesGLTest, TheNameAndTheScaleAreTheFiles) {
    FileLevels const file = fileOf(320, 200, 3, {});
    auto directory = testtiff::directory(320, 200, 3, file.full().bytes);
    directory.resolutionUnit = RESUNIT_CENTIMETER;
    directory.xResolution = 40000;
    directory.yResolution = 5000;
    testtiff::write(path(), {directory});
    PictureView const view(instance_, std::shared_ptr<Pyramid const>(openPyramid(path()).pyramid), options());
    EXPECT_EQ(view.info().sourceName, "pyramid.tif");
    // A centimetre is 10000 microns.
    EXPECT_DOUBLE_EQ(view.info().micronsPerPixelX, 0.25);
    EXPECT_DOUBLE_EQ(view.info().micronsPerPixelY, 2);
    auto const unknown = open(file);
    PictureView const other(instance_, unknown, options());
    EXPECT_EQ(other.info().micronsPerPixelX, 0);
    EXPECT_EQ(other.info().micronsPerPixelY, 0);
}

// Tiles of 30 MB go at once: their textures are not kept for others.
TEST_F(PyramidStagesGLTest, TexturesOfManyTilesThatGoAreFreed) {
    FileLevels const file = fileOf(2600, 2700, 3, {2, 4, 8});
    auto const pyramid = open(file);
    PictureView::Options small = options();
    small.gpuBytes = 1;
    PictureView view(instance_, pyramid, small);
    View const part{Zoom(), 10, 20, 30, 40, false};
    Bytes const expected = completed(view, part);
    auto const few = living_gl_objects::snapshot();
    completed(view, {Zoom(), 0, 0, 2600, 2700, false});
    // 6 x 6 tiles of 512 x 512 pixels.
    EXPECT_GE(living_gl_objects::snapshot().size(), few.size() + 30);
    EXPECT_TRUE(completed(view, part) == expected);
    EXPECT_LT(living_gl_objects::snapshot().size(), few.size() + 10);
}

TEST_F(PyramidStagesGLTest, TheDataMaskIsThePicture) {
    auto const pyramid = open(fileOf(640, 701, 3, {2}));
    PictureView view(instance_, pyramid, options());
    view.show({Zoom(), -1, -2, 3, 4, false});
    EXPECT_EQ(view.dataMask(), (Bytes{0, 0, 0, 0, 0, 0, 0, 255, 255, 0, 255, 255}));
}
