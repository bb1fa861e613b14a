// The checks of untrusted property-list bytes: what the bundle writes passes, every hostile kind is
// refused with its reason, and the bounds hold exactly.

#include "../robustness/HostilePlists.h"

#include "platform/PropertyListCheck.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>

namespace {

using PropertyListSerialization::Format;

std::string reason(const std::string& bytes)
{
    return PropertyListCheck::problem(bytes).value_or("");
}

PlistValue nestedArrays(std::size_t depth)
{
    PlistValue value{PlistArray{}};
    for (std::size_t i = 1; i < depth; ++i)
        value = PlistValue(PlistArray{value});
    return value;
}

}  // namespace

TEST(PropertyListCheck, WhatTheBundleWritesPasses)
{
    PlistArray shared(300, PlistValue("the same string"));  // written once, referred to 300 times
    PlistDictionary values{{"flag", PlistValue(true)}, {"list", PlistValue(shared)}, {"data", PlistValue(PlistData{{0, 1, 2}})},
                           {"deep", nestedArrays(PropertyListCheck::kMaxDepth - 1)}};
    for (auto format : {Format::XML, Format::Binary}) {
        std::string bytes = PropertyListSerialization::dataWithPropertyList(PlistValue(values), format);
        EXPECT_EQ(reason(bytes), "");
        auto parsed = PropertyListSerialization::propertyListWithData(bytes);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(*parsed, PlistValue(values));
    }
}

TEST(PropertyListCheck, HostileBytesAreRefusedWithTheirReason)
{
    EXPECT_EQ(reason(hostile::xmlWithNul()), "a NUL byte");
    EXPECT_EQ(reason("<plist><string>&#x0;</string></plist>"), "a character reference to U+0000 or past U+10FFFF");
    EXPECT_EQ(reason("<plist><string>&#1114112;</string></plist>"), "a character reference to U+0000 or past U+10FFFF");
    EXPECT_EQ(reason("<plist><string>&#65;&#x1F600;</string></plist>"), "");
    EXPECT_EQ(reason(hostile::binaryWithNul()), "a string holding a NUL byte");
    EXPECT_EQ(reason(hostile::binaryCycle()), "a container that contains itself");
    EXPECT_EQ(reason(hostile::binarySharedReferences(200, 5)), "more than 1048576 values once its references are expanded");
    EXPECT_EQ(reason(hostile::binarySharedReferences(20, 3)), "");
    // Cut short anywhere, a binary plist is refused, never read past its end.
    std::string whole = hostile::binarySharedReferences(20, 3);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        if (!PropertyListCheck::problem(whole.substr(0, size))) {
            EXPECT_FALSE(PropertyListSerialization::propertyListWithData(whole.substr(0, size))) << size;
        }
    }
}

TEST(PropertyListCheck, NestingIsBoundedExactly)
{
    const std::size_t limit = PropertyListCheck::kMaxDepth;
    EXPECT_EQ(reason(hostile::binaryNested(limit)), "");
    EXPECT_EQ(reason(hostile::binaryNested(limit + 1)), "containers nested deeper than 512 levels");
    EXPECT_EQ(reason(hostile::binaryNested(100000)), "containers nested deeper than 512 levels");
    // XML counts the plist element and a leaf element around the containers.
    EXPECT_EQ(reason(hostile::xmlNested(limit + 1)), "");
    EXPECT_EQ(reason(hostile::xmlNested(limit + 2)), "elements nested deeper than 514 levels");
    EXPECT_EQ(reason(hostile::xmlNested(500000)), "elements nested deeper than 514 levels");
    EXPECT_FALSE(PropertyListSerialization::propertyListWithData(hostile::xmlNested(500000)));
}
