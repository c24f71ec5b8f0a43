#include "text/help_names.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

struct LanguageCase {
    std::uint16_t language;
    const wchar_t* code;
};

TEST(HelpNames, CanTellTheBuildSoThatAnUpdateHasNamesOfItsOwn)
{
    EXPECT_EQ(LocalizedHelpName(L"QXZH_XX_F1B42.CHM", L"DE"), L"QXZHDEF1B42.CHM");
    EXPECT_EQ(HelpFileInnerPath(L"QXZHLF1B42.CHM", L"DE"), L"QXZHDEF1B42.CHM::/qxhelp.txt");
}

TEST(HelpLanguage, EveryPrimaryLanguageHasItsOwnCode)
{
    constexpr LanguageCase kCases[] = {
        {1, L"AR"},  {2, L"BG"},  {3, L"CA"},  {5, L"CS"},  {6, L"DA"},  {7, L"DE"},  {8, L"EL"},
        {9, L"EN"},  {10, L"ES"}, {11, L"FI"}, {12, L"FR"}, {13, L"HE"}, {14, L"HU"}, {16, L"IT"},
        {17, L"JA"}, {18, L"KO"}, {19, L"NL"}, {20, L"NO"}, {21, L"PL"}, {22, L"PT"}, {24, L"RO"},
        {25, L"RU"}, {27, L"SK"}, {29, L"SV"}, {30, L"TH"}, {31, L"TR"}, {33, L"ID"}, {34, L"UK"},
        {36, L"SL"}, {37, L"ET"}, {38, L"LV"}, {39, L"LT"}, {42, L"VI"}, {63, L"KK"},
    };
    for (const auto& [primary, code] : kCases) {
        for (const int sub : {0, 1, 2, 5, 63}) {
            const auto language = static_cast<std::uint16_t>(sub << 10 | primary);
            const wchar_t* const found = FindHelpLanguageCode(language);
            ASSERT_NE(found, nullptr) << language;
            EXPECT_STREQ(found, code) << language;
        }
    }
}

TEST(HelpLanguage, TheSubLanguageTellsTaiwanFromOtherChineseAndCroatianFromSerbian)
{
    constexpr LanguageCase kCases[] = {{0x0404, L"HT"}, {0x0804, L"HC"}, {0x0C04, L"HC"}, {0x0004, L"HC"},
                                       {0x041A, L"HR"}, {0x081A, L"SR"}, {0x0C1A, L"SR"}, {0x0415, L"PL"}};
    for (const auto& [language, code] : kCases)
        EXPECT_STREQ(FindHelpLanguageCode(language), code) << language;
}

TEST(HelpLanguage, OtherLanguagesHaveNoCode)
{
    constexpr std::uint16_t kOthers[] = {0x0000, 0x000F, 0x0417, 0x0439, 0x0440, 0xFFFF};
    for (const std::uint16_t language : kOthers)
        EXPECT_EQ(FindHelpLanguageCode(language), nullptr) << language;
}

TEST(LocalizedHelpName, TheCodeTakesThePlaceOfTheSecondTokenAndTheUnderscoresGo)
{
    EXPECT_EQ(LocalizedHelpName(L"QXFXH_XX_F1.CHM", L"DE"), L"QXFXHDEF1.CHM");
}

TEST(LocalizedHelpName, FurtherTokensAreDropped)
{
    EXPECT_EQ(LocalizedHelpName(L"A_B_C.CHM_D_E.CHM", L"EN"), L"AENC.CHM");
}

TEST(LocalizedHelpName, FewerThanThreeTokensGiveNoName)
{
    for (const wchar_t* const name : {L"", L"_", L"____", L"QXFXH", L"QXFXH_", L"QXFXH_F1.CHM", L"_QXFXH__F1.CHM_"})
        EXPECT_EQ(LocalizedHelpName(name, L"EN"), L"") << name;
}

TEST(LocalizedHelpName, TheLongestPrinterDataIsTakenWhole)
{
    const std::wstring name = std::wstring(120, L'A') + L"_X_" + std::wstring(136, L'B');
    ASSERT_EQ(name.size(), 259u);
    EXPECT_EQ(LocalizedHelpName(name, L"EN"), std::wstring(120, L'A') + L"EN" + std::wstring(136, L'B'));
    EXPECT_EQ(LocalizedHelpName(std::wstring(259, L'A'), L"EN"), L"");
}

TEST(LocalizedHelpName, NamesThatWouldLeaveTheirFolderGiveNone)
{
    const wchar_t* const kHostile[] = {
        L"..\\A_X_B.CHM", L"A_X_\\..\\B.CHM", L"\\\\SERVER\\SHARE\\A_X_B.CHM",
        L"C:\\A_X_B.CHM", L"C:A_X_B.CHM",     L"../A_X_B.CHM",
        L"A_X_B.CHM:S",   L"A_X_*",           L"A_X_?.CHM",
        L"A_X_B.CHM ",    L"A_X_B.",          L"A_X_<B.CHM",
        L"A_X_\"B.CHM",   L"A_X_|B.CHM",      L"A_X_\x01.CHM",
    };
    for (const wchar_t* const name : kHostile)
        EXPECT_EQ(LocalizedHelpName(name, L"EN"), L"") << name;
}

