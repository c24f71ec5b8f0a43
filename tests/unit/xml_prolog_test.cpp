#include "phonebook/xml_prolog.h"

#include <gtest/gtest.h>
#include <string>

namespace qx {
namespace {

using namespace std::string_literals;

// The bytes of an ASCII text in 16-bit units.
std::string Wide(std::string_view text, bool lowByteFirst)
{
    std::string bytes;
    for (const char c : text)
        bytes += lowByteFirst ? std::string{c, '\0'} : std::string{'\0', c};
    return bytes;
}

constexpr char kDoctype[] =
    "<?xml version=\"1.0\"?>\n<!-- -->\n<!DOCTYPE device SYSTEM \"http://example.com/x\"><device/>";

TEST(XmlProlog, ADocumentMayStartWithItsRootElement)
{
    EXPECT_TRUE(HasPlainProlog("<device/>"));
    EXPECT_TRUE(HasPlainProlog(" \r\n\t<device/>"));
    EXPECT_TRUE(HasPlainProlog("\xEF\xBB\xBF<device/>"));
}

TEST(XmlProlog, DeclarationCommentsAndInstructionsMayComeFirst)
{
    EXPECT_TRUE(HasPlainProlog(
        "<?xml version='1.0' encoding='UTF-8' standalone='yes'?><!-- <!DOCTYPE x> --><?pi <!DOCTYPE ?>\n<d/>"));
}

TEST(XmlProlog, ADocumentTypeIsRefusedInEveryEncoding)
{
    EXPECT_FALSE(HasPlainProlog(kDoctype));
    EXPECT_FALSE(HasPlainProlog("\xEF\xBB\xBF"s + kDoctype));
    EXPECT_FALSE(HasPlainProlog(Wide(kDoctype, true)));
    EXPECT_FALSE(HasPlainProlog(Wide(kDoctype, false)));
    EXPECT_FALSE(HasPlainProlog("\xFF\xFE" + Wide(kDoctype, true)));
    EXPECT_FALSE(HasPlainProlog("\xFE\xFF" + Wide(kDoctype, false)));
    EXPECT_FALSE(HasPlainProlog("<!doctype device><device/>"));
}

TEST(XmlProlog, SixteenBitDocumentsAreSeenThrough)
{
    EXPECT_TRUE(HasPlainProlog("\xFF\xFE" + Wide("<?xml version='1.0' encoding='utf-16'?><d/>", true)));
    EXPECT_TRUE(HasPlainProlog("\xFE\xFF" + Wide("<!-- x --><d/>", false)));
    EXPECT_TRUE(HasPlainProlog(Wide("<d/>", true)));
    EXPECT_FALSE(HasPlainProlog("\xFF\xFE\0\0"s + "<\0\0\0d\0\0\0"s)); // four bytes for each
}

TEST(XmlProlog, EncodingsThatCanHideMarkupAreRefused)
{
    EXPECT_TRUE(HasPlainProlog("<?xml version='1.0' encoding = \"ISO-8859-1\"?><d/>"));
    EXPECT_TRUE(HasPlainProlog("<?xml version='1.0' encoding='windows-1252'?><d/>"));
    EXPECT_FALSE(HasPlainProlog("<?xml version='1.0' encoding='UTF-7'?><!-- +AC0ALQA+ +ADwAIQ-DOCTYPE --><d/>"));
    EXPECT_FALSE(HasPlainProlog("<?xml version='1.0' encoding='cp037'?><d/>"));
    EXPECT_FALSE(HasPlainProlog("\x4C\x6F\xA7\x94\x93"));
}

TEST(XmlProlog, WhatIsNoDocumentIsRefused)
{
    for (const std::string& bytes : {""s, " "s, "text"s, "<"s + "!"s, "<!--"s, "<?xml"s, "<?xml ?>"s, "<?pi"s, "\xFF"s,
                                     "\xFF\xFE"s, "<?xml encoding"s, "<?xml encoding="s, "\0"s})
        EXPECT_FALSE(HasPlainProlog(bytes)) << testing::PrintToString(bytes);
}

} // namespace
} // namespace qx
