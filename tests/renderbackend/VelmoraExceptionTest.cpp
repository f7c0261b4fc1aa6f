#include "renderbackend/VelmoraException.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <type_traits>

namespace {

static_assert(std::is_base_of_v<std::runtime_error, VelmoraException>);
static_assert(std::is_base_of_v<VelmoraException, VelmoraIOException>);
static_assert(std::is_base_of_v<VelmoraException, VelmoraRangeException>);
static_assert(std::is_base_of_v<VelmoraException, VelmoraPropertyNotSetException>);
static_assert(!std::is_base_of_v<std::nested_exception, VelmoraException>);
static_assert(!std::is_convertible_v<std::string, VelmoraException>);
static_assert(std::is_copy_assignable_v<VelmoraRangeException>);
// No data beyond the message.
static_assert(sizeof(VelmoraException) == sizeof(std::runtime_error));
static_assert(sizeof(VelmoraIOException) == sizeof(std::runtime_error));
static_assert(sizeof(VelmoraPropertyNotSetException) == sizeof(std::runtime_error));

using Text = std::string (*)(std::exception const&);

// The text of `outer`, thrown while `inner` is being handled.
template <class Outer, class Inner>
std::string textOfNested(Text text, Outer const& outer, Inner const& inner, int errorNumber = 0) {
    try {
        try {
            throw inner;
        } catch (...) {
            std::throw_with_nested(outer);
        }
    } catch (std::exception const& exception) {
        errno = errorNumber;
        std::string result = text(exception);
        errno = 0;
        return result;
    }
    return "not reached";
}

template <class C, class B, class A>
std::string textOfThree(Text text, A const& a, B const& b, C const& c) {
    try {
        try {
            try {
                throw c;
            } catch (...) {
                std::throw_with_nested(b);
            }
        } catch (...) {
            std::throw_with_nested(a);
        }
    } catch (std::exception const& exception) {
        errno = 0;
        return text(exception);
    }
    return "not reached";
}

struct HollowNest : VelmoraException, std::nested_exception {
    HollowNest() : VelmoraException("hollow", "void f()") {}
};

TEST(VelmoraExceptionTest, ATaggedMessageIsKeptUnchanged) {
    EXPECT_STREQ(VelmoraException("#Name:a#Location:b").what(), "#Name:a#Location:b");
    EXPECT_STREQ(VelmoraException("no tag at all").what(), "no tag at all");
    EXPECT_STREQ(VelmoraException("").what(), "");
}

TEST(VelmoraExceptionTest, NameAndLocationAreTagged) {
    EXPECT_STREQ(
        VelmoraException("invalid texture format", "void Gles3Texture::resize(size_t width, size_t height)").what(),
        "#Name:invalid texture format#Location:void Gles3Texture::resize(size_t width, size_t height)");
}

TEST(VelmoraExceptionTest, DescriptionFollowsTheLocation) {
    EXPECT_STREQ(VelmoraException("n", "l", "d").what(), "#Name:n#Location:l#Description:d");
}

TEST(VelmoraExceptionTest, ErrorNumberFollowsTheLocation) {
    EXPECT_STREQ(VelmoraException("n", "l", 1280).what(), "#Name:n#Location:l#Errno:1280");
}

TEST(VelmoraExceptionTest, ErrorNumberComesLast) {
    EXPECT_STREQ(VelmoraException("n", "l", "d", 12).what(), "#Name:n#Location:l#Description:d#Errno:12");
}

TEST(VelmoraExceptionTest, ErrorNumberMinusFiveIsWrittenWithItsSign) {
    EXPECT_STREQ(VelmoraException("n", "l", -5).what(), "#Name:n#Location:l#Errno:-5");
}

TEST(VelmoraExceptionTest, ErrorNumbersAtTheEndsOfTheRangeAreWrittenInFull) {
    EXPECT_STREQ(VelmoraException("n", "l", 0).what(), "#Name:n#Location:l#Errno:0");
    EXPECT_STREQ(VelmoraException("n", "l", std::numeric_limits<std::int32_t>::max()).what(),
                 "#Name:n#Location:l#Errno:2147483647");
    EXPECT_STREQ(VelmoraException("n", "l", std::numeric_limits<std::int32_t>::min()).what(),
                 "#Name:n#Location:l#Errno:-2147483648");
}

TEST(VelmoraExceptionTest, EmptyFieldsKeepTheirTags) {
    EXPECT_STREQ(VelmoraException("", "", "", 0).what(), "#Name:#Location:#Description:#Errno:0");
}

TEST(VelmoraIOExceptionTest, StreamNameStandsBetweenLocationAndErrorNumber) {
    EXPECT_STREQ(VelmoraIOException("n", "l", "a.tif", 2).what(), "#Name:n#Location:l#StreamName:a.tif#Errno:2");
}

TEST(VelmoraIOExceptionTest, DescriptionFollowsTheStreamName) {
    EXPECT_STREQ(VelmoraIOException("n", "l", "a.tif", "d", -2).what(),
                 "#Name:n#Location:l#StreamName:a.tif#Description:d#Errno:-2");
}

TEST(VelmoraRangeExceptionTest, KeepsTheLimitAndTheLocationBesideTheMessage) {
    VelmoraRangeException const exception("n", "l", std::numeric_limits<size_t>::max());
    EXPECT_STREQ(exception.what(), "#Name:n#Location:l");
    EXPECT_EQ(exception.limit(), std::numeric_limits<size_t>::max());
    EXPECT_EQ(exception.location(), "l");
}

TEST(VelmoraRangeExceptionTest, CopiesCarryEverything) {
    VelmoraRangeException const original("n", "l", 4096);
    VelmoraRangeException const copy(original);
    VelmoraRangeException assigned("x", "y", 1);
    assigned = original;
    for (VelmoraRangeException const* e : {&copy, static_cast<VelmoraRangeException const*>(&assigned)}) {
        EXPECT_STREQ(e->what(), "#Name:n#Location:l");
        EXPECT_EQ(e->limit(), 4096u);
        EXPECT_EQ(e->location(), "l");
    }
}

TEST(VelmoraPropertyNotSetExceptionTest, TagsItsFieldsLikeItsBase) {
    EXPECT_STREQ(VelmoraPropertyNotSetException("n", "l").what(), "#Name:n#Location:l");
    EXPECT_STREQ(VelmoraPropertyNotSetException("n", "l", "d").what(), "#Name:n#Location:l#Description:d");
}

TEST(VelmoraExceptionTest, EveryKindIsCaughtAsVelmoraExceptionAndAsRuntimeError) {
    EXPECT_THROW(throw VelmoraIOException("n", "l", "s", 1), VelmoraException);
    EXPECT_THROW(throw VelmoraRangeException("n", "l", 1), VelmoraException);
    EXPECT_THROW(throw VelmoraPropertyNotSetException("n", "l"), VelmoraException);
    EXPECT_THROW(throw VelmoraException("n", "l"), std::runtime_error);
}

TEST(CollectExceptionMessageTest, APlainExceptionGivesItsOwnTextAlone) {
    errno = 2;
    EXPECT_EQ(collectExceptionMessage(VelmoraException("n", "l")), "#Name:n#Location:l");
    EXPECT_EQ(collectExceptionMessage(std::runtime_error("boom")), "boom");
    errno = 0;
}

TEST(CollectExceptionMessageTest, AChainIsCollectedOutermostFirst) {
    EXPECT_EQ(textOfThree(collectExceptionMessage, VelmoraException("A", "a"), VelmoraIOException("B", "b", "s", 3),
                          VelmoraRangeException("C", "c", 8)),
              "#Name:A#Location:a#Name:B#Location:b#StreamName:s#Errno:3#Name:C#Location:c");
}

TEST(CollectExceptionMessageTest, ANestedStdExceptionWithoutErrnoGivesNameAndDescriptionOnly) {
    EXPECT_EQ(textOfNested(collectExceptionMessage, VelmoraException("n", "l"), std::logic_error("boom"), 0),
              "#Name:n#Location:l#Name:STL error#Description:boom");
}

TEST(CollectExceptionMessageTest, ANestedStdExceptionWithErrnoTwoAddsNumberAndText) {
    EXPECT_EQ(textOfNested(collectExceptionMessage, VelmoraException("n", "l"), std::logic_error("boom"), 2),
              std::string("#Name:n#Location:l#Name:STL error#Description:boom#Errno:2->") + std::strerror(2));
}

TEST(CollectExceptionMessageTest, ANestedStdExceptionWithNegativeErrnoKeepsTheSign) {
    EXPECT_EQ(textOfNested(collectExceptionMessage, VelmoraException("n", "l"), std::logic_error("boom"), -5),
              std::string("#Name:n#Location:l#Name:STL error#Description:boom#Errno:-5->") + std::strerror(-5));
}

TEST(CollectExceptionMessageTest, ErrnoIsNotReadForANestedExceptionOfOurs) {
    EXPECT_EQ(textOfNested(collectExceptionMessage, VelmoraException("n", "l"), VelmoraException("m", "k"), 2),
              "#Name:n#Location:l#Name:m#Location:k");
}

TEST(CollectExceptionMessageTest, ANestedObjectThatIsNoStdExceptionIsNamedUnknown) {
    EXPECT_EQ(textOfNested(collectExceptionMessage, VelmoraException("n", "l"), 42, 2),
              "#Name:n#Location:l#Name:Unknown exception not derived from std::exception");
}

TEST(CollectExceptionMessageTest, AnOuterStdExceptionMayNestOneOfOurs) {
    EXPECT_EQ(textOfNested(collectExceptionMessage, std::runtime_error("outer"), VelmoraException("m", "k")),
              "outer#Name:m#Location:k");
}

TEST(CollectExceptionMessageTest, TheChainEndsAtAStdExceptionThatNestsAnother) {
    EXPECT_EQ(textOfThree(collectExceptionMessage, VelmoraException("A", "a"), std::runtime_error("middle"),
                          VelmoraException("C", "c")),
              "#Name:A#Location:a#Name:STL error#Description:middle");
}

TEST(CollectExceptionMessageTest, ANestedExceptionThatHoldsNothingAddsNothing) {
    EXPECT_EQ(collectExceptionMessage(HollowNest()), "#Name:hollow#Location:void f()");
}

TEST(FormatExceptionMessageTest, ASingleExceptionGivesItsNameWithoutParentheses) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("only", "void f()")), "only\n  Location:     void f()");
}

