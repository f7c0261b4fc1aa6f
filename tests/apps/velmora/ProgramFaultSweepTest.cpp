// Each call on files of the commands that need no GL fails in each way; and an import is killed at any moment.
#include "tests/apps/velmora/FaultSweep.h"
#include "tests/host/store/DocumentedReader.h"
#include "tests/support/LongRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <thread>

namespace {

using Arguments = std::vector<std::string>;

constexpr size_t kWidth = 200;
constexpr size_t kHeight = 130;

class ProgramFaultSweepTest : public testing::Test {
protected:
    ProgramFaultSweepTest() { testimages::writePattern8(path("other.ppm"), "", 30, 20, 1); }

    std::string path(std::string const& name) const { return folder_.path(name); }

    // Empty if the store holds the pattern; read without the product's own code.
    static std::string flawOfStore(std::string const& file, size_t width, size_t height) {
        try {
            auto const samples = DocumentedReader(file).picture();
            size_t i = 0;
            for (size_t y = 0; y < height; ++y)
                for (size_t x = 0; x < width; ++x)
                    for (size_t band = 0; band < 3; ++band, ++i)
                        if (i >= samples.size() || samples[i] != testimages::sample8(x, y, band))
                            return "another sample at " + std::to_string(x) + ", " + std::to_string(y);
            return i == samples.size() ? "" : "more samples";
        } catch (std::exception const& error) {
            return error.what();
        }
    }

    faultsweep::Command command(std::string const& name, Arguments const& arguments) const {
        faultsweep::Command made;
        made.name = name;
        made.arguments = arguments;
        made.folder = folder_.path();
        made.prepare = [] {};
        made.flaw = [] { return std::string(); };
        return made;
    }

