// Every value a domain file holds survives a rewrite of the domain, type and value, whoever wrote
// the file: this program, Python's plistlib or libplist.

#include "TestSupport.h"

#include "platform/HBPreferences.h"
#include "platform/PropertyListSerialization.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace fs = std::filesystem;
using PropertyListSerialization::Format;

namespace {

constexpr const char* kHome = "com.veltram.nimbraprefs.homescreen";
constexpr double kYear = 365.2425 * 86400;

/// Values a page never writes but other programs do.
PlistDictionary unusualValues()
{
    return {
        {"before1901", PlistValue(PlistDate{-150 * kYear})},
        {"after2038", PlistValue(PlistDate{90 * kYear + 0.5})},
        {"fraction", PlistValue(PlistDate{600000000.123456789})},
        {"twoTo63", PlistValue::unsignedInteger(std::uint64_t{1} << 63)},
        {"largestUnsigned", PlistValue::unsignedInteger(std::numeric_limits<std::uint64_t>::max())},
        {"smallest", PlistValue(std::numeric_limits<long long>::min())},
        {"uid", PlistValue(PlistUID{42})},
        {"bigUid", PlistValue(PlistUID{0x1234567890})},
        {"control", PlistValue("bell\x07 and nul-free \x01 text")},
        {"unicode", PlistValue("caf\xC3\xA9 \xF0\x9F\x98\x80")},
        {"tiny", PlistValue(5e-324)},
        {"nested", PlistValue(PlistArray{PlistValue(PlistUID{1}), PlistValue(PlistDate{-1e10})})},
    };
}

using test::identical;

std::string run(const std::string& command)
{
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return out;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
        out.append(buffer, n);
    int status = ::pclose(pipe);
    if (status != 0)
        out += "\n(exit status " + std::to_string(status) + ")";
    return out;
}

/// Opens the Dock page on a root whose Home Screen domain is file's bytes and switches Custom
/// Corner Radius on through the page; the domain's bytes afterwards.
std::string changeOneKeyThroughThePage(const std::string& bytes)
{
    test::SessionOnFreshRoot s;
    fs::path domain = test::under(s.root.path(), HBPreferences::pathForIdentifier(kHome));
    test::writeFile(domain, bytes);
    s->open("NIMHomeScreenDockPrefsListController");
    s->set("enableCustomDockRadius", PlistValue(true));
    return test::readFile(domain);
}

}  // namespace

TEST(ExactValues, EveryValueSurvivesBothFormatsExactly)
{
    for (Format format : {Format::Binary, Format::XML}) {
        auto parsed = PropertyListSerialization::propertyListWithData(PropertyListSerialization::dataWithPropertyList(PlistValue(unusualValues()), format));
        ASSERT_TRUE(parsed);
        for (auto& [key, value] : unusualValues())
            EXPECT_TRUE(identical((*parsed)[key], value)) << key << (format == Format::XML ? " (XML)" : " (binary)");
        EXPECT_EQ((*parsed)["largestUnsigned"].unsignedBits(), std::numeric_limits<std::uint64_t>::max());
    }
    EXPECT_FALSE(PlistValue::unsignedInteger(std::numeric_limits<std::uint64_t>::max()) == PlistValue(-1));
}

TEST(ExactValues, XmlDatesAndIntegersOverTheirWholeRange)
{
    auto parsed = PropertyListSerialization::propertyListWithData(
        "<plist version=\"1.0\"><dict>"
        "<key>old</key><date>1850-03-04T05:06:07Z</date>"
        "<key>far</key><date>2200-12-31T23:59:59Z</date>"
        "<key>year</key><date>2001Z</date>"
        "<key>max</key><integer>18446744073709551615</integer>"
        "<key>min</key><integer>-9223372036854775808</integer>"
        "<key>uid</key><dict><key>CF$UID</key><integer>9</integer></dict>"
        "</dict></plist>");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(PropertyListSerialization::iso8601((*parsed)["old"].dateValue()->secondsSinceReferenceDate), "1850-03-04T05:06:07Z");
    EXPECT_EQ(PropertyListSerialization::iso8601((*parsed)["far"].dateValue()->secondsSinceReferenceDate), "2200-12-31T23:59:59Z");
    EXPECT_EQ((*parsed)["year"].dateValue()->secondsSinceReferenceDate, 0);
    EXPECT_EQ((*parsed)["old"].dateValue()->secondsSinceReferenceDate, -4759757633.0);  // as Python's datetime counts
    EXPECT_TRUE((*parsed)["max"].isLargeUnsigned());
    EXPECT_EQ((*parsed)["min"].integerValue(), std::numeric_limits<long long>::min());
    ASSERT_TRUE((*parsed)["uid"].uidValue());
    EXPECT_EQ((*parsed)["uid"].uidValue()->value, 9u);
    EXPECT_FALSE(PropertyListSerialization::propertyListWithData("<plist><integer>18446744073709551616</integer></plist>"));
    EXPECT_FALSE(PropertyListSerialization::propertyListWithData("<plist><date>2001-13-01T00:00:00Z</date></plist>"));
}

