#include "host/annotations/AnnotationFile.h"

#include "tests/support/FailingThreads.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace std::chrono_literals;

class AnnotationFileTest : public testing::Test {
protected:
    std::string file(size_t points) {
        std::ostringstream out;
        out << R"({"type":"FeatureCollection","features":[)";
        for (size_t i = 0; i < points; ++i)
            out << (i == 0 ? "" : ",") << R"({"type":"Feature","geometry":{"type":"Point","coordinates":[)" << i
                << ",1]}}";
        out << "]}";
        std::string const path = folder_.path("points.geojson");
        writeFile(path, out.str());
        return path;
    }

    static std::unique_ptr<geojson::Content> taken(AnnotationFile& file) {
        while (file.isPending())
            file.wait(10ms);
        return file.take();
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(AnnotationFileTest, WhatIsReadIsTakenOnce) {
    AnnotationFile reading(file(1000));
    auto const content = taken(reading);
    ASSERT_NE(content, nullptr);
    EXPECT_EQ(content->annotations.shapes().size(), 1000U);
    EXPECT_EQ(reading.take(), nullptr);
    EXPECT_FALSE(reading.isPending());
}

TEST_F(AnnotationFileTest, WhatCannotBeReadIsThrownWhereItIsTaken) {
    AnnotationFile reading(folder_.path("none.geojson"));
    EXPECT_THROW(taken(reading), HostError);
    EXPECT_EQ(reading.take(), nullptr);
}

TEST_F(AnnotationFileTest, ItsEndStopsTheRead) {
    std::string const path = file(100000);
    for (int i = 0; i < 5; ++i) {
        AnnotationFile reading(path);
        reading.wait(std::chrono::milliseconds(i));
    }
}

TEST_F(AnnotationFileTest, WithoutAThreadTheCallerReads) {
    std::string const path = file(10);
    ThreadLimit const none(0);
    AnnotationFile reading(path);
    EXPECT_FALSE(reading.isPending());
    EXPECT_EQ(taken(reading)->annotations.shapes().size(), 10U);
}
