#include "host/image/JsonValue.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

class JsonValueTest : public testing::Test {
protected:
    JsonValue read(
        std::string const& content,
        std::function<bool(JsonValue const&)> const& takesObject = [](JsonValue const&) { return false; }) {
        writeFile(folder_.path("value.json"), content);
        InputFile file(folder_.path("value.json"));
        return JsonValue::read(file, takesObject);
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(JsonValueTest, ValuesAreThoseOfTheText) {
    JsonValue const value = read(
        R"({"a":[1,-2.5,"t\u00e9",true,null,{}],"b":{"c":18446744073709551615},"d":1,"d":2,"e":9223372036854775807})");
    ASSERT_TRUE(value.isObject());
    auto const& list = value.at("a").list();
    ASSERT_EQ(list.size(), 6U);
    EXPECT_EQ(list[0].integer(), 1);
    EXPECT_EQ(list[0].number(), 1.0);
    EXPECT_EQ(list[1].number(), -2.5);
    EXPECT_FALSE(list[1].integer());
    EXPECT_EQ(list[2].text(), "t\xc3\xa9");
    EXPECT_FALSE(list[2].number());
    EXPECT_FALSE(list[3].isNull());
    EXPECT_FALSE(list[3].number());
    EXPECT_TRUE(list[4].isNull());
    EXPECT_TRUE(list[5].isObject());
    EXPECT_EQ(value.at("b").at("c").number(), 18446744073709551615.0);
    EXPECT_EQ(value.at("d").integer(), 2) << "the last one";
    EXPECT_EQ(value.at("e").integer(), 9223372036854775807);
    EXPECT_TRUE(value.at("none").at("at all").isNull());
    EXPECT_TRUE(list[0].list().empty());
    EXPECT_EQ(list[0].text(), "");
}

TEST_F(JsonValueTest, ObjectsThatAreTakenAreLeftOut) {
    int taken = 0;
    JsonValue const value = read(R"([{"x":1},{"y":{"x":2}},{"x":3}])", [&](JsonValue const& object) {
        if (!object.at("x").number()) return false;
        ++taken;
        return true;
    });
    EXPECT_EQ(taken, 3);
    ASSERT_EQ(value.list().size(), 1U);
    EXPECT_TRUE(value.list()[0].isObject());
    EXPECT_TRUE(value.list()[0].at("y").isNull());
}

TEST_F(JsonValueTest, WhatIsNestedDeepIsRefusedBeforeItsEnd) {
    auto const nested = [](size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_TRUE(read(nested(JsonValue::kMostDepth)).isList());
    EXPECT_THROW(read(nested(JsonValue::kMostDepth + 1)), JsonValue::Malformed);
    EXPECT_THROW(read(std::string(1000 * 1000, '[')), JsonValue::Malformed);
}

TEST_F(JsonValueTest, WhatIsNoJsonIsRefused) {
    for (char const* const text : {"", "{", "[1,]", "{\"a\":1e999}", "\"\xff\"", "{} {}", "nul"})
        EXPECT_THROW(read(text), JsonValue::Malformed) << text;
}
