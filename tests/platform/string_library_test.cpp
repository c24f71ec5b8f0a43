#include "support/source_texts.h"
#include "support/string_library.h"
#include "support/text_rules.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iomanip>
#include <optional>
#include <sstream>

namespace qx::test {
namespace {

constexpr LANGID kEnglish = 0x0409;
constexpr LANGID kGerman = 0x0407;
constexpr LANGID kHebrew = 0x040D;
constexpr LANGID kJapanese = 0x0411;

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

TEST_F(StringLibraryTest, SpeaksEnglishGermanHebrewAndJapanese)
{
    constexpr LANGID kLanguages[] = {kEnglish, kGerman, kHebrew, kJapanese};
    for (const LANGID language : kLanguages)
        EXPECT_TRUE(Languages().contains(language)) << std::hex << language;
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
TEST_F(StringLibraryTest, HebrewTextsEndOnTheLeftAndPathsInThemReadFromLeftToRight)
{
    for (const auto& [id, text] : Languages().at(kHebrew)) {
        EXPECT_EQ(std::wstring_view(L".:?>").find(text.back()), std::wstring_view::npos) << Name(kHebrew, id);
        if (Placeholders(text) == "s") {
            EXPECT_NE(text.find(L"\n\u202A%s\u202C"), text.npos) << Name(kHebrew, id);
        }
    }
}

} // namespace
} // namespace qx::test
