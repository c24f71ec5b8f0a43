#include "text/localized_text.h"

#include "base/unique.h"
#include "support/built.h"
#include "support/failing_calls.h"
#include "support/patched_function.h"
#include "support/temporary_folder.h"
#include "support/text_library.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace qx {
namespace {

using test::BlockWithText;
using test::TextBlock;

constexpr LANGID kGerman = 0x0407;
constexpr LANGID kFrench = 0x040C;
constexpr LANGID kAmerican = 0x0409;

class TextLookup : public testing::Test {
protected:
    // A session that has loaded a library with these texts.
    TextOwner OwnerOf(const std::vector<TextBlock>& blocks)
    {
        library_.Reset();
        const std::wstring path = (folder_ / L"texts.dll").wstring();
        test::WriteTextLibrary(path, test::BuiltFolder() / L"QXTEXT64.DLL", blocks);
        library_.Reset(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES));
        EXPECT_TRUE(library_);
        return TextOwner(library_.Get(), L"");
    }

    const LANGID user_ = GetUserDefaultUILanguage();

private:
    test::TemporaryFolder folder_;
    UniqueModule library_;
};

std::wstring Lookup(const TextOwner& owner, unsigned id)
{
    wchar_t text[kTextUnits] = L"untouched";
    return LoadLocalizedString(owner, id, text) ? text : L"(none)";
}

LANGID Sibling(LANGID language)
{
    return static_cast<LANGID>(MAKELANGID(PRIMARYLANGID(language), SUBLANGID(language) == 1 ? 2 : 1));
}

TEST_F(TextLookup, TheLibraryServesTheUsersLanguage)
{
    const TextOwner owner = OwnerOf({BlockWithText(user_, 5223, L"&Send"), BlockWithText(kFrench, 5223, L"&Envoyer")});
    EXPECT_EQ(Lookup(owner, 5223), L"&Send");
    EXPECT_EQ(CurrentTextLanguage(), user_);
}

TEST_F(TextLookup, TheBuiltInTextIsShownAsWrittenDashIncluded)
{
    const TextOwner noLibrary(nullptr, L"");
    EXPECT_EQ(LocalizedText(noLibrary, {5223, L"-&Send"}), L"-&Send");
    const TextOwner owner = OwnerOf({BlockWithText(user_, 5223, L"&Send")});
    EXPECT_EQ(LocalizedText(owner, {5224, L"Cancel"}), L"Cancel"); // same block, entry of length 0
    EXPECT_EQ(LocalizedText(owner, {6000, L"-Other"}), L"-Other"); // no such block
}

// With the user interface in Austrian German this is a library that holds only German.
TEST_F(TextLookup, ALibraryOfASiblingLanguageServesThroughThePrimaryLanguage)
{
    const TextOwner owner =
        OwnerOf({BlockWithText(kFrench, 5223, L"&Envoyer"), BlockWithText(Sibling(user_), 5223, L"sibling")});
    EXPECT_EQ(Lookup(owner, 5223), L"sibling");
    EXPECT_EQ(CurrentTextLanguage(), Sibling(user_));
    const TextOwner next(nullptr, L""); // the next dialog starts with the user's language again
    EXPECT_EQ(CurrentTextLanguage(), user_);
}

TEST_F(TextLookup, EnglishRemainsWhenNoLanguageMatches)
{
    const LANGID other = PRIMARYLANGID(user_) == LANG_GERMAN ? kFrench : kGerman;
    const TextOwner owner = OwnerOf({BlockWithText(other, 5223, L"other")});
    EXPECT_EQ(Lookup(owner, 5223), L"(none)");
    EXPECT_EQ(CurrentTextLanguage(), kAmerican);
}

// Two sessions on two threads of one process.
TEST_F(TextLookup, ALookupOnAnotherThreadDoesNotDisturb)
{
    std::vector<TextBlock> blocks{BlockWithText(Sibling(user_), 5223, L"sibling")};
    for (WORD other = 1; other <= 30; ++other) // come before it: the search takes its time
        blocks.push_back(BlockWithText(static_cast<LANGID>(MAKELANGID(LANG_ARABIC, other)), 5223, L"other"));
    const TextOwner owner = OwnerOf(blocks);
    constexpr int kLookups = 2000;
    const auto countMisses = [&owner](int& misses) {
        for (int i = 0; i < kLookups; ++i) {
            const TextOwner dialog(owner.hStringDll, L""); // starts with the user's language
            misses += Lookup(dialog, 5223) == L"sibling" ? 0 : 1;
        }
    };
    int here = 0, there = 0;
    std::thread other([&] { countMisses(there); });
    countMisses(here);
    other.join();
    EXPECT_EQ(here + there, 0);
}

// Systems differ in what an enumeration answers that a callback has ended, and thus in whether the one around it ends.
TEST_F(TextLookup, TheSearchEndsAtTheFirstMatchWhateverTheEnumerationAnswers)
{
    static test::PatchedFunction* patch = nullptr;
    test::PatchedFunction enumerate(
        L"kernel32.dll", "EnumResourceLanguagesW",
        +[](HMODULE module, LPCWSTR type, LPCWSTR name, ENUMRESLANGPROCW tell, LONG_PTR context) -> BOOL {
            patch->WithOriginal([&] { return EnumResourceLanguagesW(module, type, name, tell, context); });
            return TRUE;
        });
    patch = &enumerate;
    // The match is in the first block of the two.
    const TextOwner owner =
        OwnerOf({BlockWithText(Sibling(user_), 16, L"sibling"), BlockWithText(kFrench, 5223, L"&Envoyer")});
    Lookup(owner, 5223);
    EXPECT_EQ(CurrentTextLanguage(), Sibling(user_));
}

