#include "phonebook/csv/import_rules.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using Lines = std::vector<CountLine>;

class ReadingARow : public testing::Test {
protected:
    ImportRow Read(const std::wstring& line, ImportColumns columns = {.name = 0, .faxNumber = 1, .company = 2})
    {
        text_ = L"n,f,c\r\n" + line;
        EXPECT_EQ(fields_.Parse(text_), CsvStatus::Good);
        ImportRow row{{L"left", L"over", L"!"}, true};
        ReadImportRow(fields_, 1, columns, row);
        return row;
    }

private:
    std::wstring text_;
    CsvFields fields_;
};

TEST(UpToLineBreak, EndsAtTheFirstBreakBehindAnOrdinaryCharacter)
{
    EXPECT_EQ(UpToLineBreak(L"name\r\nrest"), L"name");
    EXPECT_EQ(UpToLineBreak(L"name\nrest\r"), L"name");
    EXPECT_EQ(UpToLineBreak(L"\r\nname\r\n"), L"\r\nname"); // breaks at the beginning stay
    EXPECT_EQ(UpToLineBreak(L"\r\n\r"), L"\r\n\r");
    EXPECT_EQ(UpToLineBreak(L"name"), L"name");
    EXPECT_EQ(UpToLineBreak(L""), L"");
}

TEST_F(ReadingARow, FieldsAreTakenFromTheirColumns)
{
    const ImportRow row = Read(L"Acme,555,Ann", {.name = 2, .faxNumber = 1, .company = 0});
    EXPECT_EQ(row.name, L"Ann");
    EXPECT_EQ(row.faxNumber, L"555");
    EXPECT_EQ(row.company, L"Acme");
    EXPECT_TRUE(row.hasFaxNumberField);
}

TEST_F(ReadingARow, AnEmptyCellOfQuotesIsThereAndAnAbsentOneIsNot)
{
    EXPECT_TRUE(Read(L"Ann,\"\",Acme").hasFaxNumberField);
    EXPECT_FALSE(Read(L"Ann,,Acme").hasFaxNumberField);
    EXPECT_FALSE(Read(L"Ann").hasFaxNumberField);
}

TEST_F(ReadingARow, WhatIsNotMappedIsEmpty)
{
    const ImportRow row = Read(L"Ann,555,Acme", {});
    EXPECT_EQ(row.name, L"");
    EXPECT_EQ(row.faxNumber, L"");
    EXPECT_EQ(row.company, L"");
    EXPECT_FALSE(row.hasFaxNumberField);
}

TEST_F(ReadingARow, EveryFieldIsCutToFiftyCharacters)
{
    const std::wstring digits(51, L'5');
    const ImportRow row = Read(digits + L"," + digits + L"," + digits);
    EXPECT_EQ(row.name, std::wstring(50, L'5'));
    EXPECT_EQ(row.faxNumber, std::wstring(50, L'5'));
    EXPECT_EQ(row.company, std::wstring(50, L'5'));
}

TEST_F(ReadingARow, QuotesAreRemovedBeforeCutting)
{
    std::wstring doubled, single;
    for (int i = 0; i < 50; ++i) {
        doubled += L"\"\"";
        single += L'"';
    }
    EXPECT_EQ(Read(L"\"" + doubled + L"\",5").name, single);
}

TEST_F(ReadingARow, ANameAlwaysEndsAtItsLineBreak)
{
    EXPECT_EQ(Read(L"\"Ann\r\nLee\",5").name, L"Ann");
}

TEST_F(ReadingARow, ShortFaxNumbersAndCompaniesKeepTheirLineBreaks)
{
    const ImportRow row = Read(L"Ann,\"5\n5\",\"Acme\r\nLtd\"");
    EXPECT_EQ(row.faxNumber, L"5\n5");
    EXPECT_EQ(row.company, L"Acme\r\nLtd");
}

TEST_F(ReadingARow, LongFaxNumbersAndCompaniesEndAtTheirLineBreak)
{
    const std::wstring more(60, L'5');
    const ImportRow row = Read(L"Ann,\"12\r\n" + more + L"\",\"Acme\n" + more + L"\"");
    EXPECT_EQ(row.faxNumber, L"12");
    EXPECT_EQ(row.company, L"Acme");
}

