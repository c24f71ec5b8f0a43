#include "support/languages.h"
#include "support/source_texts.h"
#include "support/string_library.h"
#include "support/text_rules.h"
#include "support/ui_language.h"
#include "text/help_names.h"
#include "text/localized_text.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iomanip>
#include <optional>
#include <regex>
#include <set>
#include <sstream>

namespace qx::test {
namespace {

constexpr LANGID kEnglish = 0x0409;

// Labels that the driver prints on the cover page.
constexpr unsigned kCoverPageLabels[] = {5202, 5203, 5204, 5210, 5218, 5219, 5229, 5316, 5319, 5320};

// A button "Add..." that Add Recipients captions where it has one; its present template has none.
constexpr unsigned kNotInUseToday[] = {5246};

// One id, two built-in texts that say different things, on purpose.
constexpr unsigned kTwoWordings[] = {6077};

std::string Name(LANGID language, unsigned id)
{
    std::ostringstream name;
    name << "language 0x" << std::hex << std::setw(4) << std::setfill('0') << language << std::dec << ", text " << id;
    return name.str();
}

template <std::size_t N> bool Contains(const unsigned (&ids)[N], unsigned id)
{
    return std::find(std::begin(ids), std::end(ids), id) != std::end(ids);
}

using Tables = std::map<LANGID, TextTable>;
using Problems = std::vector<std::string>;

Problems MissingTexts(const Tables& tables, const std::set<unsigned>& wanted)
{
    Problems problems;
    for (const auto& [language, table] : tables) {
        for (const unsigned id : wanted) {
            if (!table.contains(id))
                problems.push_back(Name(language, id) + " is missing");
        }
    }
    return problems;
}

Problems WrongPlaceholders(const Tables& tables)
{
    Problems problems;
    for (const auto& [language, table] : tables) {
        for (const auto& [id, text] : table) {
            const auto english = tables.at(kEnglish).find(id);
            if (english != tables.at(kEnglish).end() && Placeholders(text) != Placeholders(english->second))
                problems.push_back(Name(language, id) + " has other placeholders than English");
        }
    }
    return problems;
}

bool IsPathMarked(const std::wstring& text)
{
    return Placeholders(text) != "s" || text.find(L"\n\u202A%s\u202C") != text.npos;
}

// Of a text from right to left. A mark keeps the end of a line on the left; a path has its own direction
// between an embedding and its end. Texts from left to right have no such marks.
Problems WrongMarksOfDirection(const Tables& tables)
{
    const std::wregex unmarkedEnd(L"[.:?>\u061F](\n|$)"), mark(L"[\u200E\u200F\u202A-\u202E]");
    Problems problems;
    for (const auto& [language, table] : tables) {
        const bool isRightToLeft = LanguageOf(language)->isRightToLeft;
        for (const auto& [id, text] : table) {
            if (isRightToLeft ? std::regex_search(text, unmarkedEnd) || !IsPathMarked(text)
                              : std::regex_search(text, mark))
                problems.push_back(Name(language, id) + " has wrong marks of direction");
        }
    }
    return problems;
}

// Of a text, what people read.
std::wstring Words(const std::wstring& text)
{
    static const std::wregex unread(L"\\(&.\\)|[&\u200F]");
    return std::regex_replace(text, unread, L"");
}

bool IsInLatinLetters(const TextTable& table)
{
    const std::wstring& cancel = table.at(5224);
    return std::ranges::any_of(cancel, [](wchar_t unit) { return unit >= L'a' && unit <= L'z'; });
}

// A single word may be the same in two languages that have their letters in common; no phrase is.
Problems TextsLeftInEnglish(const Tables& tables)
{
    Problems problems;
    for (const auto& [language, table] : tables) {
        if (LanguageOf(language) == LanguageOf(kEnglish))
            continue;
        const bool mayShareWords = IsInLatinLetters(table);
        for (const auto& [id, text] : table) {
            const auto english = tables.at(kEnglish).find(id);
            const std::wstring words = Words(text);
            const bool isShared = words == L"OK" || (mayShareWords && words.find(L' ') == words.npos);
            if (english != tables.at(kEnglish).end() && words == Words(english->second) && !isShared)
                problems.push_back(Name(language, id) + " is left in English");
        }
    }
    return problems;
}

class StringLibraryTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        library_.emplace();
        texts_ = TextsOfTheModule();
    }
    static void TearDownTestSuite() { library_.reset(); }

