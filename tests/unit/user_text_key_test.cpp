#include "base/user_text_key.h"

#include "base/text.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace qx {
namespace {

std::vector<wchar_t> CharactersThatKeysDecide()
{
    std::vector<wchar_t> characters;
    for (unsigned c = 1; c < 0xFFFF; ++c) {
        const auto character = static_cast<wchar_t>(c);
        if (UserTextKeys::Decide({&character, 1}))
            characters.push_back(character);
    }
    return characters;
}

int Sign(int number) { return (number > 0) - (number < 0); }

void ExpectAgreement(const UserTextKeys& keys, const std::wstring& a, const std::wstring& b)
{
    std::string keyOfA;
    std::string keyOfB;
    ASSERT_TRUE(keys.Append(keyOfA, a));
    ASSERT_TRUE(keys.Append(keyOfB, b));
    ASSERT_EQ(Sign(keyOfA.compare(keyOfB)), CompareUserText(a, b) - CSTR_EQUAL)
        << testing::PrintToString(a) << " and " << testing::PrintToString(b);
}

TEST(UserTextKeys, DecideForOrdinaryTextsOnly)
{
    EXPECT_TRUE(UserTextKeys::Decide(L""));
    EXPECT_TRUE(UserTextKeys::Decide(L"Ann-Marie O'Neill, 555-0100"));
    EXPECT_TRUE(UserTextKeys::Decide(L"Müller Łódź אבג Анна 漢字かなカナ 한국"));
    EXPECT_FALSE(UserTextKeys::Decide(L"soft\xADhyphen"));
    EXPECT_FALSE(UserTextKeys::Decide(L"combi\x0301ning"));
    EXPECT_FALSE(UserTextKeys::Decide(L"tatwee\x0640l"));
    EXPECT_FALSE(UserTextKeys::Decide(L"Αθήνα"));
    EXPECT_FALSE(UserTextKeys::Decide(L"tab\t"));
}

TEST(UserTextKeys, EveryCharacterThatTheyDecideOrdersAsTheComparisonDoes)
{
    const UserTextKeys keys;
    const std::vector<wchar_t> characters = CharactersThatKeysDecide();
    ASSERT_GT(characters.size(), 30000u);
    for (std::size_t i = 0; i + 1 < characters.size(); ++i) {
        ExpectAgreement(keys, {characters[i]}, {characters[i + 1]});
        ExpectAgreement(keys, {characters[i]}, L"");
    }
}

TEST(UserTextKeys, RandomTextsOrderAsTheComparisonDoes)
{
    const UserTextKeys keys;
    const std::vector<wchar_t> all = CharactersThatKeysDecide();
    const std::vector<wchar_t> plain(all.begin(), all.begin() + 95);
    const std::vector<wchar_t> letters(all.begin(), all.begin() + 1000);
    std::mt19937 random(7);
    for (const auto& characters : {plain, letters, all}) {
        const auto one = [&] { return characters[random() % characters.size()]; };
        for (int i = 0; i < 60000; ++i) {
            std::wstring a;
            for (auto units = random() % 6; units > 0; --units)
                a += one();
            std::wstring b = a; // near misses are where it counts
            if (!b.empty() && random() % 3 != 0)
                b[random() % b.size()] = one();
            if (random() % 3 == 0)
                b += one();
            if (random() % 4 == 0)
                CharUpperW(b.data());
            ExpectAgreement(keys, a, b);
        }
    }
}

TEST(UserTextKeys, AChainOfKeysOrdersByTheFirstThenTheSecond)
{
    const UserTextKeys keys;
    const auto chain = [&keys](std::wstring_view first, std::wstring_view second) {
        std::string chained;
        keys.Append(chained, first);
        keys.Append(chained, second);
        return chained;
    };
    EXPECT_LT(chain(L"a", L"z"), chain(L"ab", L"a"));
    EXPECT_LT(chain(L"Ab", L"a"), chain(L"aB", L"b"));
    EXPECT_EQ(chain(L"AB", L"c"), chain(L"ab", L"C"));
    EXPECT_NE(chain(L"a", L"b"), chain(L"ab", L""));
}

TEST(UserTextKeys, LongTextsHaveKeysToo)
{
    const UserTextKeys keys;
    std::string key;
    EXPECT_TRUE(keys.Append(key, std::wstring(100000, L'ü')));
    EXPECT_GT(key.size(), 200000u);
}

} // namespace
} // namespace qx
