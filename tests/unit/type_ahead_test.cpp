#include "dialog/type_ahead.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

std::vector<std::wstring> Texts(const std::vector<SuggestionItem>& items)
{
    std::vector<std::wstring> texts;
    for (const SuggestionItem& item : items)
        texts.push_back(item.text);
    return texts;
}

using TextList = std::vector<std::wstring>;

TEST(Suggestions, ThatBeginWithTheTypedTextMatchInTheirOrderIgnoringCase)
{
    Suggestions suggestions;
    suggestions.SetItems({{L"Anna"}, {L"andrew"}, {L"Bob"}});
    EXPECT_TRUE(suggestions.Rebuild(L"an"));
    EXPECT_EQ(Texts(suggestions.Matches()), (TextList{L"Anna", L"andrew"}));
    EXPECT_FALSE(suggestions.Rebuild(L"anx"));
    EXPECT_TRUE(suggestions.Matches().empty());
}

TEST(Suggestions, KeepThePagesValue)
{
    const int anna = 0;
    Suggestions suggestions;
    suggestions.SetItems({{L"Anna", &anna}});
    suggestions.Rebuild(L"a");
    EXPECT_EQ(suggestions.Matches()[0].data, &anna);
}

TEST(Suggestions, DoNotMatchBlanksOrNothing)
{
    Suggestions suggestions;
    suggestions.SetItems({{L"   "}, {L""}, {L" Anna"}});
    EXPECT_FALSE(suggestions.Rebuild(L"  "));
    EXPECT_FALSE(suggestions.Rebuild(L""));
    EXPECT_TRUE(suggestions.Rebuild(L" A"));
}

TEST(Suggestions, OfferAllButBlankItems)
{
    Suggestions suggestions;
    suggestions.SetItems({{L"Anna"}, {L" \t"}, {L"Bob"}});
    const auto offered = suggestions.Offered();
    ASSERT_EQ(offered.size(), 2u);
    EXPECT_EQ(offered[0]->text, L"Anna");
    EXPECT_EQ(offered[1]->text, L"Bob");
}

TEST(Suggestions, AreFoundByTheSameLettersBeforeOthersOfTheSameName)
{
    Suggestions suggestions;
    suggestions.SetItems({{L"Anna"}, {L"anna"}, {L"  "}});
    const SuggestionItem* const items = suggestions.Items().data();
    EXPECT_EQ(suggestions.Find(L"anna"), items + 1);
    EXPECT_EQ(suggestions.Find(L"Anna"), items);
    EXPECT_EQ(suggestions.Find(L"ANNA"), items);
    EXPECT_EQ(suggestions.Find(L"Ann"), nullptr);
    EXPECT_EQ(suggestions.Find(L"  "), nullptr);
    EXPECT_EQ(suggestions.Find(L""), nullptr);
}

TEST(Suggestions, AreForgottenWithTheItemsTheyWereMadeOf)
{
    Suggestions suggestions;
    suggestions.SetItems({{L"Anna"}});
    EXPECT_FALSE(suggestions.AreFor(L"")); // not looked for yet
    suggestions.Rebuild(L"a");
    EXPECT_TRUE(suggestions.AreFor(L"a"));
    EXPECT_FALSE(suggestions.AreFor(L"an"));
    suggestions.SetItems({{L"Adam"}});
    EXPECT_TRUE(suggestions.Matches().empty());
    EXPECT_FALSE(suggestions.AreFor(L"a"));
}

TEST(Typing, CompletesWhenTheTextGrows)
{
    EXPECT_EQ(AnswerTyping(L"an", 1, true), EditAnswer::Complete);
    EXPECT_EQ(AnswerTyping(L"a", 0, true), EditAnswer::Complete);
}

TEST(Typing, DoesNotCompleteWhatTheUserDeletesOrReplaces)
{
    EXPECT_EQ(AnswerTyping(L"an", 2, true), EditAnswer::ShowList);
    EXPECT_EQ(AnswerTyping(L"a", 2, true), EditAnswer::ShowList);
}

TEST(Typing, HidesTheListWhenNothingBeginsWithTheText)
{
    EXPECT_EQ(AnswerTyping(L"x", 0, false), EditAnswer::HideList);
    EXPECT_EQ(AnswerTyping(L"", 1, false), EditAnswer::HideList);
}

TEST(Typing, WaitsForTheSecondHalfOfASurrogatePair)
{
    EXPECT_EQ(AnswerTyping(L"\xD83D", 0, true), EditAnswer::ShowList);
    EXPECT_EQ(AnswerTyping(L"\xD83D\xDE00", 1, true), EditAnswer::Complete);
    EXPECT_EQ(AnswerTyping(L"\xFF21", 0, true), EditAnswer::Complete); // a wide letter is whole
}

} // namespace
} // namespace qx
