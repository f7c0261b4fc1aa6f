#include "tests/apps/velmora/FaultSweep.h"

#include "host/HostError.h"
#include "host/store/StoreCheck.h"
#include "tests/apps/velmora/Faults.h"
#include "tests/apps/velmora/Restricted.h"
#include "tests/support/LongRun.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <system_error>

namespace fs = std::filesystem;

namespace faultsweep {

namespace {

// apps/velmora/ExitCodes.h: an input file cannot be opened or read, the output cannot be written.
constexpr int kMissingFile = 3;
constexpr int kUnwritableOutput = 6;
constexpr std::chrono::seconds kLongestRun{120};

struct Way {
    char const* name;
    int reason; // errno; 0: half of the bytes
    bool forEver;
};

constexpr Way kBroken{"EIO", EIO, false};
constexpr Way kDead{"EIO from there on", EIO, true};
constexpr Way kFull{"ENOSPC from there on", ENOSPC, true};
constexpr Way kInterrupted{"EINTR", EINTR, false};
constexpr Way kShort{"half of the bytes", 0, false};

struct Kind {
    char const* calls;
    std::vector<Way> ways;
};

std::vector<Kind> const& kinds() {
    static std::vector<Kind> const table{
        {"open openat fopen opendir", {kBroken, kDead, kFull, kInterrupted}},
        {"stat lstat fstat", {kBroken, kDead}},
        {"read", {kBroken, kDead, kInterrupted, kShort}},
        {"pread", {kBroken, kDead, kInterrupted, kShort}},
        {"mmap", {kBroken, kDead}},
        {"write", {kBroken, kDead, kFull, kInterrupted, kShort}},
        {"pwrite", {kBroken, kDead, kFull, kInterrupted, kShort}},
        {"ftruncate", {kBroken, kDead, kFull, kInterrupted}},
        {"fsync fdatasync", {kBroken, kDead, kFull, kInterrupted}},
        {"fchmod mkdir", {kBroken, kDead, kFull}},
        {"fcntl", {kBroken, kDead, kInterrupted}},
        {"rename renameat2 link", {kBroken, kDead, kFull}},
        {"unlink", {kBroken, kDead}},
    };
    return table;
}

using Files = std::map<std::string, std::string>;

// Names and contents of all files in a folder but for those in another one.
Files filesIn(std::string const& folder, std::string const& without) {
    Files files;
    for (auto const& entry : fs::recursive_directory_iterator(folder)) {
        std::string const name = entry.path();
        bool const isElsewhere = !without.empty() && name.rfind(without, 0) == 0;
        if (!isElsewhere && entry.is_regular_file()) files[name] = readFile(name);
    }
    return files;
}

bool makes(Way const& way, std::string const& call) {
    if (way.reason == ENOSPC) return call.find(" room") != std::string::npos;
    return way.reason != 0 || call.find(" short") != std::string::npos;
}

bool isOf(Kind const& kind, std::string const& call) {
    std::istringstream names(kind.calls);
    std::string const called = call.substr(0, call.find(' '));
    for (std::string name; names >> name;)
        if (name == called) return true;
    return false;
}

class Sweep {
public:
    Sweep(Command const& command, Sample sample) : command_(command), sample_(sample) {
        std::string all;
        for (Kind const& kind : kinds())
            all += std::string(all.empty() ? "" : " ") + kind.calls;
        Fault every;
        every.calls = all;
        every.folder = command_.folder;
        command_.prepare();
        before_ = filesIn(command_.folder, command_.cache);
        calls_ = callsOf(command_.arguments, every, command_.environment);
        EXPECT_EQ(command_.flaw(), "") << "without a fault";
        after_ = filesIn(command_.folder, command_.cache);
    }

    Tally play() {
        Tally all;
        for (Kind const& kind : kinds()) {
            Tally const tally = play(kind);
            if (tally.calls > 0) std::cout << command_.name << ", " << kind.calls << ": " << tally << '\n';
            all += tally;
            if (::testing::Test::HasFailure()) break;
        }
        return all;
    }

private:
    struct Row {
        Way way;
        size_t calls; // that may fail so, without a fault
    };

    Tally play(Kind const& kind) {
        tally_ = Tally();
        tally_.calls = static_cast<size_t>(
            std::count_if(calls_.begin(), calls_.end(), [&](std::string const& call) { return isOf(kind, call); }));
        std::vector<Row> rows;
        for (Way const& way : kind.ways) {
            auto const isMet = [&](std::string const& call) { return isOf(kind, call) && makes(way, call); };
            auto const met = static_cast<size_t>(std::count_if(calls_.begin(), calls_.end(), isMet));
            if (met > 0) rows.push_back({way, met});
        }
        if (rows.empty()) return tally_;
        if (!isLongRun() && sample_ == Sample::OneWay) rows = {rows[rows_ % rows.size()]};
        for (Row const& row : rows)
            if (!::testing::Test::HasFailure()) play(kind, row);
        return tally_;
    }