    static const Tables& Languages() { return library_->Languages(); }
    static const TextTable& English() { return Languages().at(kEnglish); }
    static const SourceTexts& Sources() { return texts_; }
    static HMODULE Module() { return library_->Module(); }
    static const std::vector<WORD>& ResourceTypes() { return library_->ResourceTypes(); }

    // check(language, id, text), for every text of the library.
    template <class Check> static void ForEveryText(Check check)
    {
        for (const auto& [language, table] : Languages()) {
            for (const auto& [id, text] : table)
                check(language, id, text);
        }
    }

private:
    inline static std::optional<StringLibrary> library_;
    inline static SourceTexts texts_;
};

TEST_F(StringLibraryTest, HoldsTextsAndVersionInformationAndNoCode)
{
    EXPECT_EQ(ResourceTypes(), (std::vector<WORD>{6, 16})); // RT_STRING, RT_VERSION
    const auto* const base = reinterpret_cast<const BYTE*>(Module());
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& header = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew)->OptionalHeader;
    EXPECT_EQ(header.AddressOfEntryPoint, 0u);
    EXPECT_EQ(header.SizeOfCode, 0u);
}

TEST_F(StringLibraryTest, SpeaksEveryLanguageOfTheListAndNoOther)
{
    for (const Language& language : test::Languages())
        EXPECT_TRUE(Languages().contains(language.Id())) << language.code;
    for (const auto& [id, table] : Languages())
        EXPECT_NE(LanguageOf(id), nullptr) << std::hex << id;
}

// Every number of Windows for one of our languages, as its user's session looks texts up.
TEST_F(StringLibraryTest, EveryUserSeesTheTextsOfTheirLanguage)
{
    for (const Language& language : test::Languages()) {
        ASSERT_TRUE(Languages().contains(language.Id())) << language.code;
        const TextTable& expected = Languages().at(language.Id());
        for (const LANGID id : language.ids) {
            const UiLanguage user(id);
            for (const auto& [text, wording] : expected) {
                // Each text by a session of its own: the language that one lookup ends with must not help the next.
                const TextOwner session(Module(), L"");
                EXPECT_EQ(LocalizedText(session, {text, L"(none)"}), wording)
                    << language.code << ": " << Name(id, text);
            }
        }
    }
}

// Neither neutral locales nor those without a number are a user's language of Windows.
BOOL CALLBACK NoteNumber(LPWSTR name, DWORD, LPARAM numbers)
{
    DWORD isNeutral = 0;
    GetLocaleInfoEx(name, LOCALE_INEUTRAL | LOCALE_RETURN_NUMBER, reinterpret_cast<LPWSTR>(&isNeutral),
                    sizeof isNeutral / sizeof(wchar_t));
    const LCID locale = LocaleNameToLCID(name, 0);
    if (isNeutral == 0 && locale != LOCALE_CUSTOM_UNSPECIFIED && SORTIDFROMLCID(locale) == SORT_DEFAULT)
        reinterpret_cast<std::set<LANGID>*>(numbers)->insert(LANGIDFROMLCID(locale));
    return TRUE;
}

std::set<LANGID> NumbersOfWindows()
{
    std::set<LANGID> numbers;
    EnumSystemLocalesEx(NoteNumber, LOCALE_WINDOWS, reinterpret_cast<LPARAM>(&numbers), nullptr);
    return numbers;
}

