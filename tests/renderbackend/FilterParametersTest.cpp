#include "renderbackend/FilterParameters.h"

#include "renderbackend/DataEnvelopes.h"
#include "tests/renderbackend/ThrownMessage.h"

#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <locale>
#include <set>
#include <type_traits>

namespace {

constexpr char const* kCastFailed = "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()";

static_assert(std::has_virtual_destructor_v<SingleFilterParameters>);
static_assert(std::is_base_of_v<SingleFilterParameters, ComparableSingleFilterParameters<unsigned char>>);
static_assert(std::is_base_of_v<ComparableSingleFilterParameters<std::string>, FilterBlackWhiteGamma8Params>);
static_assert(std::is_base_of_v<ComparableSingleFilterParameters<std::string>, FilterLinear16TosRGB8Params>);
static_assert(!std::is_base_of_v<FilterBlackWhiteGamma8Params, FilterLinear16TosRGB8Params>);
static_assert(!std::is_convertible_v<std::string, ComparableSingleFilterParameters<std::string>>);
static_assert(sizeof(SingleFilterParameters::shiftBits) == 4);

double fromBits(std::uint64_t bits) {
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string key(double gamma, std::uint64_t black = 0, std::uint64_t white = 255) {
    return FilterBlackWhiteGamma8Params(gamma, black, white).key();
}

TEST(SingleFilterParametersTest, AsGivesTheVeryObject) {
    FilterSharpness8Params record;
    SingleFilterParameters& base = record;
    EXPECT_EQ(&base.as<FilterSharpness8Params>(), &record);
    EXPECT_EQ(&base.as<SingleFilterParameters>(), &record);
    base.as<FilterSharpness8Params>().gain = 2.5;
    EXPECT_EQ(record.gain, 2.5);
}

TEST(SingleFilterParametersTest, AsOfAConstObjectIsConst) {
    FilterSharpness8Params const record;
    SingleFilterParameters const& base = record;
    static_assert(std::is_same_v<decltype(base.as<FilterSharpness8Params>()), FilterSharpness8Params const&>);
    EXPECT_EQ(&base.as<FilterSharpness8Params>(), &record);
}

TEST(SingleFilterParametersTest, AsOfAnotherRecordThrowsAndNamesTheLetterT) {
    FilterSharpness16Params record;
    SingleFilterParameters& base = record;
    SingleFilterParameters const& constBase = record;
    EXPECT_EQ(thrownMessage([&] { base.as<FilterSharpness8Params>(); }), kCastFailed);
    EXPECT_EQ(thrownMessage([&] { constBase.as<FilterSharpness8Params>(); }), kCastFailed);
    EXPECT_EQ(thrownMessage([&] { base.as<FilterClaheParams>(); }), kCastFailed);
}

TEST(SingleFilterParametersTest, APlainBaseIsNoRecord) {
    SingleFilterParameters base;
    EXPECT_EQ(thrownMessage([&] { base.as<MaskFilterParams>(); }), kCastFailed);
}

TEST(SingleFilterParametersTest, ADerivedRecordIsAcceptedAsItsBase) {
    struct OwnSharpness : FilterSharpness8Params {
        int more = 1;
    };
    OwnSharpness record;
    record.gain = 3.0;
    SingleFilterParameters& base = record;
    EXPECT_EQ(base.as<FilterSharpness8Params>().gain, 3.0);
    EXPECT_EQ(base.as<OwnSharpness>().more, 1);
}

TEST(SingleFilterParametersTest, TheTwoGammaRecordsAreNotEachOther) {
    FilterLinear16TosRGB8Params record(2.2, 0, 65535);
    SingleFilterParameters& base = record;
    EXPECT_EQ(thrownMessage([&] { base.as<FilterBlackWhiteGamma8Params>(); }), kCastFailed);
    EXPECT_EQ(base.as<ComparableSingleFilterParameters<std::string>>().key(), record.key());
    EXPECT_EQ(thrownMessage([&] { base.as<ComparableSingleFilterParameters<unsigned char>>(); }), kCastFailed);
}

TEST(FilterParametersTest, DefaultsAreNeutral) {
    EXPECT_EQ(SingleFilterParameters().shiftBits, 0);
    EXPECT_EQ(FilterSharpness8Params().gain, 1.0);
    EXPECT_EQ(FilterSharpness16Params().gain, 1.0);
    EXPECT_EQ(FilterClaheParams().value, 1.0);
    EXPECT_EQ(Filter3x3MatrixParams().matrix, (std::array<std::int32_t, 9>{1024, 0, 0, 0, 1024, 0, 0, 0, 1024}));
    EXPECT_EQ(Filter3x3MatrixParams().scale, 1.0);
    EXPECT_EQ(FilterTruncate16Params().shift, 0u);
    EXPECT_FALSE(FilterTruncate16Params().rounding);
    EXPECT_EQ(FilterBlackWhiteGamma8Params().gamma, 1.0);
    EXPECT_EQ(FilterLinear16TosRGB8Params().blackPoint, 0u);
    EXPECT_EQ(MaskFilterParams().envelopes, nullptr);
}

TEST(FilterParametersTest, RecordsAreCopyable) {
    MaskFilterParams mask;
    mask.envelopes = std::make_shared<DataEnvelopes>();
    mask.shiftBits = 4;
    MaskFilterParams const copy = mask;
    EXPECT_EQ(copy.envelopes, mask.envelopes);
    EXPECT_EQ(copy.shiftBits, 4);
    FilterLinear16TosRGB8Params const gamma("key", 2.2, 3, 9);
    FilterLinear16TosRGB8Params other;
    other = gamma;
    EXPECT_EQ(other.key(), "key");
    EXPECT_EQ(other.gamma, 2.2);
    EXPECT_EQ(other.blackPoint, 3u);
    EXPECT_EQ(other.whitePoint, 9u);
}

TEST(ComparableSingleFilterParametersTest, ComparesByItsKeyAlone) {
    FilterBlackWhiteGamma8Params const a("a", 1.0, 0, 255);
    FilterBlackWhiteGamma8Params const sameKey("a", 2.0, 5, 9);
    FilterLinear16TosRGB8Params const b("b", 1.0, 0, 255);
    EXPECT_TRUE(a == sameKey);
    EXPECT_FALSE(a < sameKey);
    EXPECT_FALSE(sameKey < a);
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b < a);
    EXPECT_FALSE(a == b);
}

TEST(ComparableSingleFilterParametersTest, ByteKeysCompareAsNumbers) {
    ComparableSingleFilterParameters<unsigned char> const small(8);
    ComparableSingleFilterParameters<unsigned char> const large(200);
    EXPECT_EQ(large.key(), 200);
    EXPECT_TRUE(small < large);
    EXPECT_FALSE(large < small);
    EXPECT_EQ(ComparableSingleFilterParameters<unsigned char>().key(), 0);
}

TEST(ComparableSingleFilterParametersTest, ADerivedRecordMayMakeItsKeyLater) {
    struct LateKey : ComparableSingleFilterParameters<std::string> {
        std::string text = "late";
        std::string const& key() const override { return text; }
    };
    LateKey const record;
    ComparableSingleFilterParameters<std::string> const& base = record;
    EXPECT_EQ(base.key(), "late");
    EXPECT_TRUE(base == ComparableSingleFilterParameters<std::string>("late"));
}

TEST(GammaTableParamsTest, AGivenKeyIsKeptAsItIs) {
    FilterBlackWhiteGamma8Params const record("my table", 2.2, 16, 4000);
    EXPECT_EQ(record.key(), "my table");
    EXPECT_EQ(record.gamma, 2.2);
    EXPECT_EQ(record.blackPoint, 16u);
    EXPECT_EQ(record.whitePoint, 4000u);
}

TEST(GammaTableParamsTest, EqualValuesMakeEqualKeys) {
    EXPECT_EQ(key(2.2, 7, 200), key(2.2, 7, 200));
    EXPECT_EQ(FilterLinear16TosRGB8Params(2.2, 7, 200).key(), FilterLinear16TosRGB8Params(2.2, 7, 200).key());
}

TEST(GammaTableParamsTest, DifferentValuesMakeDifferentKeys) {
    std::set<std::string> keys;
    size_t made = 0;
    std::uint64_t const points[] = {0, 1, 9, 10, 11, 110, 111, 0xffffffffu, 0x100000000u, ~std::uint64_t{0}};
    double const gammas[] = {0.0, 1.0, 2.2, 1e-300, 1e300, 0.1, 0.30000000000000004, 0.3};
    for (double const gamma : gammas) {
        for (std::uint64_t const black : points) {
            for (std::uint64_t const white : points) {
                keys.insert(key(gamma, black, white));
                ++made;
            }
        }
    }
    EXPECT_EQ(made, 800u);
    EXPECT_EQ(keys.size(), made);
}

TEST(GammaTableParamsTest, GammasThatDifferInOneBitMakeDifferentKeys) {
    std::set<std::string> keys;
    for (unsigned bit = 0; bit < 64; ++bit)
        keys.insert(key(fromBits(0x400199999999999aULL ^ std::uint64_t{1} << bit)));
    keys.insert(key(fromBits(0x400199999999999aULL)));
    EXPECT_EQ(keys.size(), 65u);
}

TEST(GammaTableParamsTest, ZerosDenormalsInfinitiesAndNaNPayloadsAreToldApart) {
    std::uint64_t const patterns[] = {
        0x0000000000000000ULL, 0x8000000000000000ULL,                                               // 0.0, -0.0
        0x0000000000000001ULL, 0x0000000000000002ULL, 0x8000000000000001ULL, 0x000fffffffffffffULL, // denormals
        0x7ff0000000000000ULL, 0xfff0000000000000ULL,                                               // infinities
        0x7ff8000000000000ULL, 0x7ff8000000000001ULL, 0xfff8000000000000ULL, 0x7fffffffffffffffULL, // NaNs
    };
    std::set<std::string> keys;
    for (std::uint64_t const pattern : patterns) {
        std::string const made = key(fromBits(pattern));
        EXPECT_EQ(made, key(fromBits(pattern)));
        keys.insert(made);
    }
    EXPECT_EQ(keys.size(), std::size(patterns));
}

class CommaDecimals : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(GammaTableParamsTest, TheLocaleDoesNotMatter) {
    std::string const before = key(2.5, 1234567, 7654321);
    std::locale const old = std::locale::global(std::locale(std::locale::classic(), new CommaDecimals));
    std::string const during = key(2.5, 1234567, 7654321);
    std::locale::global(old);
    EXPECT_EQ(during, before);

    // The C library's locale too, if one with decimal commas is installed.
    std::string const oldC = std::setlocale(LC_ALL, nullptr);
    for (char const* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "nl_NL.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) == nullptr) continue;
        EXPECT_EQ(key(2.5, 1234567, 7654321), before) << name;
    }
    std::setlocale(LC_ALL, oldC.c_str());
}

} // namespace
