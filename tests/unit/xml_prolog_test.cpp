#include "phonebook/file/xml_prolog.h"

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
    EXPECT_FALSE(HasPlainProlog("<!--><d/>--><!DOCTYPE d><d/>")); // the comment ends behind what looks like an element
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

TEST(XmlProlog, FourBytesForACharacterAreRefusedWithAndWithoutTheirMark)
{
    const auto widest = [](std::string_view text, std::size_t asciiByte) {
        std::string bytes;
        for (const char c : text) {
            std::string character(4, '\0');
            character[asciiByte] = c;
            bytes += character;
        }
        return bytes;
    };
    for (const char* const text : {"<device/>", "<?xml version='1.0'?><device/>", "<!DOCTYPE device><device/>"}) {
        for (std::size_t asciiByte = 0; asciiByte < 4; ++asciiByte)
            EXPECT_FALSE(HasPlainProlog(widest(text, asciiByte))) << text << asciiByte;
        EXPECT_FALSE(HasPlainProlog("\xFF\xFE\0\0"s + widest(text, 0))) << text;
        EXPECT_FALSE(HasPlainProlog("\0\0\xFE\xFF"s + widest(text, 3))) << text;
    }
}

TEST(XmlProlog, EncodingsInWhichNoMarkupCanHideAreAccepted)
{
    for (const char* const name : {"UTF-8", "UTF-16", "UCS-2", "ISO-10646-UCS-2", "ISO-8859-15", "windows-1251",
                                   "windows-874", "TIS-620", "KOI8-R", "koi8-u", "IBM437", "IBM852", "IBM866",
                                   "GB18030", "EUC-KR", "ks_c_5601-1987", "Shift_JIS", "Big5"}) {
        const std::string document = "<?xml version='1.0' encoding='" + std::string(name) + "'?><d/>";
        EXPECT_TRUE(HasPlainProlog(document)) << name;
        EXPECT_TRUE(HasPlainProlog("\xFF\xFE" + Wide(document, true))) << name;
    }
    for (const char* const name :
         {"UTF-7", "UTF-32", "UCS-4", "IBM037", "IBM420", "IBM1047", "ISO-2022-JP", "HZ-GB-2312"})
        EXPECT_FALSE(HasPlainProlog("<?xml version='1.0' encoding='" + std::string(name) + "'?><d/>")) << name;
}

TEST(XmlProlog, NestingIsCountedAsAParserWould)
{
    EXPECT_TRUE(NestsAtMost("<a/>", 1));
    EXPECT_TRUE(NestsAtMost("<a><b/></a>", 2));
    EXPECT_FALSE(NestsAtMost("<a><b/></a>", 1));
    EXPECT_TRUE(NestsAtMost("<a><b/><b></b><b x='/>' y=\">\"/></a>", 2));
    EXPECT_FALSE(NestsAtMost("<a><b x='/'><c/></b></a>", 2));
    EXPECT_TRUE(NestsAtMost("<?xml version='1.0'?><!-- <a><a> --><a><?p <a> ?><![CDATA[<a><a>]]><!-- <a> --></a>", 1));
    for (const bool lowByteFirst : {true, false}) {
        EXPECT_TRUE(NestsAtMost(Wide("<a><b x='>'/></a>", lowByteFirst), 2));
        EXPECT_FALSE(NestsAtMost(Wide("<a><b><c/></b></a>", lowByteFirst), 2));
    }
    for (const char* const bytes : {"", "<", "<a", "<a b='", "</", "<!--", "<![CDATA[", "<?"})
        EXPECT_TRUE(NestsAtMost(bytes, 1)) << bytes;
}

// The second byte of a character may be a closing bracket's there.
TEST(XmlProlog, NestingCannotHideBehindCharactersOfTwoBytes)
{
    const std::string deep = "<a><a><a></a></a></a>";
    for (const std::string name : {"Shift_JIS", "Big5", "GBK", "gb2312", "GB18030", "ks_c_5601-1987"}) {
        const std::string declaration = "<?xml version='1.0' encoding='" + name + "'?>";
        for (const std::string& hiding :
             {"<![CDATA[\x83]> <!-- ]]>" + deep + "<!-- -->"s, "<!-- \x81--> <![CDATA[ -->" + deep + "<!-- ]]> -->"s,
              "<b c=\"\x81\" d=\"/>" + deep + "<b c=\"\"/>"s, "<?p \x81?> <!-- ?>" + deep + "<!-- -->"s,
              "<!-- </a></a> --><![CDATA[</a></a>]]>" + deep, "\x81<!-- " + deep + " -->", deep + "\x81"}) {
            const std::string document = declaration + "<a>" + hiding + "</a>";
            EXPECT_FALSE(NestsAtMost(document, 3)) << testing::PrintToString(document);
        }
        for (const std::string& text : {"<b c='\x83\x5D\x83\x83'/>"s, "<!-- \x81\x40 -->"s, "\x88\x9F<b/>"s})
            EXPECT_TRUE(NestsAtMost(declaration + "<a>" + text + "</a>", 2)) << name << testing::PrintToString(text);
    }
    const std::string katakana = "<a c='\xB1'><b/>\xDF</a>"; // of one byte
    EXPECT_TRUE(NestsAtMost("<?xml version='1.0' encoding='Shift_JIS'?>" + katakana, 2));
    EXPECT_FALSE(NestsAtMost("<?xml version='1.0' encoding='GBK'?>" + katakana, 2));
    EXPECT_TRUE(NestsAtMost("<?xml version='1.0' encoding='GB18030'?><a b='\x81\x30\x81\x39'/>", 1));
    EXPECT_TRUE(NestsAtMost("<?xml version='1.0' encoding='UTF-8'?><a b='\xC3\xBC'><![CDATA[<a>]]></a>", 1));
    EXPECT_TRUE(NestsAtMost("<a b='\xC3\xBC'/><!-- encoding='GBK' \xFF-->", 1));
}

TEST(XmlProlog, WhatIsNoDocumentIsRefused)
{
    for (const std::string& bytes : {""s, " "s, "text"s, "<"s + "!"s, "<!--"s, "<?xml"s, "<?xml ?>"s, "<?pi"s, "\xFF"s,
                                     "\xFF\xFE"s, "<?xml encoding"s, "<?xml encoding="s, "\0"s})
        EXPECT_FALSE(HasPlainProlog(bytes)) << testing::PrintToString(bytes);
}

} // namespace
} // namespace qx
