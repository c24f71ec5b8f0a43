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

class StringLibraryTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        library_.emplace();
        texts_ = TextsOfTheModule();
    }
    static void TearDownTestSuite() { library_.reset(); }

    static const std::map<LANGID, TextTable>& Languages() { return library_->Languages(); }
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

TEST_F(StringLibraryTest, UsersOfOtherLanguagesSeeEnglish)
{
    constexpr LANGID kIcelandic = 0x040F, kGeorgian = 0x0437, kHindi = 0x0439;
    for (const LANGID id : {kIcelandic, kGeorgian, kHindi}) {
        const UiLanguage user(id);
        EXPECT_EQ(LocalizedText(TextOwner(Module(), L""), {5224, L"(none)"}), English().at(5224)) << std::hex << id;
    }
}

// The code is part of the names of files in the field; it is also what the module makes of the main number.
TEST_F(StringLibraryTest, TheHelpOfALanguageIsFoundUnderItsCode)
{
    for (const Language& language : test::Languages()) {
        const wchar_t* const code = FindHelpLanguageCode(language.Id());
        ASSERT_NE(code, nullptr) << language.code;
        EXPECT_EQ(std::wstring(code), std::wstring(language.helpCode.begin(), language.helpCode.end()));
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
    for (const auto& [language, table] : Languages()) {
        for (const NamedText& text : Sources().named)
            EXPECT_TRUE(table.contains(text.id)) << Name(language, text.id) << ", named in " << text.file;
        for (const unsigned id : kCoverPageLabels)
            EXPECT_TRUE(table.contains(id)) << Name(language, id);
    }
}

// Texts without a built-in one are named by their bare number, in many ways; numbers like these are nothing else.
TEST_F(StringLibraryTest, EveryNumberThatLooksLikeATextIdIsOne)
{
    for (const unsigned number : Sources().numbers) {
        const bool looksLikeATextId = (number >= 5200 && number < 5400) || (number >= 6000 && number < 6300);
        EXPECT_TRUE(!looksLikeATextId || English().contains(number)) << number;
    }
}

TEST_F(StringLibraryTest, EveryLanguageHasTheTextsOfEnglish)
{
    for (const auto& [language, table] : Languages()) {
        for (const auto& [id, text] : English())
            EXPECT_TRUE(table.contains(id)) << Name(language, id);
    }
}

TEST_F(StringLibraryTest, NoTextIsUnused)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring&) {
        EXPECT_NE(Sources().numbers.contains(id), Contains(kNotInUseToday, id)) << Name(language, id);
    });
}

TEST_F(StringLibraryTest, ATextHasThePlaceholdersOfEnglishAndOfTheBuiltInText)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring& text) {
        EXPECT_EQ(Placeholders(text), Placeholders(English().at(id))) << Name(language, id);
    });
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

// A right-to-left mark keeps the end of a text at the end of the line; a path keeps its own direction between an
// embedding and its end.
TEST_F(StringLibraryTest, RightToLeftTextsEndOnTheLeftAndPathsInThemReadFromLeftToRight)
{
    ForEveryText([](LANGID language, unsigned id, const std::wstring& text) {
        if (!LanguageOf(language)->isRightToLeft)
            return;
        EXPECT_EQ(std::wstring_view(L".:?>\u061F").find(text.back()), std::wstring_view::npos) << Name(language, id);
        if (Placeholders(text) == "s") {
            EXPECT_NE(text.find(L"\n\u202A%s\u202C"), text.npos) << Name(language, id);
        }
    });
}

} // namespace
} // namespace qx::test
