// Whichever system call fails, and wherever the program is killed: the output's name refers to the old file, byte for
// byte, or to the whole new one, and no other file is left.
#include "host/HostError.h"
#include "host/store/StoreCheck.h"
#include "tests/apps/velmora/Faults.h"
#include "tests/support/LongRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>

namespace {

using Names = std::vector<std::string>;
using Arguments = std::vector<std::string>;

// Some dozens of calls write it: each of them is to fail.
constexpr size_t kWidth = 200;
constexpr size_t kHeight = 130;

class ProgramFaultsTest : public testing::Test {
protected:
    void SetUp() override {
        testimages::writePattern8(image_, "", kWidth, kHeight, 3);
        testimages::writePattern8(path("other.png"), "", 30, 20, 1);
        std::filesystem::create_directory(path("out"));
    }

    std::string path(std::string const& name) const { return folder_.path(name); }

    void import(std::string const& image, std::string const& store) const {
        ASSERT_EQ(runVelmora({"import", image, store, "--force"}).exitCode, 0);
    }

    static bool isWholeStore(std::string const& file, size_t width = kWidth) {
        try {
            TileStore store(file);
            return store.info().width == width && checkStore(store, [](size_t, size_t) {}).damages == 0;
        } catch (HostError const&) {
            return false;
        }
    }

    bool isWholeTiff(std::string const& file) const {
        return testimages::difference(testimages::readByVips(file), testimages::readByVips(image_)).empty();
    }

    template <class IsWhole>
    void expectOldOrNew(Process::Result const& result, std::string const& file, std::string const& old,
                        IsWhole const& isWhole) const {
        if (result.exitCode == 0) {
            EXPECT_EQ(result.err, "");
            EXPECT_TRUE(isWhole(file));
            return;
        }
        EXPECT_TRUE(result.exitCode == 3 || result.exitCode == 4 || result.exitCode == 6) << result.exitCode;
        EXPECT_EQ(result.err.rfind("velmora: ", 0), 0u) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(std::filesystem::exists(file) ? readFile(file) : "", old);
    }

    // Makes one call after the other fail. Before each the file has the content `old`, or is missing if that is empty.
    template <class IsWhole>
    void sweep(Arguments const& arguments, std::string const& file, std::string const& old, Fault fault,
               IsWhole const& isWhole) const {
        auto const prepare = [&] { old.empty() ? void(std::filesystem::remove(file)) : writeFile(file, old); };
        prepare();
        size_t const calls = countCalls(arguments, fault);
        ASSERT_GE(calls, 5u);
        Names const before = names();
        size_t failures = 0;
        for (size_t call = 1; call <= calls && !HasFailure(); ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls));
            prepare();
            fault.first = call;
            fault.last = fault.reason == ENOSPC ? Fault::kUntilTheEnd : call;
            auto const result = runFaulty(arguments, fault);
            expectOldOrNew(result, file, old, isWhole);
            bool const named = result.err.find(std::generic_category().message(fault.reason)) != std::string::npos;
            EXPECT_TRUE(named || result.exitCode != 6) << result.err;
            bool const gone = result.exitCode != 0 && old.empty();
            EXPECT_EQ(gone ? with(names(), file) : names(), before);
            if (result.exitCode != 0) ++failures;
        }
        EXPECT_TRUE(HasFailure() || failures > calls / 2) << "most calls matter";
    }

    // An import for each of these calls on files of the folder, in which it fails.
    template <class Look>
    void importWithEach(char const* calls, int reason, Look const& look) const {
        Arguments const arguments{"import", image_, store_, "--force", "--jobs", "1"};
        Fault fault;
        fault.calls = calls;
        fault.folder = folder_.path();
        size_t const count = countCalls(arguments, fault);
        fault.reason = reason;
        for (fault.first = 1; fault.first <= count; ++fault.first) {
            SCOPED_TRACE("call " + std::to_string(fault.first) + " of " + std::to_string(count));
            fault.last = fault.first;
            look(runFaulty(arguments, fault));
        }
    }

    // One call fails, or the disk is full from a call on. With a folder only calls on its files fail.
    template <class IsWhole>
    void sweepBoth(Arguments const& arguments, std::string const& file, std::string const& old,
                   std::string const& folder, IsWhole const& isWhole) const {
        Fault fault;
        fault.folder = folder;
        fault.reason = EIO;
        sweep(arguments, file, old, fault, isWhole);
        fault.reason = ENOSPC;
        sweep(arguments, file, old, fault, isWhole);
    }

    // Of all files, also in folders.
    Names names() const {
        Names names;
        for (auto const& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
            names.push_back(entry.path());
        std::sort(names.begin(), names.end());
        return names;
    }

    static Names with(Names names, std::string const& file) {
        names.push_back(file);
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryFolder folder_;
    std::string image_ = path("image.png");
    std::string store_ = path("a.vlm");
    std::string tiff_ = path("out/a.tif");
};

} // namespace