TEST(ExactValues, XmlWithAByteOrderMarkOrInUtf16Reads)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>name</key>"
                      "<string>caf\xC3\xA9 \xF0\x9F\x98\x80</string><key>n</key><integer>3</integer></dict></plist>\n";
    auto utf16 = [&](bool bigEndian) {
        std::string out = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
        std::u16string units;
        for (std::size_t i = 0; i < xml.size();) {
            auto c = static_cast<unsigned char>(xml[i]);
            char32_t code = c;
            std::size_t length = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
            if (length > 1) {
                code = c & (0x3F >> (length - 1));
                for (std::size_t k = 1; k < length; ++k)
                    code = (code << 6) | (static_cast<unsigned char>(xml[i + k]) & 0x3F);
            }
            i += length;
            if (code >= 0x10000) {
                units.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
                units.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
            } else {
                units.push_back(static_cast<char16_t>(code));
            }
        }
        for (char16_t unit : units) {
            char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
            out += bigEndian ? std::string{high, low} : std::string{low, high};
        }
        return out;
    };
    for (const std::string& bytes : {"\xEF\xBB\xBF" + xml, utf16(false), utf16(true)}) {
        test::TempDir root;
        Process process{{.root = root.path()}};
        fs::path file = test::under(root.path(), HBPreferences::pathForIdentifier(kHome));
        test::writeFile(file, bytes);
        auto preferences = HBPreferences::preferencesForIdentifier(kHome);
        EXPECT_EQ(preferences->objectForKey("name").stringValue(), "caf\xC3\xA9 \xF0\x9F\x98\x80");
        ASSERT_TRUE(preferences->setObject(PlistValue(4), "n"));
        EXPECT_EQ(preferences->objectForKey("name").stringValue(), "caf\xC3\xA9 \xF0\x9F\x98\x80");
        for (auto& entry : fs::directory_iterator(file.parent_path()))
            EXPECT_EQ(entry.path().filename().string().find("corrupt"), std::string::npos) << entry.path();
    }
}

TEST(ExactValues, UnusualValuesSurviveAChangeThroughAPage)
{
    for (Format format : {Format::Binary, Format::XML}) {
        std::string after = changeOneKeyThroughThePage(PropertyListSerialization::dataWithPropertyList(PlistValue(unusualValues()), format));
        auto parsed = PropertyListSerialization::propertyListWithData(after);
        ASSERT_TRUE(parsed);
        EXPECT_TRUE((*parsed)["enableCustomDockRadius"].boolValue());
        for (auto& [key, value] : unusualValues())
            EXPECT_TRUE(identical((*parsed)[key], value)) << key << (format == Format::XML ? " (XML)" : " (binary)");
    }
}

namespace {

// Writes a corpus of property lists with Python's plistlib into a folder: every value type, in
// binary and XML (XML has no UIDs or control characters, which plistlib refuses to write there).
constexpr const char* kPlistlibCorpus = R"PY(
import datetime, plistlib, sys
folder = sys.argv[1]
values = {
    "before1901": datetime.datetime(1850, 3, 4, 5, 6, 7),
    "after2038": datetime.datetime(2100, 6, 1, 12, 0, 0),
    "fraction": datetime.datetime(2020, 1, 2, 3, 4, 5, 678901),
    "twoTo63": 2**63,
    "largestUnsigned": 2**64 - 1,
    "smallest": -2**63,
    "small": 7,
    "real": 3.141592653589793,
    "yes": True,
    "no": False,
    "data": bytes(range(256)),
    "text": "caf\u00e9 \U0001F600 <&>",
    "empty": "",
    "list": [1, "two", 3.0, [], {}],
    "dict": {"inner": {"deep": [datetime.datetime(1700, 1, 1)]}},
}
binary = dict(values, uid=plistlib.UID(42), bigUid=plistlib.UID(2**40), control="bell\x07 tab\t")
with open(folder + "/plistlib-binary.plist", "wb") as f:
    plistlib.dump(binary, f, fmt=plistlib.FMT_BINARY)
with open(folder + "/plistlib-xml.plist", "wb") as f:
    plistlib.dump(values, f, fmt=plistlib.FMT_XML)
)PY";

