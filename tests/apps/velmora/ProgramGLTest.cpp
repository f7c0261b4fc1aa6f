#include "tests/apps/velmora/Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fnmatch.h>
#include <regex.h>
#include <sstream>
#include <string>

namespace {

// POSIX, not std::regex, inside which gcc 12 warns with sanitizers on.
bool matches(std::string const& text, std::string const& pattern) {
    regex_t expression{};
    if (regcomp(&expression, pattern.c_str(), REG_EXTENDED | REG_NOSUB | REG_NEWLINE) != 0) return false;
    bool const found = regexec(&expression, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&expression);
    return found;
}

// The value in a line "name   value" of velmora info.
std::string valueOf(std::string const& text, std::string const& name) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(name + " ", 0) != 0) continue;
        size_t const value = line.find_first_not_of(' ', name.size());
        if (value != std::string::npos) return line.substr(value);
    }
    return "";
}

} // namespace

TEST(ProgramGLTest, InfoNamesTheImplementationThatDraws) {
    auto const result = runVelmora({"info"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    char const* const expected = std::getenv("VELMORA_EXPECT_RENDERER");
    // A file name pattern, like the test main's.
    EXPECT_EQ(fnmatch(expected == nullptr ? "?*" : expected, valueOf(result.out, "renderer").c_str(), 0), 0)
        << result.out;
    EXPECT_NE(valueOf(result.out, "vendor"), "");
    EXPECT_EQ(valueOf(result.out, "version").rfind("OpenGL ES 3", 0), 0u) << result.out;
    EXPECT_EQ(valueOf(result.out, "shading language").rfind("OpenGL ES GLSL ES 3", 0), 0u) << result.out;
}

TEST(ProgramGLTest, InfoPrintsLimitsThatOpenGlEs3Guarantees) {
    auto const result = runVelmora({"info"});
    EXPECT_GE(std::atoi(valueOf(result.out, "max texture size").c_str()), 2048);
    EXPECT_GE(std::atoi(valueOf(result.out, "max viewport").c_str()), 2048);
    EXPECT_GE(std::atoi(valueOf(result.out, "fragment texture units").c_str()), 16);
    EXPECT_GE(std::atoi(valueOf(result.out, "combined texture units").c_str()), 32);
}

TEST(ProgramGLTest, InfoAsJsonSaysWhatInfoSays) {
    std::string const text = runVelmora({"info"}).out;
    auto const json = nlohmann::json::parse(runVelmora({"info", "--json"}).out);
    for (char const* const key : {"renderer", "vendor", "version", "shadingLanguageVersion"})
        EXPECT_NE(text.find(json.at(key).get<std::string>()), std::string::npos) << key;
    EXPECT_NE(text.find(" " + std::to_string(json.at("maxTextureSize").get<int>()) + "\n"), std::string::npos);
    ASSERT_EQ(json.at("precisions").size(), 12U);
    EXPECT_EQ(json.at("precisions").back().at("stage"), "fragment");
}

TEST(ProgramGLTest, InfoPrintsEveryPrecisionOfBothStages) {
    auto const result = runVelmora({"info"});
    for (std::string const stage : {"vertex", "fragment"}) {
        for (std::string const type :
             {"lowp float", "mediump float", "highp float", "lowp int", "mediump int", "highp int"}) {
            std::string const accuracy =
                type.find("int") == std::string::npos ? "relative accuracy 2\\^-[0-9]+" : "whole numbers";
            std::ostringstream line;
            line << "^" << stage << " +" << type << " +-2\\^[0-9]+ to 2\\^[0-9]+, " << accuracy << "$";
            EXPECT_TRUE(matches(result.out, line.str())) << line.str() << " in " << result.out;
        }
    }
    EXPECT_TRUE(matches(result.out, "^fragment +highp float +-2\\^127 to 2\\^127, .* 2\\^-23$")) << result.out;
}

TEST(ProgramGLTest, VersionIsPrinted) {
    auto const result = runVelmora({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(matches(result.out, "^velmora [0-9]+\\.[0-9]+\\.[0-9]+$")) << result.out;
}

TEST(ProgramGLTest, HelpShowsCommandsExamplesAndExitCodes) {
    auto const result = runVelmora({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (char const* const text : {"render", "info", "Examples:", "Exit codes:", "130"})
        EXPECT_NE(result.out.find(text), std::string::npos) << text;
}

TEST(ProgramGLTest, HelpOfRenderShowsItsOptions) {
    auto const result = runVelmora({"render", "--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (char const* const text : {"IMAGE", "--output", "--region", "--tile", "256", "Examples:"})
        EXPECT_NE(result.out.find(text), std::string::npos) << text;
}
