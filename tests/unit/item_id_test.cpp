#include "phonebook/book/item_id.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(ItemId, IsReadAsFarAsItIsANumber)
{
    EXPECT_EQ(ParseId(L"12"), 12u);
    EXPECT_EQ(ParseId(L"12abc"), 12u);
    EXPECT_EQ(ParseId(L"  \t+12"), 12u);
    EXPECT_EQ(ParseId(L"abc"), 0u);
    EXPECT_EQ(ParseId(L""), 0u);
    EXPECT_EQ(ParseId(L"0x10"), 0u);
    EXPECT_EQ(ParseId(L"1 2"), 1u);
}

TEST(ItemId, IsSigned)
{
    EXPECT_EQ(ParseId(L"-1"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseId(L" -2147483648"), 0x80000000u);
    EXPECT_EQ(FormatId(0xFFFFFFFF), L"-1");
    EXPECT_EQ(FormatId(0x7FFFFFFF), L"2147483647");
    EXPECT_EQ(FormatId(0x80000000), L"-2147483648");
}

TEST(ItemId, StaysAtTheEndOfTheRangeBeyondIt)
{
    EXPECT_EQ(ParseId(L"2147483648"), 0x7FFFFFFFu);
    EXPECT_EQ(ParseId(L"99999999999999999999999999"), 0x7FFFFFFFu);
    EXPECT_EQ(ParseId(L"-99999999999999999999999999"), 0x80000000u);
}

} // namespace
} // namespace qx
