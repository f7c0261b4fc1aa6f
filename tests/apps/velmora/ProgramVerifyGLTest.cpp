#include "host/filter/FilterDescriptions.h"
#include "tests/apps/velmora/Process.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fnmatch.h>
#include <iterator>
#include <sstream>

namespace {

// The words of each line.
std::vector<std::vector<std::string>> wordsOf(std::string const& text) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        lines.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
    }
    return lines;
}

// Every filter of the backend, and then the program's own.
std::vector<std::string> verifiedNames() {
    std::vector<std::string> names = description::names();
    names.insert(names.end(), {"Backdrop", "ChannelMix"});
    return names;
}

} // namespace

// The catalogue runs on the other implementations in any case: in the GL tests.
TEST(ProgramVerifyGLTest, EveryFilterIsExact) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    auto const result = runVelmora({"verify"});
    ASSERT_EQ(result.exitCode, 0) << result.out << result.err;
    EXPECT_EQ(result.err, "");
    // The renderer, an empty line, the column headings, one line per filter, the totals.
    auto const lines = wordsOf(result.out);
    std::vector<std::string> const names = verifiedNames();
    ASSERT_EQ(lines.size(), 3 + names.size() + 1) << result.out;
    for (size_t i = 0; i < names.size(); ++i) {
        auto const& row = lines[3 + i];
        ASSERT_EQ(row.size(), 4U) << result.out;
        EXPECT_EQ(row[0], names[i]);
        EXPECT_GT(std::stoul(row[1]), 8192U) << row[0] << ": no strip as long as a texture";
        EXPECT_EQ(row[2], "0") << row[0];
    }
}

// Each filter's comparison finds the wrong byte: no check is blind.
TEST(ProgramVerifyGLTest, WrongBytesInEveryFilterAreExitCode1) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    auto const result = runVelmora({"verify", "--json"}, {{"LD_PRELOAD", VELMORA_INEXACT_GL}});
    EXPECT_EQ(result.exitCode, 1);
    std::string const count = std::to_string(verifiedNames().size());
    EXPECT_NE(result.err.find(count + " of " + count + " filters are not exact on "), std::string::npos) << result.err;
    auto const report = nlohmann::json::parse(result.out);
    char const* const expected = std::getenv("VELMORA_EXPECT_RENDERER");
    EXPECT_EQ(fnmatch(expected == nullptr ? "?*" : expected, report["renderer"].get<std::string>().c_str(), 0), 0);
    EXPECT_FALSE(report["exact"].get<bool>());
    EXPECT_FALSE(report["full"].get<bool>());
    ASSERT_EQ(report["filters"].size(), verifiedNames().size());
    std::uint64_t pixels = 0;
    std::uint64_t differingBytes = 0;
    for (auto const& filter : report["filters"]) {
        EXPECT_GT(filter["differingBytes"].get<std::uint64_t>(), 0U) << filter["name"];
        EXPECT_EQ(filter["firstDifference"].get<std::string>().rfind("picture ", 0), 0U) << filter.dump();
        EXPECT_EQ(filter["failure"].get<std::string>(), "");
        pixels += filter["pixels"].get<std::uint64_t>();
        differingBytes += filter["differingBytes"].get<std::uint64_t>();
    }
    EXPECT_EQ(report["pixels"].get<std::uint64_t>(), pixels);
    EXPECT_EQ(report["differingBytes"].get<std::uint64_t>(), differingBytes);
}

TEST(ProgramVerifyGLTest, TheNameOfADriverIsShownAndNotObeyed) {
    for (std::string const command : {"verify", "info"}) {
        auto const result = runVelmora({command}, {{"LD_PRELOAD", VELMORA_BROKEN_GL}});
        EXPECT_NE(result.out.find("broken \"\\xff\\x1b[2J\""), std::string::npos) << result.out;
        EXPECT_EQ((result.out + result.err).find('\x1b'), std::string::npos) << result.err;
    }
}

TEST(ProgramVerifyGLTest, FilterThatCannotRunIsAFailureOfItsOwnAndExitCode1) {
    auto const result = runVelmora({"verify", "--json"}, {{"LD_PRELOAD", VELMORA_BROKEN_GL}});
    EXPECT_EQ(result.exitCode, 1);
    auto const report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["renderer"], "broken \"\xef\xbf\xbd\x1b[2J\"") << "the byte that is no UTF-8 has been replaced";
    EXPECT_EQ(report["filters"].size(), verifiedNames().size());
    for (auto const& filter : report["filters"])
        EXPECT_NE(filter["failure"].get<std::string>().find("Failed to setup render to texture"), std::string::npos)
            << filter.dump();
}