TEST(FormatExceptionMessageTest, WithoutALocationTheNameStandsAlone) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#Name:only")), "only");
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#Description:why#Name:only")), "only\n  Description:  why");
}

TEST(FormatExceptionMessageTest, TextWithoutAnyTagGivesNothing) {
    EXPECT_EQ(formatExceptionMessage(std::runtime_error("boom")), "");
    EXPECT_EQ(formatExceptionMessage(VelmoraException("")), "");
}

TEST(FormatExceptionMessageTest, TwoNestedNamesArePutInParentheses) {
    EXPECT_EQ(textOfNested(formatExceptionMessage, VelmoraException("#Name:A"), VelmoraException("#Name:B")), "A (B)");
}

TEST(FormatExceptionMessageTest, ThreeNestedExceptionsShowNamesLocationsAndDescriptionsInOrder) {
    EXPECT_EQ(textOfThree(formatExceptionMessage, VelmoraException("A", "a", "first"), VelmoraException("B", "b"),
                          VelmoraException("C", "c", "third")),
              "A (B (C))\n  Location:     a<-b<-c\n  Description:  first, third");
}

TEST(FormatExceptionMessageTest, SectionsComeInFixedOrderWhateverTheOrderOfTheFields) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#Errno:2#StreamName:s#Description:d#Location:l#Name:n")),
              "n\n  Location:     l\n  Description:  d\n  Streamname:   s\n  Error number: 2");
}