    // Of an image with this ending, over a store or as a new one.
    void sweepImport(std::string const& ending, bool replaces) const {
        std::string const image = path("image" + ending);
        testimages::writePattern8(image, "", kWidth, kHeight, 3);
        std::string const store = path("a.vlm");
        Arguments arguments{"import", image, store, "--jobs", "1"};
        if (replaces) arguments.push_back("--force");
        ASSERT_EQ(runVelmora({"import", path("other.ppm"), path("old"), "--force"}).exitCode, 0);
        std::string const old = readFile(path("old"));
        auto swept = command("import " + ending + (replaces ? " over a store" : ""), arguments);
        swept.prepare = [=] { replaces ? writeFile(store, old) : void(std::filesystem::remove(store)); };
        swept.flaw = [=] { return flawOfStore(store, kWidth, kHeight); };
        EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::EachWay).told, 0U);
    }

    std::string makeStore() const {
        testimages::writePattern8(path("image.ppm"), "", kWidth, kHeight, 3);
        EXPECT_EQ(runVelmora({"import", path("image.ppm"), path("a.vlm")}).exitCode, 0);
        return path("a.vlm");
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(ProgramFaultSweepTest, Imports) {
    sweepImport(".ppm", false);
}

// Decoders read in other ways.
TEST_F(ProgramFaultSweepTest, ImportsOverAStore) {
    sweepImport(".tif", true);
    if (isLongRun()) sweepImport(".png", true);
}

TEST_F(ProgramFaultSweepTest, Exports) {
    auto swept = command("export", {"export", makeStore(), path("a.tif"), "--force"});
    swept.prepare = [this] { writeFile(path("a.tif"), "old"); };
    swept.flaw = [this] {
        return testimages::difference(testimages::readByVips(path("a.tif")), testimages::pattern8(kWidth, kHeight, 3));
    };
    EXPECT_GT(faultsweep::sweep(swept, faultsweep::Sample::EachWay).told, 0U);
}

TEST_F(ProgramFaultSweepTest, Checks) {
    EXPECT_GT(faultsweep::sweep(command("check", {"check", makeStore()}), faultsweep::Sample::EachWay).told, 0U);
}

TEST_F(ProgramFaultSweepTest, Infos) {
    std::string const store = makeStore();
    EXPECT_GT(faultsweep::sweep(command("info", {"info", store}), faultsweep::Sample::EachWay).told, 0U);
    EXPECT_GT(faultsweep::sweep(command("info --json", {"info", "--json", store}), faultsweep::Sample::EachWay).told,
              0U);
    for (std::string const ending : {".tif", ".jpg"}) {
        testimages::writePattern8(path("image" + ending), "", kWidth, kHeight, 3);
        auto const image = command("info of " + ending, {"info", path("image" + ending)});
        EXPECT_GT(faultsweep::sweep(image, faultsweep::Sample::EachWay).told, 0U);
    }
}

// From outside, at moments that no call of the program chooses, some of them within a call. The seed and the moment are
// told where it fails.
TEST_F(ProgramFaultSweepTest, AnImportThatIsKilledAtAnyMomentLeavesTheOldStoreOrTheNewOne) {
    constexpr unsigned kSeed = 20;
    constexpr size_t kLargeWidth = 700;
    constexpr size_t kLargeHeight = 600;
    using Clock = std::chrono::steady_clock;
    using Microseconds = std::chrono::microseconds;
    std::string const store = path("a.vlm");
    testimages::writePattern8(path("large.ppm"), "", kLargeWidth, kLargeHeight, 3);
    Arguments const oldImport{"import", path("other.ppm"), store, "--force", "--jobs", "1"};
    ASSERT_EQ(runVelmora(oldImport).exitCode, 0);
    std::string const old = readFile(store);
    auto const names = folder_.names();
    TemporaryFolder const counts;
    // Returns once the new store's temporary file is there.
    auto const start = [&] {
        auto process = std::make_unique<Process>(Arguments{"import", path("large.ppm"), store, "--force"},
                                                 Process::Environment{{Process::kCountsFolder, counts.path("")}});
        while (process->running() && folder_.names() == names)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return process;
    };
    auto const since = [](Clock::time_point begin) {
        return std::chrono::duration_cast<Microseconds>(Clock::now() - begin);
    };
    auto const whole = start();
    auto const begin = Clock::now();
    ASSERT_EQ(whole->wait().exitCode, 0);
    Microseconds duration = since(begin); // of the writing; the shortest so far

    std::mt19937 random(kSeed);
    size_t killed = 0;
    size_t leftovers = 0;
    size_t newOnes = 0;
    for (size_t moment = 0; moment < (isLongRun() ? 200U : 10U) && !HasFailure(); ++moment) {
        double const share = std::uniform_real_distribution<>()(random);
        auto const delay = std::chrono::duration_cast<Microseconds>(share * duration);
        SCOPED_TRACE("seed " + std::to_string(kSeed) + ", moment " + std::to_string(moment) + ", killed after " +
                     std::to_string(delay.count()) + " us of about " + std::to_string(duration.count()));
        writeFile(store, old);
        auto const process = start();
        auto const written = Clock::now();
        while (process->running() && since(written) < delay)
            std::this_thread::sleep_for(Microseconds(200));
        if (!process->running()) duration = std::min(duration, since(written));
        process->signal(SIGKILL);
        auto const result = process->wait();
        EXPECT_TRUE(result.exitCode == -1 || result.exitCode == 0) << result.exitCode;
        EXPECT_EQ(result.err, "");
        killed += result.exitCode == -1 ? 1U : 0U;
        if (bool const isOld = readFile(store) == old; !isOld) {
            ++newOnes;
            EXPECT_EQ(runVelmora({"check", store}).exitCode, 0);
            EXPECT_EQ(flawOfStore(store, kLargeWidth, kLargeHeight), "");
        }
        leftovers += folder_.names() == names ? 0U : 1U;
        EXPECT_EQ(runVelmora(oldImport).exitCode, 0);
        EXPECT_EQ(folder_.names(), names) << "what is left, the next run removes";
        EXPECT_TRUE(readFile(store) == old);
    }
    std::cout << killed << " killed, of which " << leftovers << " left a temporary file; " << newOnes
              << " had the new store\n";
    EXPECT_GT(leftovers, 0U) << "none was killed while it wrote";
}