TEST_F(ReadingARow, AMillionCharactersAreCutLikeAnyOther)
{
    EXPECT_EQ(Read(std::wstring(1000000, L'x') + L",5").name, std::wstring(50, L'x'));
}

TEST(HeaderTexts, EmptyCellsHaveNone)
{
    CsvFields fields;
    ASSERT_EQ(fields.Parse(L"\"a, b\",,\"\",c"), CsvStatus::Good);
    const std::vector<std::optional<std::wstring>> expected{L"a, b", std::nullopt, L"", L"c"};
    EXPECT_EQ(HeaderTexts(fields), expected);
    EXPECT_TRUE(HeaderTexts(CsvFields()).empty());
}

TEST(Mapping, TheFirstPairOfADestinationCounts)
{
    const FieldMapping mapping[] = {{4, kMappedFaxNumber}, {7, kMappedName}, {8, kMappedName}};
    int source = 99;
    FindMappedSource(mapping, kMappedName, source);
    EXPECT_EQ(source, 7);
}

TEST(Mapping, AMissIsMinusOneButAnEmptyListLeavesTheAnswerAlone)
{
    const FieldMapping mapping[] = {{4, kMappedFaxNumber}};
    int source = 99;
    FindMappedSource(mapping, kMappedCompany, source);
    EXPECT_EQ(source, kNotMapped);
    source = 99;
    FindMappedSource({}, kMappedCompany, source);
    EXPECT_EQ(source, 99);
}

TEST(Mapping, ColumnsThatNobodyMappedAreNotMapped)
{
    const FieldMapping mapping[] = {{2, kMappedName}, {0, kMappedFaxNumber}};
    const ImportColumns columns = ColumnsOf(mapping);
    EXPECT_EQ(columns.name, 2);
    EXPECT_EQ(columns.faxNumber, 0);
    EXPECT_EQ(columns.company, kNotMapped);
    EXPECT_EQ(ColumnsOf({}).name, kNotMapped);
}

struct Counts {
    int duplicates, invalid;
    Lines lines;
    bool replacesStatusMessage = false;
};

TEST(CountMessage, EveryCombinationHasItsLines)
{
    const Counts table[] = {
        {0, 0, {}},
        {1, 0, {{6245, 1}, {6232, 1}}},
        {0, 1, {{6245, 1}, {6233, 1}}},
        {1, 1, {{6103, 2}, {6232, 1}, {6233, 1}}},
        {1, 2, {{6103, 3}, {6232, 1}, {6105, 2}}},
        {1, 9, {{6103, 10}, {6232, 1}, {6105, 9}}},
        {2, 1, {{6103, 3}, {6233, 1}, {6104, 2}}},
        {9, 1, {{6103, 10}, {6233, 1}, {6104, 9}}},
        {0, 2, {{6103, 2}, {6105, 2}}},
        {2, 0, {{6103, 2}, {6104, 2}}},
        {3, 3, {{6103, 6}, {6105, 3}, {6104, 3}}, true},
        {4, 9, {{6103, 13}, {6105, 9}, {6104, 4}}, true},
    };
    for (const Counts& row : table) {
        const CountMessage message = CountMessageFor(row.duplicates, row.invalid);
        EXPECT_EQ(message.lines, row.lines) << row.duplicates << ", " << row.invalid;
        EXPECT_EQ(message.replacesStatusMessage, row.replacesStatusMessage) << row.duplicates << ", " << row.invalid;
    }
}

TEST(CountMessage, TwoDuplicatesOrTwoInvalidAmongManyAreNotTold)
{
    for (const auto& [duplicates, invalid] : {std::pair(2, 2), {2, 3}, {2, 99}, {3, 2}, {99, 2}}) {
        const CountMessage message = CountMessageFor(duplicates, invalid);
        EXPECT_TRUE(message.lines.empty()) << duplicates << ", " << invalid;
        EXPECT_FALSE(message.replacesStatusMessage) << duplicates << ", " << invalid;
    }
}

} // namespace
} // namespace qx
