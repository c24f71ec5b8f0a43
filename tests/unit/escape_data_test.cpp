#include "entry/escape_data.h"

#include "support/failing_calls.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

DWORD StoredSize()
{
    DWORD size = 99;
    EXPECT_EQ(FetchEscapeData(nullptr, &size) != FALSE, size != 0);
    return size;
}

// These run in one process and in this order within a test: the slot lives as long as the process.
TEST(EscapeData, IsFetchedAsOftenAsWantedUntilTheNextStore)
{
    EXPECT_TRUE(StoreEscapeData("hello", 5));
    EXPECT_EQ(StoredSize(), 5u);
    for (int i = 0; i < 2; ++i) {
        char buffer[6] = "?????";
        void* to = buffer;
        DWORD size = 0; // neither read nor written when copying
        EXPECT_TRUE(FetchEscapeData(&to, &size));
        EXPECT_STREQ(buffer, "hello");
        EXPECT_EQ(size, 0u);
    }
    EXPECT_TRUE(StoreEscapeData("abc", 3));
    EXPECT_EQ(StoredSize(), 3u);
}

void ExpectNothingToCopy()
{
    char buffer[8] = "keep";
    void* to = buffer;
    DWORD size = 0;
    EXPECT_FALSE(FetchEscapeData(&to, &size));
    EXPECT_STREQ(buffer, "keep");
}

TEST(EscapeData, AStoreOfNothingDropsTheBlockButKeepsReportingItsSize)
{
    for (const bool nullData : {true, false}) {
        ASSERT_TRUE(StoreEscapeData("hello", 5));
        EXPECT_FALSE(nullData ? StoreEscapeData(nullptr, 4) : StoreEscapeData("x", 0));
        EXPECT_EQ(StoredSize(), 5u);
        ExpectNothingToCopy();
    }
}

TEST(EscapeData, AStoreForWhichMemoryIsShortDropsTheBlockAndKeepsItsSize)
{
    ASSERT_TRUE(StoreEscapeData("hello", 5));
    test::FailingCalls<decltype(HeapAlloc), struct Blocks> memory(nullptr, "HeapAlloc", nullptr);
    memory.FailFrom(1);
    EXPECT_FALSE(StoreEscapeData("abc", 3));
    EXPECT_EQ(StoredSize(), 5u);
    ExpectNothingToCopy();
}

TEST(EscapeData, BadArgumentsOfAFetchChangeNothing)
{
    ASSERT_TRUE(StoreEscapeData("hello", 5));
    EXPECT_FALSE(FetchEscapeData(nullptr, nullptr));
    void* nowhere = nullptr;
    DWORD size = 7;
    EXPECT_FALSE(FetchEscapeData(&nowhere, &size));
    EXPECT_EQ(size, 7u);
    char buffer[8];
    void* to = buffer;
    EXPECT_FALSE(FetchEscapeData(&to, nullptr));
}

} // namespace
} // namespace qx
