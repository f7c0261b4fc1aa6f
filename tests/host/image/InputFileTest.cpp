#include "host/image/InputFile.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>

namespace {

class InputFileTest : public testing::Test {
protected:
    std::string path(std::string const& name) const { return folder_.path(name); }

    static HostError failure(std::string const& path) {
        try {
            InputFile const file(path);
        } catch (HostError const& error) {
            return error;
        }
        throw std::logic_error(path + " was opened");
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(InputFileTest, BytesAreReadAnywhere) {
    writeFile(path("a"), "abcdef");
    InputFile file(path("a"));
    EXPECT_EQ(file.size(), 6u);
    EXPECT_EQ(file.path(), path("a"));
    std::array<char, 4> bytes{};
    EXPECT_EQ(file.readAt(2, bytes.data(), 4), 4);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "cdef");
    EXPECT_EQ(file.readAt(4, bytes.data(), 4), 2) << "fewer at the end";
    EXPECT_EQ(file.readAt(6, bytes.data(), 4), 0);
    EXPECT_EQ(file.readAt(900, bytes.data(), 4), 0);
    EXPECT_NO_THROW(file.rethrow());
    file.readAll(0, bytes.data(), 4);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "abcd");
    try {
        file.readAll(3, bytes.data(), 4);
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
        EXPECT_NE(std::string(error.what()).find("the file ends before its picture does"), std::string::npos);
    }
}

TEST_F(InputFileTest, WhatIsNotThereIsNamed) {
    EXPECT_EQ(failure(path("none")).kind(), HostError::Kind::MissingFile);
    EXPECT_EQ(std::string(failure(path("none")).what()),
              "cannot open '" + path("none") + "': no such file; check the path");
    EXPECT_EQ(failure(path("none")).kind(), HostError::Kind::MissingFile);
    EXPECT_NE(std::string(failure("").what()).find("no such file"), std::string::npos);
}

TEST_F(InputFileTest, NothingButARegularFileIsOpened) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    HostError const error = failure(path("pipe"));
    EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
    EXPECT_EQ(std::string(error.what()),
              "cannot read '" + path("pipe") + "': it is not a regular file; copy what it gives into one");
    EXPECT_EQ(std::string(failure(folder_.path()).what()),
              "cannot read '" + folder_.path() + "': it is a folder; name a file");
    EXPECT_NE(std::string(failure("/dev/null").what()).find("not a regular file"), std::string::npos);
}

TEST_F(InputFileTest, TheKindOfTheFailureIsTheCallers) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    try {
        requireRegularFile(path("pipe"), HostError::Kind::NoStore);
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::NoStore);
    }
    writeFile(path("a"), "");
    EXPECT_NO_THROW(requireRegularFile(path("a"), HostError::Kind::NoStore));
    EXPECT_NO_THROW(requireRegularFile(path("none"), HostError::Kind::NoStore)) << "who opens it says so";
}

TEST_F(InputFileTest, ACheckStopsItAndIsThrownLater) {
    writeFile(path("a"), "abcdef");
    bool stop = false;
    InputFile file(path("a"), [&] {
        if (stop) throw std::range_error("stopped");
    });
    std::array<char, 4> bytes{};
    EXPECT_EQ(file.readAt(0, bytes.data(), 4), 4);
    EXPECT_NO_THROW(file.check());
    stop = true;
    EXPECT_EQ(file.readAt(0, bytes.data(), 4), -1);
    EXPECT_THROW(file.rethrow(), std::range_error);
    EXPECT_THROW(file.check(), std::range_error);
    stop = false;
    EXPECT_EQ(file.readAt(0, bytes.data(), 4), -1) << "what has failed once stays so";
    EXPECT_THROW(file.readAll(0, bytes.data(), 4), std::range_error);
}

TEST_F(InputFileTest, AnotherCheckMayTakeItsPlace) {
    writeFile(path("a"), "abcdef");
    InputFile file(path("a"));
    file.setCheck([] { throw std::range_error("stopped"); });
    EXPECT_THROW(file.check(), std::range_error);
}