bool IsOfALanguageOfTheList(LANGID number)
{
    return std::ranges::any_of(test::Languages(), [=](const Language& language) {
        return PRIMARYLANGID(language.Id()) == PRIMARYLANGID(number);
    });
}

TEST_F(StringLibraryTest, TheListHasEveryNumberThatWindowsHasForItsLanguages)
{
    EXPECT_TRUE(NumbersOfWindows().contains(kEnglish));
    for (const LANGID number : NumbersOfWindows())
        EXPECT_EQ(LanguageOf(number) != nullptr, IsOfALanguageOfTheList(number)) << std::hex << number;
}

TEST_F(StringLibraryTest, UsersOfOtherLanguagesSeeEnglish)
{
    int others = 0;
    for (const LANGID number : NumbersOfWindows()) {
        if (IsOfALanguageOfTheList(number))
            continue;
        ++others;
        const UiLanguage user(number);
        EXPECT_EQ(LocalizedText(TextOwner(Module(), L""), {5224, L"(none)"}), English().at(5224)) << std::hex << number;
    }
    EXPECT_GT(others, 0);
}

// The code is part of the names of files in the field; it is also what the module makes of the main number, which gives
// a language that the help does not know the English pages.
TEST_F(StringLibraryTest, TheHelpOfALanguageIsFoundUnderItsCode)
{
    for (const Language& language : test::Languages()) {
        const wchar_t* const code = FindHelpLanguageCode(language.Id());
        EXPECT_EQ(std::wstring(code != nullptr ? code : L"EN"),
                  std::wstring(language.helpCode.begin(), language.helpCode.end()))
            << language.code;
    }
}

TEST_F(StringLibraryTest, KeysAreLettersOfTheWordOrStandInParentheses)
{
    ForEveryText([](LANGID id, unsigned text, const std::wstring& wording) {
        const std::size_t mark = wording.find(L'&');
        if (mark == wording.npos)
            return;
        const bool isInParentheses = mark > 0 && wording[mark - 1] == L'(';
        EXPECT_EQ(isInParentheses, LanguageOf(id)->hasKeysInParentheses) << Name(id, text);
        EXPECT_TRUE(!isInParentheses || (Mnemonic(wording) >= L'A' && Mnemonic(wording) <= L'Z')) << Name(id, text);
    });
}

TEST_F(StringLibraryTest, EveryLanguageHasEveryTextThatTheModuleNames)
{
    std::set<unsigned> wanted(std::begin(kCoverPageLabels), std::end(kCoverPageLabels));
    for (const NamedText& text : Sources().named)
        wanted.insert(text.id);
    EXPECT_EQ(MissingTexts(Languages(), wanted), Problems());
}

// Texts without a built-in one are named by their bare number, in many ways; numbers like these are nothing else.
TEST_F(StringLibraryTest, EveryNumberThatLooksLikeATextIdIsOne)
{
    for (const unsigned number : Sources().numbers) {
        const bool looksLikeATextId = (number >= 5200 && number < 5400) || (number >= 6000 && number < 6300);
        EXPECT_TRUE(!looksLikeATextId || English().contains(number)) << number;
    }
}

std::set<unsigned> IdsOf(const TextTable& table)
{
    std::set<unsigned> ids;
    for (const auto& [id, text] : table)
        ids.insert(id);
    return ids;
}

TEST_F(StringLibraryTest, EveryLanguageHasTheTextsOfEnglish)
{
    EXPECT_EQ(MissingTexts(Languages(), IdsOf(English())), Problems());
}

TEST_F(StringLibraryTest, NoTextIsUnused)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring&) {
        EXPECT_NE(Sources().numbers.contains(id), Contains(kNotInUseToday, id)) << Name(language, id);
    });
}

TEST_F(StringLibraryTest, ATextHasThePlaceholdersOfEnglishAndOfTheBuiltInText)
{
    EXPECT_EQ(WrongPlaceholders(Languages()), Problems());
    for (const NamedText& text : Sources().named) {
        if (!text.fallback.empty() && English().contains(text.id)) {
            EXPECT_EQ(Placeholders(text.fallback), Placeholders(English().at(text.id))) << text.id;
        }
    }
}