    void play(Kind const& kind, Row const& row) {
        // Not the same call in all rows.
        if (++rows_; !isLongRun()) {
            run(kind, row.way, 1 + rows_ * 5 % row.calls);
            return;
        }
        for (size_t call = 1; run(kind, row.way, call) && !::testing::Test::HasFailure(); ++call) {}
    }

    // False if the run has fewer calls.
    bool run(Kind const& kind, Way const& way, size_t call) {
        SCOPED_TRACE(command_.name + ": " + way.name + " in call " + std::to_string(call) + " of " + kind.calls);
        TemporaryFolder const counts;
        Fault fault;
        fault.calls = kind.calls;
        fault.folder = command_.folder;
        fault.first = call;
        fault.last = way.forEver ? Fault::kUntilTheEnd : call;
        fault.reason = way.reason;
        fault.shortens = way.reason == 0;
        Process::Environment environment = command_.environment;
        environment.merge(fault.environment());
        environment["VELMORA_FAULT_COUNTED"] = counts.path("counted");
        command_.prepare();
        writeFile(counts.path("counted"), "");
        auto const result = runRestricted(command_.arguments, environment, RLIM_INFINITY, kLongestRun);
        std::string const counted = readFile(counts.path("counted"));
        bool const played = static_cast<size_t>(std::count(counted.begin(), counted.end(), '\n')) >= call;
        if (result.exitCode == 0)
            expectDone(result, way);
        else
            expectTold(result, way);
        EXPECT_TRUE(played || result.exitCode == 0) << "without a fault";
        if (!played) return false;
        ++tally_.runs;
        ++(result.exitCode == 0 ? tally_.survived : tally_.told);
        return true;
    }

    void expectDone(Process::Result const& result, Way const& way) const {
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(command_.flaw(), "");
        expectNames(after_, way);
    }

    void expectTold(Process::Result const& result, Way const& way) const {
        EXPECT_NE(way.reason, 0) << "the rest of the bytes is to be had: " << result.err;
        EXPECT_TRUE(result.exitCode == kMissingFile || result.exitCode == kUnwritableOutput)
            << "exit code " << result.exitCode;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("velmora: ", 0), 0U) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        for (std::string const& word : {std::generic_category().message(way.reason), "'" + command_.folder})
            EXPECT_NE(result.err.find(word), std::string::npos) << word << " in " << result.err;
        expectNames(before_, way);
        Files const now = filesIn(command_.folder, command_.cache);
        for (auto const& [name, content] : before_)
            EXPECT_TRUE(now.count(name) != 0 && now.at(name) == content) << name << " is another file";
    }

    // Only where nothing can be removed any more a leftover stays, for the next run to remove.
    void expectNames(Files const& expected, Way const& way) const {
        bool const isClean = namesNow() == namesOf(expected) && flawOfCache().empty();
        if (!way.forEver || isClean) {
            EXPECT_EQ(namesNow(), namesOf(expected));
        } else {
            EXPECT_EQ(runVelmora(command_.arguments, command_.environment).exitCode, 0);
            EXPECT_EQ(namesNow(), namesOf(after_)) << "after another run";
        }
        EXPECT_EQ(flawOfCache(), "");
    }

    static std::set<std::string> namesOf(Files const& files) {
        std::set<std::string> names;
        for (auto const& file : files)
            names.insert(file.first);
        return names;
    }

    std::set<std::string> namesNow() const { return namesOf(filesIn(command_.folder, command_.cache)); }

    // Whole stores alone may lie there.
    std::string flawOfCache() const {
        if (command_.cache.empty() || !fs::exists(command_.cache)) return "";
        for (auto const& [name, content] : filesIn(command_.cache, "")) {
            try {
                TileStore store(name);
                if (fs::path(name).filename().string().front() == '.') return name + " is left";
                if (checkStore(store, [](size_t, size_t) {}).damages > 0) return name + " is damaged";
            } catch (HostError const& error) {
                return error.what();
            }
        }
        return "";
    }

    Command const& command_;
    Sample sample_;
    Files before_;
    Files after_;
    std::vector<std::string> calls_;
    Tally tally_;
    size_t rows_ = 0; // played so far
};

} // namespace

Tally& Tally::operator+=(Tally const& other) {
    calls += other.calls;
    runs += other.runs;
    survived += other.survived;
    told += other.told;
    return *this;
}

std::ostream& operator<<(std::ostream& stream, Tally const& tally) {
    return stream << tally.calls << " calls, " << tally.runs << " faults, " << tally.survived << " survived, "
                  << tally.told << " told";
}

Tally sweep(Command const& command, Sample sample) {
    Tally const all = Sweep(command, sample).play();
    std::cout << command.name << ": " << all << '\n';
    ::testing::Test::RecordProperty("calls", std::to_string(all.calls));
    ::testing::Test::RecordProperty("faults", std::to_string(all.runs));
    return all;
}

} // namespace faultsweep