TEST(LocalizedHelpName, ADeviceIsNoFile)
{
    EXPECT_EQ(LocalizedHelpName(L"L_X_1.CHM", L"PT"), L"");
}

TEST(PlainFileName, DevicesAreRecognisedWhateverTheirCaseAndExtension)
{
    for (const wchar_t* const name :
         {L"CON", L"con.chm", L"Nul.txt", L"aux", L"PRN.a.b", L"COM1", L"lpt9.chm", L"NUL .x"})
        EXPECT_FALSE(IsPlainFileName(name)) << name;
    for (const wchar_t* const name : {L"CONTENTS.CHM", L"NULL", L"COM", L"COM10.CHM", L"QXZHENF1.CHM", L".chm"})
        EXPECT_TRUE(IsPlainFileName(name)) << name;
}

TEST(HelpFileInnerPath, TheLetterLMarksThePlaceOfTheCode)
{
    EXPECT_EQ(HelpFileInnerPath(L"QXZHLF1.CHM", L"EN"), L"QXZHENF1.CHM::/qxhelp.txt");
    EXPECT_EQ(HelpFileInnerPath(L"QXZHLF1.CHM", L"HT"), L"QXZHHTF1.CHM::/qxhelp.txt");
}

TEST(HelpFileInnerPath, FewerThanTwoTokensGiveNoPath)
{
    for (const wchar_t* const name : {L"", L"L", L"L.L.", L"QXZHL", L".QXZHL."})
        EXPECT_EQ(HelpFileInnerPath(name, L"EN"), L"") << name;
}

TEST(HelpFileInnerPath, AFileNameThatIsNoneGivesNoPath)
{
    EXPECT_EQ(HelpFileInnerPath(L"QXZHL/F1.CHM", L"EN"), L"");
    EXPECT_EQ(HelpFileInnerPath(L"C:QXZHLF1.CHM", L"EN"), L"");
}

TEST(HelpFile, IsRecognisedByItsMarkAnywhereInItsPath)
{
    EXPECT_TRUE(IsHelpFile(L"C:\\WINDOWS\\SYSTEM32\\SPOOL\\DRIVERS\\X64\\3\\QXZHLF1.CHM"));
    EXPECT_TRUE(IsHelpFile(L"QXZHL"));
    EXPECT_FALSE(IsHelpFile(L"QXZHENF1.CHM"));
    EXPECT_FALSE(IsHelpFile(L""));
}

TEST(BaseName, IsWhatStandsBehindTheLastBackslash)
{
    EXPECT_EQ(BaseName(L"C:\\DRIVERS\\QXZHLF1.CHM"), L"QXZHLF1.CHM");
    EXPECT_EQ(BaseName(L"QXZHLF1.CHM"), L"QXZHLF1.CHM");
    EXPECT_EQ(BaseName(L"C:\\"), L"");
    EXPECT_EQ(BaseName(L""), L"");
}

TEST(HelpTopicName, IsTheNumberAndAnExtension)
{
    EXPECT_EQ(HelpTopicName(15596), L"15596.html");
}

TEST(HelpTopicName, NoTopicHasNoName)
{
    EXPECT_EQ(HelpTopicName(kNoTopic), L"");
}

TEST(HelpChmPath, EndsBeforeTheLastColonButOne)
{
    EXPECT_EQ(HelpChmPath(L"C:\\Temp\\QXZHENF1.CHM::/qxhelp.txt"), L"C:\\Temp\\QXZHENF1.CHM");
    EXPECT_EQ(HelpChmPath(L"\\\\server\\temp\\QXZHENF1.CHM::/qxhelp.txt"), L"\\\\server\\temp\\QXZHENF1.CHM");
}

TEST(HelpChmPath, FewerThanTwoColonsHoldNone)
{
    for (const wchar_t* const path : {L"", L":", L"C:\\Temp\\QXZHENF1.CHM", L"QXZHENF1.CHM", L"::/qxhelp.txt"})
        EXPECT_EQ(HelpChmPath(path), L"") << path;
}

TEST(HelpPagePath, JoinsHelpFileAndPage)
{
    EXPECT_EQ(HelpPagePath(L"C:\\Temp\\QXZHENF1.CHM", L"15596.html", 256), L"C:\\Temp\\QXZHENF1.CHM::/15596.html");
}

TEST(HelpPagePath, NeedsBothParts)
{
    EXPECT_EQ(HelpPagePath(L"", L"15596.html", 256), L"");
    EXPECT_EQ(HelpPagePath(L"C:\\Temp\\QXZHENF1.CHM", L"", 256), L"");
}

TEST(HelpPagePath, IsNeverCut)
{
    const std::wstring page = L"::/15596.html";
    const std::wstring chm(255 - page.size(), L'A');
    EXPECT_EQ(HelpPagePath(chm, L"15596.html", 256), chm + page);
    EXPECT_EQ(HelpPagePath(chm + L"A", L"15596.html", 256), L"");
}

} // namespace
} // namespace qx
