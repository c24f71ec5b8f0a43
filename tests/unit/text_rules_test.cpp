#include "support/source_texts.h"
#include "support/text_rules.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

TEST(TextRules, PlaceholdersAreReadInOrderAndPercentSignsAreNone)
{
    EXPECT_EQ(Placeholders(L"%d of %s"), "ds");
    EXPECT_EQ(Placeholders(L"100%% of %d"), "d");
    EXPECT_EQ(Placeholders(L"100% sure, 5%"), "??");
    EXPECT_EQ(Placeholders(L"plain"), "");
}

TEST(TextRules, TheMnemonicIsTheLetterBehindTheAmpersand)
{
    EXPECT_EQ(Mnemonic(L"C&lear Fields"), L'L');
    EXPECT_EQ(Mnemonic(L"Salt && &pepper"), L'P');
    EXPECT_EQ(Mnemonic(L"Salt && pepper"), 0);
    EXPECT_EQ(Mnemonic(L"Salt &"), 0);
    EXPECT_EQ(Mnemonic(L"\u53C2\u7167(&B)..."), L'B');
}

TEST(TextRules, ALetterUsedTwiceIsReportedWithBothUsers)
{
    const std::vector<Caption> captions{{"5330", L"&Delete"}, {"1", L"OK"}, {"2", L"Cancel"}, {"854", L"Re&do"}};
    EXPECT_EQ(MnemonicClashes(captions), std::vector<std::string>{"5330 and 854 share a letter"});
    EXPECT_TRUE(MnemonicClashes({{"5330", L"&Delete"}, {"854", L"&Edit"}}).empty());
}

TEST(TextRules, BuiltInTextsThatDifferInDashBlanksAndEndSayTheSame)
{
    EXPECT_EQ(Wording(L"-Fax Number:"), Wording(L"Fax Number"));
    EXPECT_EQ(Wording(L"-&Send "), Wording(L"-&Send"));
    EXPECT_EQ(Wording(L"-Delete..."), Wording(L"-Delete"));
    EXPECT_NE(Wording(L"-Group Name"), Wording(L"Cancel"));
}

SourceTexts TextsIn(const std::string& source)
{
    SourceTexts texts;
    CollectTexts(source, "here", texts);
    return texts;
}

TEST(SourceTexts, EveryWayToNameATextIsFound)
{
    const SourceTexts texts = TextsIn(R"(
        constexpr Text kOne{5255, L"One \"quoted\" text"};
        {.id = IDC_TO, .text = 5214, .fallback = L"To ->", .topic = 15589},
        constexpr Message kLong{{5266, L"in two "
                                       L"literals"}, MB_OK};
        constexpr Text kHeading{5256};
        {.id = IDC_LABEL, .text = 5213},
        Show(owner, 5326, L"Error");
    )");
    std::vector<std::pair<unsigned, std::wstring>> found;
    for (const NamedText& text : texts.named)
        found.emplace_back(text.id, text.fallback);
    const std::vector<std::pair<unsigned, std::wstring>> expected{{5255, L"One \"quoted\" text"},
                                                                  {5214, L"To ->"},
                                                                  {5266, L"in two literals"},
                                                                  {5326, L"Error"},
                                                                  {5256, L""},
                                                                  {5213, L""}};
    EXPECT_EQ(found, expected);
}

TEST(SourceTexts, CommentsNameNoTextAndEveryNumberCounts)
{
    const SourceTexts texts = TextsIn("int a[] = {5320, 5316}; // not 5999\n// {5998, L\"gone\"}\nint b5997 = 0;");
    EXPECT_TRUE(texts.named.empty());
    EXPECT_EQ(texts.numbers, (std::set<unsigned>{0, 5316, 5320}));
}

} // namespace
} // namespace qx::test
