#include "host/Failures.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(FailuresTest, WhatCannotBeOpenedIsNamedWithTheReasonAndWhatToDo) {
    HostError const error = failures::cannotOpen("a folder/a.tif", failures::reasonOf(ENOENT));
    EXPECT_EQ(error.kind(), HostError::Kind::MissingFile);
    EXPECT_STREQ(error.what(), "cannot open 'a folder/a.tif': no such file; check the path");
    EXPECT_EQ(failures::reasonOf(EACCES), "Permission denied");
}

TEST(FailuresTest, WhereThereIsNoContextADriverIsNamed) {
    HostError const error = failures::noGlContext("no display");
    EXPECT_EQ(error.kind(), HostError::Kind::NoGlContext);
    EXPECT_STREQ(error.what(),
                 "no OpenGL ES 3 context: no display; install a GL driver, for example Debian's libegl1 and "
                 "libgl1-mesa-dri");
}
