#include "phonebook/book/sort_order.h"

#include "base/text.h"
#include "support/phone_book.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace qx {
namespace {

using namespace test;
using Names = std::vector<std::wstring>;

// The stated comparison of two items, literally.
int Compare(const PhoneBookItem& a, const PhoneBookItem& b)
{
    const PhoneBookEntry* const left = AsEntry(&a);
    const PhoneBookEntry* const right = AsEntry(&b);
    if (left != nullptr && right != nullptr)
        return IsGreaterThan(*left, *right) ? 1 : IsLessThan(*left, *right) ? -1 : 0;
    return CompareUserText(a.GetName(), b.GetName()) - CSTR_EQUAL;
}

TEST(SortOrder, GroupsAndEntriesInterleaveByName)
{
    TestBook book;
    book.AddEntry(L"carol", L"", L"", 1);
    book.AddGroup(L"bob", {1}, 2);
    book.AddEntry(L"Alice", L"", L"", 3);
    book->Sort(TRUE);
    EXPECT_EQ(book.Names(), (Names{L"Alice", L"bob", L"carol"}));
    book->Sort(FALSE);
    EXPECT_EQ(book.Names(), (Names{L"carol", L"bob", L"Alice"}));
}

TEST(SortOrder, EntriesOfOneNameAreOrderedByNumberThenCompanyAlsoAroundAGroupOfThatName)
{
    TestBook book;
    book.AddEntry(L"ANN", L"2", L"", 1);
    book.AddGroup(L"Ann", {1}, 2);
    book.AddEntry(L"ann", L"1", L"b", 3);
    book.AddEntry(L"Ann", L"1", L"A", 4);
    book->Sort(TRUE);
    EXPECT_EQ(book->GetAt(1)->GetId(), 4u);
    EXPECT_EQ(book->GetAt(2)->GetId(), 3u);
    EXPECT_EQ(book->GetAt(3)->GetId(), 1u);
}

TEST(SortOrder, AnEmptyBookCanBeSorted)
{
    TestBook book;
    EXPECT_EQ(book->Sort(TRUE), TRUE);
    EXPECT_EQ(book->GetCount(), 0u);
}

// Texts with much in common, of the characters given, with some texts missing.
void FillAtRandom(TestBook& book, std::wstring_view characters, unsigned seed, DWORD count, bool unset)
{
    std::mt19937 random(seed);
    const auto text = [&]() -> std::wstring {
        std::wstring made;
        for (auto units = random() % 4; units > 0; --units)
            made += characters[random() % characters.size()];
        return made;
    };
    for (DWORD i = 0; i < count; ++i) {
        const std::wstring fields[] = {text(), text(), text()};
        const auto field = [&](int n) { return unset && random() % 4 == 0 ? nullptr : fields[n].c_str(); };
        if (random() % 4 == 0)
            book.AddGroup(fields[0].c_str(), {1}, i);
        else
            book.AddEntry(field(0), field(1), field(2), i);
    }
}

struct Alphabet {
    const char* name;
    const wchar_t* characters;
};
constexpr Alphabet kAlphabets[] = {
    {"ASCII", L"aAbB zZ-'.019"},
    {"Latin", L"aAäÄáeéßSsœ-"},
    {"many scripts", L"aZאבعяя漢字かなカ한"},
    {"marks that comparisons pass over", L"aA\x0301\x00AD\x0640\x05B8\x202B-"},
    {"Greek and presentation forms", L"aαάΑ\xFB01\xFF21\x2160"},
};

TEST(SortOrder, NoItemComesBeforeOneThatTheComparisonPutsFirst)
{
    for (const auto& [name, characters] : kAlphabets) {
        for (const bool unset : {false, true}) {
            SCOPED_TRACE(name);
            TestBook book;
            FillAtRandom(book, characters, 42, 150, unset);
            for (const bool ascending : {true, false}) {
                book->Sort(ascending);
                const auto items = book->Items();
                for (std::size_t i = 0; i < items.size(); ++i) {
                    for (std::size_t j = i + 1; j < items.size(); ++j) {
                        const int order = Compare(*items[i], *items[j]);
                        ASSERT_LE(ascending ? order : -order, 0) << i << " and " << j;
                    }
                }
            }
            EXPECT_EQ(book->GetCount(), 150u);
        }
    }
}

} // namespace
} // namespace qx
