#include "base/user_text_key.h"

#include "base/text.h"
#include "support/patched_function.h"

#include "support/failing_calls.h"
#include "support/redirected_import.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
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

int Sign(int number)
{
    return (number > 0) - (number < 0);
}

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
    EXPECT_TRUE(UserTextKeys::Decide(L"Müller Łódź Nguyễn Αθήνα Հայկ თამარ אבג Анна 漢字かなカナ 한국"));
    EXPECT_FALSE(UserTextKeys::Decide(L"soft\xADhyphen"));
    EXPECT_FALSE(UserTextKeys::Decide(L"combi\x0301ning"));
    EXPECT_FALSE(UserTextKeys::Decide(L"tatwee\x0640l"));
    EXPECT_FALSE(UserTextKeys::Decide(L"สมชาย"));
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

// Of the scripts with few letters every pair, alone and beside letters that might combine with them.
TEST(UserTextKeys, EveryPairOfLettersOfAScriptOrdersAsTheComparisonDoes)
{
    struct Script {
        wchar_t first, last;
        std::size_t letters;
    };
    constexpr Script kScripts[] = {{0x0370, 0x03FF, 69}, {0x0530, 0x058F, 76}, {0x10A0, 0x10FF, 38}};
    const UserTextKeys keys;
    std::vector<wchar_t> decided = CharactersThatKeysDecide();
    for (const Script& script : kScripts) {
        std::vector<wchar_t> letters;
        std::ranges::copy_if(decided, std::back_inserter(letters),
                             [&](wchar_t c) { return script.first <= c && c <= script.last; });
        EXPECT_EQ(letters.size(), script.letters);
        for (const std::wstring beside : {L"", L"a", L"\u03b1", L"\u00e9"}) {
            for (const wchar_t a : letters) {
                for (const wchar_t b : letters) {
                    ASSERT_NO_FATAL_FAILURE(ExpectAgreement(keys, beside + a, beside + b));
                    ASSERT_NO_FATAL_FAILURE(ExpectAgreement(keys, a + beside, b + beside));
                }
            }
        }
    }
}

TEST(UserTextKeys, RandomTextsOrderAsTheComparisonDoes)
{
    const UserTextKeys keys;
    const std::vector<wchar_t> all = CharactersThatKeysDecide();
    const std::vector<wchar_t> plain(all.begin(), all.begin() + 95);
    std::vector<wchar_t> letters;
    std::ranges::copy_if(all, std::back_inserter(letters), [](wchar_t c) { return c < 0x3000; });
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
            if (UserTextKeys::Decide(b)) // a few letters have their capitals elsewhere
                ExpectAgreement(keys, a, b);
        }
    }
}

// Equal texts stand next to each other once sorted: so few comparisons look at all pairs.
void ExpectEqualTextsToHaveEqualKeys(std::vector<std::wstring> texts)
{
    const UserTextKeys keys;
    std::stable_sort(texts.begin(), texts.end(), [](const std::wstring& a, const std::wstring& b) {
        return CompareUserText(a, b) == CSTR_LESS_THAN;
    });
    for (std::size_t i = 0; i + 1 < texts.size(); ++i) {
        std::string keyOfA, keyOfB;
        keys.Append(keyOfA, texts[i]);
        keys.Append(keyOfB, texts[i + 1]);
        ASSERT_EQ(keyOfA == keyOfB, EqualUserText(texts[i], texts[i + 1]))
            << testing::PrintToString(texts[i]) << " and " << testing::PrintToString(texts[i + 1]);
    }
}

std::vector<wchar_t> CharactersWhoseEqualityKeysDecide()
{
    std::vector<wchar_t> characters;
    for (unsigned c = 1; c < 0xFFFF; ++c) {
        const auto character = static_cast<wchar_t>(c);
        if (UserTextKeys::DecideEquality({&character, 1}))
            characters.push_back(character);
    }
    return characters;
}

TEST(UserTextKeys, DecideTheEqualityOfManyMoreTexts)
{
    EXPECT_TRUE(UserTextKeys::DecideEquality(L"Αθήνα Nguyễn O’Neill e\x0301 สมชาย"));
    EXPECT_FALSE(UserTextKeys::DecideEquality(L"soft\xADhyphen"));
    EXPECT_FALSE(UserTextKeys::DecideEquality(L"tatwee\x0640l"));
    EXPECT_FALSE(UserTextKeys::DecideEquality(L"tab\t"));
    for (const wchar_t c : CharactersThatKeysDecide())
        EXPECT_TRUE(UserTextKeys::DecideEquality({&c, 1}));
}

TEST(UserTextKeys, EveryCharacterWhoseEqualityTheyDecideEqualsWhatItsKeyEquals)
{
    const std::vector<wchar_t> characters = CharactersWhoseEqualityKeysDecide();
    ASSERT_GT(characters.size(), 45000u);
    for (const std::wstring before : {L"", L"a", L"\u05d0"}) {
        for (const std::wstring after : {L"", L"b\u0301"}) {
            std::vector<std::wstring> texts;
            for (const wchar_t character : characters)
                texts.push_back(before + character + after);
            ASSERT_NO_FATAL_FAILURE(ExpectEqualTextsToHaveEqualKeys(texts));
        }
    }
}

