// Hostile files, drawn.
#include "tests/apps/velmora/Restricted.h"
#include "tests/host/store/HostileStores.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

// Refused before a context is made: drivers address gigabytes.
TEST(ProgramHostileStoreGLTest, EachIsDamageAtOnceAndTakesNoMemory) {
    TemporaryFolder const folder;
    std::string const path = folder.path("a.vlm");
    for (auto const& hostile : hostilestores::all()) {
        SCOPED_TRACE(hostile.name);
        std::filesystem::remove(path);
        hostile.make(path);
        auto const result =
            runRestricted({"render", path, "-o", folder.path("out.png")}, {}, 1'000'000'000, std::chrono::seconds(20));
        EXPECT_EQ(result.exitCode, 10) << result.err;
        EXPECT_NE(result.err.find("is damaged"), std::string::npos) << result.err;
        EXPECT_EQ(folder.names(), std::vector<std::string>{"a.vlm"});
    }
}
