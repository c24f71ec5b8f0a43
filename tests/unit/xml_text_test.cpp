#include "phonebook/file/xml_text.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(XmlText, OrdinaryTextsStayAsTheyAre)
{
    const std::wstring text = L"A <b> & \"c\" 'd' äאあ漢\t\r\n\xD7FF\xE000\xFFFD\xD83D\xDE00";
    EXPECT_TRUE(FitsXml(text));
    EXPECT_TRUE(FitsXml(L""));
    EXPECT_EQ(XmlText(text), text);
    EXPECT_EQ(XmlText(L""), L"");
}

TEST(XmlText, CharactersThatNoDocumentCanHoldAreLeftOut)
{
    EXPECT_FALSE(FitsXml(L"a\x01"));
    EXPECT_FALSE(FitsXml(L"\xFFFE"));
    EXPECT_EQ(XmlText({L"a\0b\x01"
                       L"c\x0B"
                       L"d\x1F"
                       L"e\xFFFE"
                       L"f\xFFFF"
                       L"g",
                       13}),
              L"abcdefg");
}

TEST(XmlText, HalvesOfSurrogatePairsAreLeftOut)
{
    EXPECT_FALSE(FitsXml(L"a\xD83D"));
    EXPECT_FALSE(FitsXml(L"\xDE00"));
    EXPECT_EQ(XmlText(L"a\xD83D"), L"a");
    EXPECT_EQ(XmlText(L"\xD83D"
                      L"b"),
              L"b");
    EXPECT_EQ(XmlText(L"\xDE00\xD83D"), L"");
    EXPECT_EQ(XmlText(L"\xD83D\xD83D\xDE00"), L"\xD83D\xDE00");
}

} // namespace
} // namespace qx