// Compares two property lists by value and type with plistlib, leaving one key out; prints each
// difference, or "same".
constexpr const char* kPlistlibCompare = R"PY(
import math, plistlib, sys
before = plistlib.load(open(sys.argv[1], "rb"))
after = plistlib.load(open(sys.argv[2], "rb"))
changed = sys.argv[3]
def same(a, b):
    if type(a) is not type(b):
        return False
    if isinstance(a, dict):
        return a.keys() == b.keys() and all(same(a[k], b[k]) for k in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(same(x, y) for x, y in zip(a, b))
    if isinstance(a, float) and math.isnan(a):
        return math.isnan(b)
    return a == b
problems = [k for k in before if k != changed and (k not in after or not same(before[k], after[k]))]
problems += [k for k in after if k != changed and k not in before]
print("same" if not problems else "differ: " + ", ".join(f"{k}: {before.get(k)!r} -> {after.get(k)!r}" for k in problems))
)PY";

/// Writes a corpus with libplist's own writer: every type it has, binary and XML.
void writeLibplistCorpus(const fs::path& folder)
{
    plist_t dict = plist_new_dict();
    plist_dict_set_item(dict, "date", plist_new_date(-1000000000, 250000));
    plist_dict_set_item(dict, "later", plist_new_date(2000000000, 0));
    plist_dict_set_item(dict, "largestUnsigned", plist_new_uint(std::numeric_limits<std::uint64_t>::max()));
    plist_dict_set_item(dict, "twoTo63", plist_new_uint(std::uint64_t{1} << 63));
    plist_dict_set_item(dict, "small", plist_new_uint(200));
    plist_dict_set_item(dict, "uid", plist_new_uid(77));
    plist_dict_set_item(dict, "real", plist_new_real(-0.1));
    plist_dict_set_item(dict, "yes", plist_new_bool(1));
    plist_dict_set_item(dict, "text", plist_new_string("\xC3\xA9t\xC3\xA9 & <b>"));
    plist_dict_set_item(dict, "data", plist_new_data("\x00\x01\xFF", 3));
    plist_t array = plist_new_array();
    plist_array_append_item(array, plist_new_uint(1));
    plist_array_append_item(array, plist_new_string("x"));
    plist_dict_set_item(dict, "list", array);
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(dict, &bytes, &length);
    test::writeFile(folder / "libplist-binary.plist", std::string(bytes, length));
    std::free(bytes);
    // plistlib reads no UID in XML: the XML file has none.
    plist_dict_remove_item(dict, "uid");
    plist_to_xml(dict, &bytes, &length);
    test::writeFile(folder / "libplist-xml.plist", std::string(bytes, length));
    std::free(bytes);
    plist_free(dict);
}

}  // namespace

TEST(ExactValues, ACorpusOfOtherWritersFilesKeepsEveryOtherKeyThroughAPageChange)
{
    test::TempDir corpus;
    test::writeFile(corpus / "make.py", kPlistlibCorpus);
    test::writeFile(corpus / "compare.py", kPlistlibCompare);
    ASSERT_EQ(run("python3 " + (corpus / "make.py").string() + " " + corpus.path().string()), "");
    writeLibplistCorpus(corpus.path());
    int files = 0;
    for (const char* name : {"plistlib-binary.plist", "plistlib-xml.plist", "libplist-binary.plist", "libplist-xml.plist"}) {
        fs::path original = corpus / name;
        ASSERT_TRUE(fs::exists(original)) << name;
        fs::path changed = corpus / (std::string(name) + ".after");
        test::writeFile(changed, changeOneKeyThroughThePage(test::readFile(original)));
        std::string verdict = run("python3 " + (corpus / "compare.py").string() + " " + original.string() + " " +
                                  changed.string() + " enableCustomDockRadius");
        EXPECT_EQ(verdict, "same\n") << name;
        ++files;
    }
    EXPECT_EQ(files, 4);
}