TEST(UserTextKeys, RandomTextsAreEqualWhenTheirKeysAre)
{
    const std::vector<wchar_t> all = CharactersWhoseEqualityKeysDecide();
    std::vector<wchar_t> marks;
    for (const wchar_t character : all) {
        WORD kind = 0;
        GetStringTypeW(CT_CTYPE3, &character, 1, &kind);
        if ((kind & (C3_NONSPACING | C3_DIACRITIC | C3_VOWELMARK)) != 0)
            marks.push_back(character);
    }
    std::mt19937 random(11);
    for (int round = 0; round < 40; ++round) {
        // A handful of characters, so that many texts come out equal.
        std::wstring few = L"eE\u00e9\u00df";
        for (int i = 0; i < 6; ++i) {
            few += marks[random() % marks.size()];
            few += all[random() % all.size()];
        }
        std::vector<std::wstring> texts;
        for (int i = 0; i < 3000; ++i) {
            std::wstring text;
            for (auto units = 1 + random() % 5; units > 0; --units)
                text += few[random() % few.size()];
            texts.push_back(text);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectEqualTextsToHaveEqualKeys(texts)) << round;
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

TEST(UserTextKeys, AreMadeOnRequestOnlyOfTextsForWhichTheyDecide)
{
    const UserTextKeys keys;
    std::string any;
    EXPECT_TRUE(keys.Append(any, L"สมชาย"));
    std::string deciding;
    EXPECT_FALSE(keys.AppendDeciding(deciding, L"สมชาย"));
    EXPECT_EQ(deciding, "");
    for (const wchar_t* const text : {L"Ann", L"Änn", L"Άννα", L""}) {
        deciding.clear();
        any.clear();
        EXPECT_TRUE(keys.AppendDeciding(deciding, text) && keys.Append(any, text));
        EXPECT_EQ(deciding, any);
    }
}

test::PatchedFunction* g_patch = nullptr;

// As where "ch" is a letter of its own that comes behind the h.
int WINAPI LCMapStringWithCh(LCID locale, DWORD flags, const wchar_t* text, int units, wchar_t* to, int room)
{
    std::wstring sorted(text, static_cast<std::size_t>(units));
    for (std::size_t at = sorted.find(L"ch"); at != std::wstring::npos; at = sorted.find(L"ch", at))
        sorted.replace(at, 2, L"hz");
    return g_patch->WithOriginal([&] { return LCMapStringW(locale, flags, sorted.data(), units, to, room); });
}

TEST(UserTextKeys, ALetterOfTwoCharactersHasAPlaceOfItsOwn)
{
    test::PatchedFunction patch(L"kernel32.dll", "LCMapStringW", LCMapStringWithCh);
    g_patch = &patch;
    const UserTextKeys keys;
    const auto keyOf = [&keys](std::wstring_view text) {
        std::string key;
        keys.Append(key, text);
        return key;
    };
    EXPECT_LT(keyOf(L"cz"), keyOf(L"ch"));
    EXPECT_LT(keyOf(L"ha"), keyOf(L"ch"));
    EXPECT_LT(keyOf(L"ch"), keyOf(L"i"));
}

TEST(UserTextKeys, LongTextsHaveKeysToo)
{
    const UserTextKeys keys;
    std::string key;
    EXPECT_TRUE(keys.Append(key, std::wstring(100000, L'ü')));
    EXPECT_GT(key.size(), 200000u);
}

test::RedirectedImport<decltype(LCMapStringW)>* g_map = nullptr;

// As where pairs such as "ch" are letters of their own: the key of many letters is not those of each.
int WINAPI MapWithCombinedLetters(LCID locale, DWORD flags, LPCWSTR text, int units, LPWSTR key, int bytes)
{
    const int made = g_map->Original()(locale, flags, text, units, key, bytes);
    if (units > 100 && made > 0)
        ++*reinterpret_cast<char*>(key);
    return made;
}

TEST(UserTextKeys, AreTheSystemsWhereLettersCombine)
{
    const UserTextKeys usual;
    test::RedirectedImport<decltype(LCMapStringW)> map("LCMapStringW", MapWithCombinedLetters);
    g_map = &map;
    const UserTextKeys keys;
    for (const wchar_t* const text : {L"Ann", L"chata", L"Änn", L""}) {
        std::string expected;
        std::string key;
        EXPECT_TRUE(usual.Append(expected, text) && keys.Append(key, text));
        EXPECT_EQ(key, expected);
        key.clear();
        EXPECT_TRUE(keys.AppendDeciding(key, text));
        EXPECT_EQ(key, expected);
    }
}

TEST(UserTextKeys, AreNoneWhereTheSystemMakesNone)
{
    test::FailingCalls<decltype(LCMapStringW), struct Keys> made(nullptr, "LCMapStringW", 0);
    made.FailFrom(1);
    const UserTextKeys keys;
    std::string key = "before";
    EXPECT_FALSE(keys.Append(key, L"Ann"));
    EXPECT_FALSE(keys.AppendDeciding(key, L"Ann"));
    EXPECT_EQ(key, "before");
}

// Without room for one byte the system tells the size of a key: that is no key, or names of one length would be equal.
TEST(UserTextKeys, AreNoneWhereTheSystemDoesNotTellTheirSize)
{
    const UserTextKeys keys;
    test::FailingCalls<decltype(LCMapStringW), struct Sizes> made(
        nullptr, "LCMapStringW", 0, ERROR_NOT_ENOUGH_MEMORY,
        [](LCID, DWORD, LPCWSTR, int, LPWSTR key, int room) { return key == nullptr || room > 0; });
    made.FailFrom(1);
    std::string key = "before";
    EXPECT_FALSE(keys.Append(key, L"\u00c4nne"));
    EXPECT_EQ(key, "before");
}

} // namespace
} // namespace qx
