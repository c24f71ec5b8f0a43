#include "dialog/typed_prefix.h"

#include <gtest/gtest.h>
#include <string>

namespace qx {
namespace {

TEST(TypedPrefix, MatchesTheBeginningWithoutRegardToCase)
{
    EXPECT_TRUE(MatchesTypedPrefix(L"Anna", L"an"));
    EXPECT_TRUE(MatchesTypedPrefix(L"anna", L"ANN"));
    EXPECT_TRUE(MatchesTypedPrefix(L"Ångström", L"åNG"));
    EXPECT_TRUE(MatchesTypedPrefix(L"Anna", L"Anna"));
    EXPECT_FALSE(MatchesTypedPrefix(L"Hanna", L"an"));
    EXPECT_FALSE(MatchesTypedPrefix(L"Anna", L"ana"));
}

TEST(TypedPrefix, TextShorterThanWhatWasTypedNeverMatches)
{
    EXPECT_FALSE(MatchesTypedPrefix(L"An", L"Ann"));
}

TEST(TypedPrefix, NothingMatchesNothing)
{
    EXPECT_FALSE(MatchesTypedPrefix(L"", L""));
    EXPECT_FALSE(MatchesTypedPrefix(L"Anna", L""));
    EXPECT_FALSE(MatchesTypedPrefix(L"", L"a"));
}

TEST(TypedPrefix, BlanksAloneMatchNothing)
{
    EXPECT_FALSE(MatchesTypedPrefix(L"  Anna", L"  "));
    EXPECT_FALSE(MatchesTypedPrefix(L"   ", L" "));
    EXPECT_TRUE(MatchesTypedPrefix(L"  Anna", L"  A"));
}

TEST(TypedPrefix, PunctuationCounts)
{
    EXPECT_FALSE(MatchesTypedPrefix(L"co-op", L"coo"));
    EXPECT_TRUE(MatchesTypedPrefix(L"co-op", L"co-"));
}

TEST(TypedPrefix, TypedTextOfMoreThan254UnitsMatchesNothing)
{
    const std::wstring text(300, L'x');
    EXPECT_TRUE(MatchesTypedPrefix(text, text.substr(0, 254)));
    EXPECT_FALSE(MatchesTypedPrefix(text, text.substr(0, 255)));
}

TEST(BlankText, IsWhiteSpaceOnlyButNotEmpty)
{
    EXPECT_TRUE(IsBlankText(L" \t\n"));
    EXPECT_TRUE(IsBlankText(L"\u3000")); // the wide blank of Japanese
    EXPECT_FALSE(IsBlankText(L" x"));
    EXPECT_FALSE(IsBlankText(L""));
}

} // namespace
} // namespace qx
