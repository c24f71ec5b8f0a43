#include "admin/contacts/fax_number.h"

#include <gtest/gtest.h>

namespace qx::admin {
namespace {

const DialingRules kAbroad{.outsideLine = {}, .international = L"00", .country = {}, .trunk = {}, .extensionDigits = 0};
const DialingRules kGermany{
    .outsideLine = {}, .international = L"00", .country = L"49", .trunk = L"0", .extensionDigits = 0};

std::wstring Dialled(const std::wstring& written, const DialingRules& rules = {})
{
    const FaxNumber number = NormalFaxNumber(written, rules);
    EXPECT_TRUE(number.why.empty()) << number.why;
    return number.number;
}

std::string WhyNot(const std::wstring& written, const DialingRules& rules = kAbroad)
{
    const FaxNumber number = NormalFaxNumber(written, rules);
    EXPECT_TRUE(number.number.empty()) << std::string(number.number.begin(), number.number.end());
    return number.why;
}

TEST(FaxNumber, WhatTheFieldAcceptsStaysAsItIs)
{
    for (const wchar_t* const number : {L"5550100", L"(030)555-01", L"0,5550100", L"*31#5550100", L"[99]555-0100"}) {
        const FaxNumber taken = NormalFaxNumber(number, {});
        EXPECT_EQ(taken.number, number);
        EXPECT_TRUE(taken.changes.empty());
    }
}

TEST(FaxNumber, BlanksDotsAndOneSlashBehindAnAreaAreLeftOut)
{
    EXPECT_EQ(Dialled(L" 030 555 01 00 "), L"0305550100");
    EXPECT_EQ(Dialled(L"01.23.45.67.89"), L"0123456789");
    EXPECT_EQ(Dialled(L"(555) 123.4567"), L"(555)1234567");
    EXPECT_EQ(Dialled(L"030/5550100"), L"0305550100");
    EXPECT_EQ(Dialled(L"(030) / 555 01"), L"(030)55501");
    EXPECT_EQ(NormalFaxNumber(L"030 55501", {}).changes, std::vector{NumberChange::SeparatorsLeft});
}

TEST(FaxNumber, InvisibleMarksDashesAndOtherScriptsDigitsBecomePlain)
{
    EXPECT_EQ(Dialled(L"\x202A"
                      L"030\x2011"
                      L"555\x2013"
                      L"01\x202C"),
              L"030-555-01");
    EXPECT_EQ(Dialled(L"\x0660\x0663\x0660\x06F5\x06F5\x06F5"), L"030555");
    EXPECT_EQ(Dialled(L"\xFF08\xFF10\xFF13\xFF09\xFF15\xFF15\xFF15"), L"(03)555");
    EXPECT_EQ(Dialled(L"030\x00A0"
                      L"555\x202F"
                      L"01"),
              L"03055501");
}

TEST(FaxNumber, WhatASpreadsheetOrAnAddressPutsAroundIsTakenOff)
{
    EXPECT_EQ(Dialled(L"=\"0305550100\""), L"0305550100");
    EXPECT_EQ(Dialled(L"'0305550100"), L"0305550100");
    EXPECT_EQ(Dialled(L"tel:030-555-01"), L"030-555-01");
    EXPECT_EQ(Dialled(L"Fax: 030 555"), L"030555");
    EXPECT_EQ(Dialled(L"TEL:+49-30-555", kAbroad), L"0049-30-555");
}

TEST(FaxNumber, PlusNeedsSomethingToBeDialledForIt)
{
    EXPECT_EQ(Dialled(L"+49 (30) 555-01", kAbroad), L"0049(30)555-01");
    EXPECT_EQ(Dialled(L"(+49) 30 55501", kAbroad), L"00493055501");
    EXPECT_NE(WhyNot(L"+49 30 55501", {}).find("begins with \"+\""), std::string::npos);
    EXPECT_NE(WhyNot(L"030+555").find("not its first"), std::string::npos);
    EXPECT_NE(WhyNot(L"++49 30 555").find("not its first"), std::string::npos);
    EXPECT_NE(WhyNot(L"+ 0305550100").find("no country's code"), std::string::npos);
}

TEST(FaxNumber, NumbersOfTheOwnCountryAreDialledAsNationalOnes)
{
    EXPECT_EQ(Dialled(L"+49 (30) 555-01", kGermany), L"0(30)555-01");
    EXPECT_EQ(Dialled(L"+49-30-555-01", kGermany), L"030-555-01");
    EXPECT_EQ(Dialled(L"+43 1 55501", kGermany), L"0043155501");
    EXPECT_EQ(NormalFaxNumber(L"+49 30 555", kGermany).changes,
              (std::vector{NumberChange::SeparatorsLeft, NumberChange::National}));
}

TEST(FaxNumber, AZeroThatIsNotDialledFromAbroadIsLeftOutOnlyWhereThatIsKnown)
{
    EXPECT_EQ(Dialled(L"+49 (0)30 555-01", kAbroad), L"004930555-01");
    EXPECT_EQ(Dialled(L"+44(0)20 7946 0100", kAbroad), L"00442079460100");
    EXPECT_EQ(Dialled(L"+49 (0)30 555-01", kGermany), L"030555-01");
    // In Italy a 0 is dialled from abroad, too.
    EXPECT_NE(WhyNot(L"+39 (0)6 555010").find("(0)"), std::string::npos);
    EXPECT_EQ(Dialled(L"+39 06 555010", kAbroad), L"003906555010");
    EXPECT_NE(WhyNot(L"0049 (0)30 555").find("(0)"), std::string::npos);
    EXPECT_NE(WhyNot(L"+49 030 555").find("behind its country's code"), std::string::npos);
    EXPECT_NE(WhyNot(L"+49 (030) 555").find("behind its country's code"), std::string::npos);
}

TEST(FaxNumber, TheOutsideLineStandsBeforeEveryNumberButTheHousesOwn)
{
    const DialingRules rules{
        .outsideLine = L"0,", .international = L"00", .country = {}, .trunk = {}, .extensionDigits = 4};
    EXPECT_EQ(Dialled(L"030 55501", rules), L"0,03055501");
    EXPECT_EQ(Dialled(L"+49 30 55501", rules), L"0,00493055501");
    EXPECT_EQ(Dialled(L"4711", rules), L"4711");
    EXPECT_EQ(Dialled(L"47110", rules), L"0,47110");
}

TEST(FaxNumber, WhatIsNotClearlyOneNumberIsRefused)
{
    const struct {
        const wchar_t* written;
        const char* why;
    } kRefused[] = {
        {L"", "empty"},
        {L" \x200E", "empty"},
        {L"555-FAXME", "\"F\""},
        {L"Telefax: 030 555", "\"T\""},
        {L"5550100 x12", "\"x\""},
        {L"5550100 ext. 12", "\"e\""},
        {L"tel:+49-30-555;ext=5", "extension"},
        {L"030 5550100; 030 5550101", "second number"},
        {L"5550100 5550101", "two numbers"},
        {L"5550100,5550101", "two numbers"},
        {L"5550100, 01", "list"},
        {L"5550100/01", "\"/\""},
        {L"555/556", "\"/\""},
        {L"030/555/556", "\"/\""},
        {L"4.93055E+10", "rounded"},
        {L"4,93055E+10", "rounded"},
        {L"49305550100.0", "\".\""},
        {L"030.555.", "\".\""},
        {L"49305550100.00", "\".\""},
        {L"(030 555", "not closed"},
        {L"030) 555", "not opened"},
        {L"(030] 555", "not opened"},
        {L"((030)) 555", "within"},
        {L"() 5550100", "empty parentheses"},
        {L"---", "no digits"},
        {L"7", "single digit"},
        {L"+4930123456789012345", "15 digits"},
        {L"030\n555", "several lines"},
        {L"030;555", "second number"},
        {L"n/a", "\"n\""},
        {L"0305550100030555010003055501000305550100030555010009", "50 characters"},
    };
    for (const auto& row : kRefused) {
        const std::string why = WhyNot(row.written);
        EXPECT_NE(why.find(row.why), std::string::npos)
            << std::string(row.written, row.written + wcslen(row.written)) << ": " << why;
    }
}

TEST(FaxNumber, NoCharacterIsLeftOutUnseen)
{
    using namespace std::string_view_literals;
    EXPECT_NE(WhyNot(std::wstring(L"030\0"
                                  L"555"sv)),
              "");
    EXPECT_NE(WhyNot(L"030\xFFFF"
                     L"555"),
              "");
}

TEST(FaxNumber, RulesThatCannotBeDialledAreRefused)
{
    const auto wrong = [](std::wstring DialingRules::* field, const wchar_t* text) {
        DialingRules rules;
        rules.*field = text;
        return !WhyRulesAreWrong(rules).empty();
    };
    EXPECT_EQ(WhyRulesAreWrong({}), "");
    EXPECT_EQ(WhyRulesAreWrong(kGermany), "");
    EXPECT_TRUE(wrong(&DialingRules::outsideLine, L"0 "));
    EXPECT_TRUE(wrong(&DialingRules::international, L"+"));
    EXPECT_TRUE(wrong(&DialingRules::country, L"+49"));
    EXPECT_TRUE(wrong(&DialingRules::country, L"049"));
    EXPECT_TRUE(wrong(&DialingRules::trunk, L"0")); // without a country's code
}

} // namespace
} // namespace qx::admin