TEST_F(ProgramFaultsTest, AnImportThatFailsLeavesTheOldStore) {
    import(path("other.png"), store_);
    sweepBoth({"import", image_, store_, "--force", "--jobs", "1"}, store_, readFile(store_), "",
              [](std::string const& file) { return isWholeStore(file); });
}

TEST_F(ProgramFaultsTest, AnImportThatFailsLeavesNothing) {
    sweepBoth({"import", image_, store_, "--jobs", "1"}, store_, "", "",
              [](std::string const& file) { return isWholeStore(file); });
}

TEST_F(ProgramFaultsTest, AnExportThatFailsLeavesTheOldFile) {
    import(image_, store_);
    sweepBoth({"export", store_, tiff_, "--force"}, tiff_, "the old file", path("out"),
              [this](std::string const& file) { return isWholeTiff(file); });
}

TEST_F(ProgramFaultsTest, AnExportThatFailsLeavesNothing) {
    import(image_, store_);
    sweepBoth({"export", store_, tiff_}, tiff_, "", path("out"),
              [this](std::string const& file) { return isWholeTiff(file); });
}

TEST_F(ProgramFaultsTest, AFullDiskIsNamed) {
    Fault fault;
    fault.folder = folder_.path();
    fault.calls = "pwrite";
    fault.first = 3;
    fault.last = Fault::kUntilTheEnd;
    fault.reason = ENOSPC;
    auto const result = runFaulty({"import", image_, store_}, fault);
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(result.err, "velmora: cannot write '" + store_ +
                              "': No space left on device; check the folder, its permissions and free space\n");
}

// Of the image, the store and their folder.
TEST_F(ProgramFaultsTest, AStatusThatTheSystemDoesNotGiveIsTheReasonThatIsTold) {
    size_t told = 0;
    importWithEach("stat lstat fstat", EIO, [&](Process::Result const& result) {
        if (result.exitCode == 0) return;
        EXPECT_TRUE(result.exitCode == 3 || result.exitCode == 6) << result.exitCode;
        EXPECT_NE(result.err.find(std::generic_category().message(EIO)), std::string::npos) << result.err;
        ++told;
    });
    EXPECT_GT(told, 2U);
}

// As file systems of other machines answer.
TEST_F(ProgramFaultsTest, ALockThatIsInterruptedIsAskedForAgain) {
    size_t imported = 0;
    importWithEach("fcntl", EINTR, [&](Process::Result const& result) {
        EXPECT_EQ(result.err.find("locked"), std::string::npos) << result.err;
        if (result.exitCode != 0) return;
        EXPECT_TRUE(isWholeStore(store_));
        ++imported;
    });
    EXPECT_GT(imported, 2U);
}

