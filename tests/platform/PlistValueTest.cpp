#include "platform/PlistValue.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

TEST(PlistValue, BooleanReadingsFollowNSStringAndNSNumber)
{
    for (const char* yes : {"YES", "true", "1", "y", "T", "  +0009", "-1", "True story"})
        EXPECT_TRUE(PlistValue(yes).boolValue()) << yes;
    for (const char* no : {"NO", "false", "0", "", "  ", "000", "x1", "-0"})
        EXPECT_FALSE(PlistValue(no).boolValue()) << no;
    EXPECT_TRUE(PlistValue(0.5).boolValue());
    EXPECT_FALSE(PlistValue(0.0).boolValue());
    EXPECT_TRUE(PlistValue(-3).boolValue());
    EXPECT_FALSE(PlistValue().boolValue());
    EXPECT_FALSE(PlistValue(PlistArray{PlistValue(true)}).boolValue());
}

TEST(PlistValue, IntegerReadingsTruncateAndParseLeadingDigits)
{
    EXPECT_EQ(PlistValue(2.9).integerValue(), 2);
    EXPECT_EQ(PlistValue(-2.9).integerValue(), -2);
    EXPECT_EQ(PlistValue(true).integerValue(), 1);
    EXPECT_EQ(PlistValue("3").integerValue(), 3);
    EXPECT_EQ(PlistValue("  -42xyz").integerValue(), -42);
    EXPECT_EQ(PlistValue("3.9").integerValue(), 3);
    EXPECT_EQ(PlistValue("abc").integerValue(), 0);
    EXPECT_EQ(PlistValue("99999999999999999999").integerValue(), INT64_MAX);
    EXPECT_EQ(PlistValue("-99999999999999999999").integerValue(), INT64_MIN);
    EXPECT_EQ(PlistValue(1e300).integerValue(), INT64_MAX);
    EXPECT_EQ(PlistValue().integerValue(), 0);
}

TEST(PlistValue, NumbersCompareByValueAcrossKinds)
{
    EXPECT_EQ(PlistValue(1), PlistValue(true));
    EXPECT_EQ(PlistValue(2), PlistValue(2.0));
    EXPECT_FALSE(PlistValue(2) == PlistValue("2"));
    EXPECT_EQ(PlistValue(PlistDictionary{{"a", PlistValue(1)}}), PlistValue(PlistDictionary{{"a", PlistValue(1.0)}}));
}

TEST(PropertyListSerialization, RoundTripsEveryKindInBothFormats)
{
    PlistDictionary everything{
        {"bool", PlistValue(true)},
        {"negative", PlistValue(-7)},
        {"real", PlistValue(0.25)},
        {"string", PlistValue("#FF0000:0.50")},
        {"data", PlistValue(PlistData{{0, 1, 255}})},
        {"date", PlistValue(PlistDate{86400})},
        {"array", PlistValue(PlistArray{PlistValue("com.apple.camera"), PlistValue(3)})},
        {"nested", PlistValue(PlistDictionary{{"inner", PlistValue(false)}})},
    };
    for (auto format : {PropertyListSerialization::Format::XML, PropertyListSerialization::Format::Binary}) {
        auto bytes = PropertyListSerialization::dataWithPropertyList(PlistValue(everything), format);
        auto parsed = PropertyListSerialization::propertyListWithData(bytes);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(*parsed, PlistValue(everything));
        EXPECT_EQ((*parsed)["negative"].kind(), PlistValue::Kind::Integer);
    }
}

TEST(PropertyListSerialization, RejectsWhatIsNoPropertyList)
{
    for (std::string junk : {std::string(), std::string("garbage<<"), std::string("bplist00\x01\x02", 10),
                             std::string("<plist><dict><key>a</key></plist>")})
        EXPECT_FALSE(PropertyListSerialization::propertyListWithData(junk)) << junk;
}
