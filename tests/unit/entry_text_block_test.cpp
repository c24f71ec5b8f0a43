#include "phonebook/recent/entry_text_block.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace std::string_view_literals;

void ExpectTexts(std::wstring_view block, const wchar_t* name, const wchar_t* number, const wchar_t* company)
{
    EXPECT_EQ(ReadEntryBlock(block), (Recipient{name, number, company}));
}

TEST(EntryTextBlock, HoldsThreeTerminatedTexts)
{
    ExpectTexts(L"Ann\0"
                L"555\0Acme\0\0"sv,
                L"Ann", L"555", L"Acme");
    EXPECT_EQ(MakeEntryBlock({L"Ann", L"555", L"Acme"}), L"Ann\0"
                                                         L"555\0Acme\0"sv);
}

TEST(EntryTextBlock, TextsAndTerminatorsThatAreMissingReadAsEmpty)
{
    ExpectTexts(L""sv, L"", L"", L"");
    ExpectTexts(L"Ann"sv, L"Ann", L"", L"");
    ExpectTexts(L"Ann\0"sv, L"Ann", L"", L"");
    ExpectTexts(L"Ann\0"
                L"555"sv,
                L"Ann", L"555", L"");
    ExpectTexts(L"\0\0\0"sv, L"", L"", L"");
    ExpectTexts(L"Ann\0\0Acme"sv, L"Ann", L"", L"Acme");
    ExpectTexts(L"Ann\0"
                L"555\0Acme\0more\0"sv,
                L"Ann", L"555", L"Acme");
}

} // namespace
} // namespace qx