TEST_F(ProgramFaultsTest, AnImportThatIsKilledLeavesTheOldStoreOrTheNewOne) {
    import(path("other.png"), store_);
    std::string const old = readFile(store_);
    // Large enough for so many calls.
    constexpr size_t kLargeWidth = 700;
    testimages::writePattern8(path("large.png"), "", kLargeWidth, 600, 3);
    Names const before = names();
    Arguments const arguments{"import", path("large.png"), store_, "--force", "--jobs", "1"};
    Fault fault;
    fault.folder = folder_.path();
    size_t const calls = countCalls(arguments, fault);
    size_t const moments = isLongRun() ? 200 : 20;
    ASSERT_GE(calls, moments);
    size_t leftovers = 0;
    for (size_t moment = 0; moment < moments && !HasFailure(); ++moment) {
        fault.first = 1 + moment * (calls - 1) / (moments - 1);
        SCOPED_TRACE("killed at call " + std::to_string(fault.first) + " of " + std::to_string(calls));
        writeFile(store_, old);
        fault.last = fault.first;
        EXPECT_EQ(runFaulty(arguments, fault).exitCode, -1);
        EXPECT_TRUE(readFile(store_) == old || isWholeStore(store_, kLargeWidth));
        if (names() != before) ++leftovers;
        EXPECT_EQ(runVelmora(arguments).exitCode, 0);
        EXPECT_TRUE(isWholeStore(store_, kLargeWidth));
        EXPECT_EQ(names(), before);
    }
    EXPECT_GT(leftovers, moments / 2);
}

TEST_F(ProgramFaultsTest, AnExportThatIsKilledLeavesWhatTheNextOneRemoves) {
    import(image_, store_);
    Names const before = names();
    Fault fault;
    fault.calls = "write";
    fault.folder = folder_.path();
    fault.first = fault.last = 3;
    EXPECT_EQ(runFaulty({"export", store_, tiff_}, fault).exitCode, -1);
    EXPECT_EQ(names().size(), before.size() + 1);
    EXPECT_FALSE(std::filesystem::exists(tiff_));
    EXPECT_EQ(runVelmora({"export", store_, tiff_}).exitCode, 0);
    EXPECT_TRUE(isWholeTiff(tiff_));
    EXPECT_EQ(names(), with(before, tiff_));
}

// File systems support different kinds of renames, and some have no links.
TEST_F(ProgramFaultsTest, AnImportNeedsNoRenameThatTakesOnlyFreeNames) {
    for (std::string const missing : {"renameat2", "renameat2 link"}) {
        std::filesystem::remove(store_);
        Fault fault;
        fault.missing = missing;
        Names const before = names();
        EXPECT_EQ(runFaulty({"import", image_, store_}, fault).exitCode, 0) << missing;
        EXPECT_TRUE(isWholeStore(store_));
        EXPECT_EQ(runFaulty({"import", path("other.png"), store_, "--force"}, fault).exitCode, 0) << missing;
        EXPECT_EQ(TileStore(store_).info().width, 30u);
        EXPECT_EQ(names(), with(before, store_));
    }
}

// One import is held up before it gives its store the name; the other one overtakes it.
TEST_F(ProgramFaultsTest, OfTwoImportsTheLaterOneLeavesTheStoreOfTheFirst) {
    for (std::string const missing : {"", "renameat2", "renameat2 link"}) {
        SCOPED_TRACE("without " + missing);
        std::filesystem::remove(store_);
        Names const before = names();
        TemporaryFolder const signals;
        Fault fault;
        fault.folder = folder_.path();
        fault.calls = "fsync";
        fault.first = fault.last = 1;
        fault.wait = signals.path("go");
        fault.missing = missing;
        Process later({"import", image_, store_}, fault.environment());
        while (later.running() && !std::filesystem::exists(signals.path("go.reached")))
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        EXPECT_EQ(names().size(), before.size() + 1) << "the temporary file";
        auto const first = runVelmora({"import", path("other.png"), store_});
        EXPECT_EQ(first.exitCode, 0) << first.err;
        EXPECT_EQ(names().size(), before.size() + 2) << "and the first one's store";
        writeFile(signals.path("go"), "");
        auto const result = later.wait();
        EXPECT_EQ(result.exitCode, 6);
        EXPECT_NE(result.err.find("exists already"), std::string::npos) << result.err;
        EXPECT_EQ(TileStore(store_).info().width, 30u);
        EXPECT_EQ(names(), with(before, store_));
    }
}