TEST_F(StringLibraryTest, ATextFitsTheBufferItIsLookedUpInto)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring& text) {
        EXPECT_LE(text.size(), 255u) << Name(language, id);
    });
}

TEST_F(StringLibraryTest, NoTextLooksUntranslatedOrEmpty)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring& text) {
        EXPECT_NE(text.front(), L'-') << Name(language, id);
        EXPECT_FALSE(std::iswspace(text.front()) || std::iswspace(text.back())) << Name(language, id);
    });
}

TEST_F(StringLibraryTest, NoTextIsLeftInEnglish)
{
    EXPECT_EQ(TextsLeftInEnglish(Languages()), Problems());
}

TEST_F(StringLibraryTest, LabelsOfThePrintedCoverPageHaveNoAmpersand)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring& text) {
        if (Contains(kCoverPageLabels, id)) {
            EXPECT_EQ(text.find(L'&'), text.npos) << Name(language, id);
        }
    });
}

TEST_F(StringLibraryTest, BuiltInTextsOfOneIdSayTheSame)
{
    std::map<unsigned, const NamedText*> first;
    for (const NamedText& text : Sources().named) {
        if (text.fallback.empty() || Contains(kTwoWordings, text.id))
            continue;
        const NamedText& other = *first.try_emplace(text.id, &text).first->second;
        EXPECT_EQ(Wording(text.fallback), Wording(other.fallback))
            << text.id << " in " << text.file << " and in " << other.file;
    }
}

TEST_F(StringLibraryTest, RightToLeftTextsEndOnTheLeftAndPathsInThemReadFromLeftToRight)
{
    EXPECT_EQ(WrongMarksOfDirection(Languages()), Problems());
}

// ---- the checks themselves: each names the error that is planted, and no other -------------------------------------

struct PlantedError : StringLibraryTest {
    static constexpr LANGID kGerman = 0x0407, kHebrew = 0x040D, kJapanese = 0x0411;
    Tables tables = Languages();
};

TEST_F(PlantedError, AMissingText)
{
    tables.at(kGerman).erase(5330);
    EXPECT_EQ(MissingTexts(tables, IdsOf(English())), Problems{"language 0x0407, text 5330 is missing"});
}

TEST_F(PlantedError, AWrongPlaceholder)
{
    tables.at(kGerman).at(5324) = L"Der Abrechnungscode muss mindestens %s Ziffern lang sein.";
    EXPECT_EQ(WrongPlaceholders(tables), Problems{"language 0x0407, text 5324 has other placeholders than English"});
}

TEST_F(PlantedError, ATextLeftInEnglish)
{
    tables.at(kGerman).at(5242) = L"Sho&w Preview Before Sending Fax";
    EXPECT_EQ(TextsLeftInEnglish(tables), Problems{"language 0x0407, text 5242 is left in English"});

    tables = Languages();
    tables.at(kJapanese).at(5220) = L"Browse(&B)...";
    EXPECT_EQ(TextsLeftInEnglish(tables), Problems{"language 0x0411, text 5220 is left in English"});
}

TEST_F(PlantedError, WrongMarksOfDirection)
{
    tables.at(kHebrew).at(5257).pop_back();
    EXPECT_EQ(WrongMarksOfDirection(tables), Problems{"language 0x040d, text 5257 has wrong marks of direction"});

    tables = Languages();
    std::erase(tables.at(kHebrew).at(6101), L'\u202A');
    EXPECT_EQ(WrongMarksOfDirection(tables), Problems{"language 0x040d, text 6101 has wrong marks of direction"});

    tables = Languages();
    tables.at(kGerman).at(5209) += L'\u200F';
    EXPECT_EQ(WrongMarksOfDirection(tables), Problems{"language 0x0407, text 5209 has wrong marks of direction"});
}

} // namespace
} // namespace qx::test
