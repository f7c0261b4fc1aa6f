#pragma once

#include "tests/apps/velmora/Process.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

/// A folder, and the program's effect on files in it.
class OutputFixture : public testing::Test {
protected:
    static constexpr int kUsage = 2;
    static constexpr int kUnwritable = 6;

    std::string path(std::string const& name) const { return folder_.path(name); }

    /// Expects one line on stderr with these words, and every file unchanged.
    void expectRefused(std::vector<std::string> const& arguments, int exitCode, std::vector<std::string> const& words,
                       Process::Environment const& environment = {}) const {
        auto const before = contents();
        auto const result = runVelmora(arguments, environment);
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("velmora: ", 0), 0u) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        for (auto const& word : words)
            EXPECT_NE(result.err.find(word), std::string::npos) << word << " in " << result.err;
        EXPECT_EQ(contents(), before);
    }

    static mode_t modeOf(std::string const& file) {
        struct stat status {};
        EXPECT_EQ(stat(file.c_str(), &status), 0) << file;
        return status.st_mode & 0777;
    }

    TemporaryFolder folder_;

private:
    // Names and contents of all files, in folders too.
    std::vector<std::pair<std::string, std::string>> contents() const {
        std::vector<std::pair<std::string, std::string>> files;
        for (auto const& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
            files.emplace_back(entry.path(), entry.is_regular_file() ? readFile(entry.path()) : "");
        std::sort(files.begin(), files.end());
        return files;
    }
};
