#include "base/text.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(Text, ACopyIsCutToTheDestinationAndAlwaysTerminated)
{
    wchar_t four[4] = L"xxx";
    EXPECT_EQ(CopyText(four, L"abc"), S_OK);
    EXPECT_STREQ(four, L"abc");
    EXPECT_TRUE(FAILED(CopyText(four, L"abcd")));
    EXPECT_STREQ(four, L"abc");
}

TEST(Text, BadArgumentsAreRefused)
{
    wchar_t four[4] = L"xxx";
    EXPECT_EQ(CopyText(four, nullptr), E_INVALIDARG);
    EXPECT_STREQ(four, L"");
    EXPECT_EQ(CopyText({}, L"abc"), E_INVALIDARG);
    const wchar_t full[2] = {L'a', L'b'};
    wchar_t unterminated[2] = {full[0], full[1]};
    EXPECT_EQ(AppendText(unterminated, L"c"), E_INVALIDARG);
    wchar_t room[4] = L"a";
    EXPECT_EQ(AppendText(room, nullptr), E_INVALIDARG);
    EXPECT_STREQ(room, L"a");
}

TEST(Text, AppendingGoesOnWhereTheTextEnds)
{
    wchar_t six[6] = L"ab";
    EXPECT_EQ(AppendText(six, L"cd"), S_OK);
    EXPECT_TRUE(FAILED(AppendText(six, L"efg")));
    EXPECT_STREQ(six, L"abcde");
}

TEST(Text, UserTextsAreComparedWithoutCase)
{
    EXPECT_TRUE(EqualUserText(L"Ann LEE", L"ann lee"));
    EXPECT_TRUE(EqualUserText(L"\u00c4rger", L"\u00e4rger"));
    EXPECT_FALSE(EqualUserText(L"co-op", L"coop")); // punctuation counts
    EXPECT_EQ(CompareUserText(L"Anna", L"bob"), CSTR_LESS_THAN);
    EXPECT_TRUE(EqualUserText(L"", L""));
}

} // namespace
} // namespace qx