TEST(FormatExceptionMessageTest, OnlyTheFirstStreamNameAndErrorNumberAreShown) {
    EXPECT_EQ(textOfNested(formatExceptionMessage, VelmoraIOException("A", "a", "one.tif", "d", -5),
                           VelmoraIOException("B", "b", "two.tif", 2)),
              "A (B)\n  Location:     a<-b\n  Description:  d\n  Streamname:   one.tif\n  Error number: -5");
}

TEST(FormatExceptionMessageTest, ACollectedErrorNumberShowsWithItsText) {
    EXPECT_EQ(textOfNested(formatExceptionMessage, VelmoraException("A", "a"), std::runtime_error("boom"), 2),
              std::string("A (STL error)\n  Location:     a\n  Description:  boom\n  Error number: 2->") +
                  std::strerror(2));
}

TEST(FormatExceptionMessageTest, AHashThatOpensNoTagEndsAFieldAndIsSkipped) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("##Name:one#two#Nam:three#Name:four#")), "one (four)");
}

TEST(FormatExceptionMessageTest, ATagCutShortAtTheEndIsNoTag) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#Name:a#Location")), "a");
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#Name")), "");
}

TEST(FormatExceptionMessageTest, AnEmptyFieldStillCounts) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#Name:#Name:#Location:")), " ()\n  Location:     ");
}

TEST(FormatExceptionMessageTest, TagsAreCaseSensitive) {
    EXPECT_EQ(formatExceptionMessage(VelmoraException("#name:a#Streamname:b#ERRNO:1")), "");
}

} // namespace