TEST_F(TextLookup, AMissingBlockIsNotLookedForInOtherLanguages)
{
    const TextOwner owner = OwnerOf({BlockWithText(Sibling(user_), 5223, L"sibling")});
    EXPECT_EQ(Lookup(owner, 16), L"(none)");
    EXPECT_EQ(CurrentTextLanguage(), user_);
}

TEST_F(TextLookup, ATextThatTheSystemDoesNotHandOutIsNone)
{
    const TextOwner owner = OwnerOf({BlockWithText(user_, 5223, L"&Send")});
    const auto lookUp = [&](const std::string& what) {
        const std::wstring text = Lookup(owner, 5223);
        EXPECT_TRUE(text == L"&Send" || text == L"(none)") << what;
    };
    test::WhileEachFails<decltype(FindResourceExW)>("FindResourceExW", nullptr, lookUp);
    test::WhileEachFails<decltype(LoadResource)>("LoadResource", nullptr, lookUp);
    test::WhileEachFails<decltype(LockResource)>("LockResource", nullptr, lookUp);
    test::WhileEachFails<decltype(SizeofResource)>("SizeofResource", 0u, lookUp);
}

// Resources of other kinds may have names, and one kind of texts has had one.
TEST_F(TextLookup, TextsOfANamedKindServeAsWell)
{
    static std::vector<std::wstring> searched;
    searched.clear();
    const test::RedirectedImport<decltype(EnumResourceTypesW)> types(
        "EnumResourceTypesW", +[](HMODULE module, ENUMRESTYPEPROCW tell, LONG_PTR context) -> BOOL {
            wchar_t other[] = L"OTHER", texts[] = L"RT_STRING";
            return tell(module, other, context) && tell(module, texts, context);
        });
    const test::RedirectedImport<decltype(EnumResourceNamesW)> names(
        "EnumResourceNamesW", +[](HMODULE module, LPCWSTR type, ENUMRESNAMEPROCW tell, LONG_PTR context) -> BOOL {
            searched.emplace_back(type);
            return tell(module, RT_STRING, MAKEINTRESOURCEW(5223 / 16 + 1), context);
        });
    const TextOwner owner = OwnerOf({BlockWithText(Sibling(user_), 5223, L"sibling")});
    EXPECT_EQ(Lookup(owner, 5223), L"sibling");
    EXPECT_EQ(searched, std::vector<std::wstring>{L"RT_STRING"});
}

TEST_F(TextLookup, TextsAreCutAt255Characters)
{
    const TextOwner owner = OwnerOf({BlockWithText(user_, 5223, std::wstring(300, L'x'))});
    EXPECT_EQ(Lookup(owner, 5223), std::wstring(255, L'x'));
    const std::wstring longDefault(300, L'y');
    EXPECT_EQ(LocalizedText(owner, {7000, longDefault.c_str()}), std::wstring(255, L'y'));
}

TEST_F(TextLookup, ABlockThatEndsTooEarlyIsNeverReadBeyondItsEnd)
{
    const WORD block = 5223 / 16 + 1;
    const std::wstring before(5223 % 16, L'\0');
    const struct {
        const char* name;
        std::wstring content;
    } cases[] = {
        {"one unit", L"\x0001"},
        {"ends before the entry", before},
        {"an announced length with nothing behind it", before + L'\xFFFF'},
        {"an earlier entry swallows the rest", L"\xFFF0text"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Lookup(OwnerOf({{user_, block, c.content}}), 5223), L"(none)") << c.name;
    EXPECT_EQ(Lookup(OwnerOf({{user_, block, before + L'\x0020' + L"short"}}), 5223), L"short");
}

TEST_F(TextLookup, APreparedTextIsNeverLookedUp)
{
    const TextOwner owner = OwnerOf({BlockWithText(user_, 15, L"trap"), BlockWithText(user_, 65535, L"trap")});
    EXPECT_EQ(LocalizedText(owner, {kPreparedText, L"prepared"}), L"prepared");
}

TEST(MessageBoxLayout, FollowsTheScriptOfTheTextAndNotTheLanguageOfTheUser)
{
    constexpr UINT kRightToLeft = MB_RTLREADING | MB_RIGHT;
    EXPECT_EQ(ReadingOrder(L"The file cannot be found."), 0u);
    EXPECT_EQ(ReadingOrder(L"\u05D4\u05E7\u05D5\u05D1\u05E5 C:\\a.csv"), kRightToLeft);
    EXPECT_EQ(ReadingOrder(L"3 \u0645\u0644\u0641"), kRightToLeft); // a number has no direction of its own
    EXPECT_EQ(ReadingOrder(L"-C:\\\u05D4"), 0u);
    EXPECT_EQ(ReadingOrder(L"12 ..."), 0u);
    EXPECT_EQ(ReadingOrder(L""), 0u);
}

} // namespace
} // namespace qx
