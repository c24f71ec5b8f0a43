#include "phonebook/csv/csv_import.h"

#include "phonebook/book/duplicate_index.h"
#include "support/failing_calls.h"
#include "support/phone_book.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <ostream>
#include <random>

namespace qx {

std::ostream& operator<<(std::ostream& out, const ImportOutcome& outcome)
{
    return out << "status " << static_cast<int>(outcome.status) << ", " << outcome.duplicates << " duplicates, "
               << outcome.invalidFaxNumbers << " invalid";
}

namespace {

using namespace test;
using Names = std::vector<std::wstring>;

constexpr ImportColumns kInOrder{.name = 0, .faxNumber = 1, .company = 2};

ImportOutcome Outcome(ImportExportStatus status, int duplicates = 0, int invalidFaxNumbers = 0)
{
    return {status, duplicates, invalidFaxNumbers};
}

ImportOutcome Import(PhoneBook& book, const std::wstring& rows, const ImportColumns& columns = kInOrder)
{
    const std::wstring text = L"n,f,c\r\n" + rows;
    CsvFields fields;
    EXPECT_EQ(fields.Parse(text), CsvStatus::Good);
    return ImportRows(fields, columns, book);
}

// What a book holds, texts that were never set apart from empty ones.
struct Held {
    bool isGroup;
    std::vector<std::optional<std::wstring>> texts;
    DWORD id;
    bool operator==(const Held&) const = default;
};

std::optional<std::wstring> TextOf(const wchar_t* text)
{
    return text != nullptr ? std::optional<std::wstring>(text) : std::nullopt;
}

std::vector<Held> ItemsOf(const PhoneBook& book)
{
    std::vector<Held> items;
    for (const PhoneBookItem* const item : book.Items()) {
        if (const PhoneBookEntry* const entry = AsEntry(item))
            items.push_back(
                {false, {TextOf(entry->Name()), TextOf(entry->FaxNumber()), TextOf(entry->Company())}, entry->GetId()});
        else
            items.push_back({true, {item->GetName()}, item->GetId()});
    }
    return items;
}

// ---- rows ----------------------------------------------------------------------------------------------------------

TEST(CsvImport, RowsBelowTheHeaderBecomeEntries)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann,555,Acme\r\nBob,556"), Outcome(ImportExportStatus::Imported));
    EXPECT_EQ(ItemsOf(*book),
              (std::vector<Held>{{false, {L"Ann", L"555", L"Acme"}, 0}, {false, {L"Bob", L"556", L""}, 1}}));
}

TEST(CsvImport, ACommaInQuotesStaysInItsFieldAndDoubledQuotesAreOne)
{
    TestBook book;
    Import(*book, L"\"Smith, John\",555,\"The \"\"Best\"\" Ltd\"");
    EXPECT_EQ(ItemsOf(*book), (std::vector<Held>{{false, {L"Smith, John", L"555", L"The \"Best\" Ltd"}, 0}}));
}

TEST(CsvImport, AFaxNumberOf51DigitsIsImportedWithItsFirst50)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann," + std::wstring(51, L'5')), Outcome(ImportExportStatus::Imported));
    EXPECT_EQ(ItemsOf(*book)[0].texts[1], std::wstring(50, L'5'));
}

TEST(CsvImport, AFaxNumberWithALetterIsCountedAndNotImported)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann,555x\r\n"), Outcome(ImportExportStatus::RowRefused, 0, 1));
    EXPECT_EQ(book->GetCount(), 0u);
}

TEST(CsvImport, WhatMakesAFaxNumberInvalidBehindTheCutDoesNotCount)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann," + std::wstring(50, L'5') + L"x"), Outcome(ImportExportStatus::Imported));
}

TEST(CsvImport, ALineBreakInAShortFaxNumberMakesItInvalid)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann,\"555\n\""), Outcome(ImportExportStatus::RowRefused, 0, 1));
}

TEST(CsvImport, AnAbsentFaxNumberCountsOnceAndAnEmptyOneNotAtAll)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann"), Outcome(ImportExportStatus::RowRefused, 0, 1));
    EXPECT_EQ(Import(*book, L"Ann,,Acme"), Outcome(ImportExportStatus::RowRefused, 0, 1));
    EXPECT_EQ(Import(*book, L"Ann,\"\",Acme"), Outcome(ImportExportStatus::Cancelled));
}

TEST(CsvImport, ARowWithoutANameIsSkippedInSilenceButItsInvalidFaxNumberCounts)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L",555\r\n\"\",556"), Outcome(ImportExportStatus::Cancelled));
    EXPECT_EQ(Import(*book, L",555x"), Outcome(ImportExportStatus::RowRefused, 0, 1));
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_EQ(book->NextId(), 0u); // no id was drawn
}

TEST(CsvImport, AFileWithOnlyAHeaderEndsAsIfCancelled)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L""), Outcome(ImportExportStatus::Cancelled));
}

TEST(CsvImport, TheStatusIsThatOfTheLastRowThatCounted)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann,x\r\nBob,556"), Outcome(ImportExportStatus::Imported, 0, 1));
    EXPECT_EQ(Import(*book, L"Cara,557\r\nBob,556"), Outcome(ImportExportStatus::RowRefused, 1, 0));
    EXPECT_EQ(Import(*book, L"Dan,558\r\n,559"), Outcome(ImportExportStatus::Imported));
}

TEST(CsvImport, WithoutANameColumnEveryRowIsSkippedAndWithoutAFaxColumnEveryRowIsInvalid)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann,555\r\nBob,556", {.faxNumber = 1}), Outcome(ImportExportStatus::Cancelled));
    EXPECT_EQ(Import(*book, L"Ann,555\r\nBob,556", {.name = 0}), Outcome(ImportExportStatus::RowRefused, 0, 2));
    EXPECT_EQ(book->GetCount(), 0u);
}

// ---- duplicates ----------------------------------------------------------------------------------------------------

TEST(CsvImport, OfTwoRowsThatAreTheSameTheFirstIsImportedAndTheSecondCounted)
{
    TestBook book;
    EXPECT_EQ(Import(*book, L"Ann,555,Acme\r\nANN,555,Other"), Outcome(ImportExportStatus::RowRefused, 1, 0));
    EXPECT_EQ(book.Names(), Names{L"Ann"});
}

TEST(CsvImport, ADuplicateCountsOnceHoweverManyEntriesItEquals)
{
    TestBook book;
    for (DWORD id = 10; id < 13; ++id)
        book.AddEntry(L"Ann", L"555", L"", id);
    EXPECT_EQ(Import(*book, L"Ann,555"), Outcome(ImportExportStatus::RowRefused, 1, 0));
}

TEST(CsvImport, AnEntryWithoutFaxNumberIsTheSameAsAnyOfItsName)
{
    TestBook book;
    book.AddEntry(L"Ann", nullptr, nullptr, 10);
    EXPECT_EQ(Import(*book, L"ann,555"), Outcome(ImportExportStatus::RowRefused, 1, 0));
}

TEST(CsvImport, AnEntryWithTheVeryIdThatARowDrawsIsNotItsDuplicate)
{
    TestBook book;
    book.AddEntry(L"Ann", L"555", L"", 0);
    EXPECT_EQ(Import(*book, L"Ann,555"), Outcome(ImportExportStatus::Imported));
    EXPECT_EQ(Import(*book, L"Ann,555"), Outcome(ImportExportStatus::RowRefused, 1, 0));
}

TEST(CsvImport, DuplicatesAreFoundAlsoWhereNoTextHasAKey)
{
    FailingCalls<decltype(LCMapStringW), struct Keys> keys(nullptr, "LCMapStringW", 0);
    keys.FailFrom(1);
    TestBook book;
    book.AddEntry(L"Ann", L"555", L"", 10);
    book.AddEntry(L"Bob", nullptr, nullptr, 11);
    EXPECT_EQ(Import(*book, L"ANN,555\r\nbob,1\r\nAnn,556\r\nCara,555\r\nCARA,555"),
              Outcome(ImportExportStatus::RowRefused, 3, 0));
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Bob", L"Ann", L"Cara"}));
}

TEST(CsvImport, AGroupIsNobodysDuplicate)
{
    TestBook book;
    book.AddGroup(L"Ann", {1}, 10);
    EXPECT_EQ(Import(*book, L"Ann,555"), Outcome(ImportExportStatus::Imported));
}

TEST(CsvImport, AnInvalidRowThatTheBookHoldsCountsAsBoth)
{
    TestBook book;
    book.AddEntry(L"Ann", L"555x", L"", 10);
    EXPECT_EQ(Import(*book, L"Ann,555x"), Outcome(ImportExportStatus::RowRefused, 1, 1));
}

TEST(CsvImport, RefusedRowsLeaveGapsInTheIds)
{
    TestBook book;
    Import(*book, L"Ann,555\r\nAnn,555\r\nBob,x\r\nCara,557");
    ASSERT_EQ(book->GetCount(), 2u);
    EXPECT_EQ(book->GetAt(0)->GetId(), 0u);
    EXPECT_EQ(book->GetAt(1)->GetId(), 3u);
}

// ---- limits --------------------------------------------------------------------------------------------------------

void FillTo(TestBook& book, DWORD count)
{
    for (DWORD i = book->GetCount(); i < count; ++i)
        book.AddEntry((L"Held " + std::to_wstring(i)).c_str(), L"1", L"", book->NextId());
}

TEST(CsvImport, With9999EntriesAFileOfThreeNewRowsAddsOne)
{
    TestBook book;
    FillTo(book, 9999);
    EXPECT_EQ(Import(*book, L"Ann,555\r\nBob,556\r\nCara,557"), Outcome(ImportExportStatus::BookFull));
    EXPECT_EQ(book->GetCount(), 10000u);
    EXPECT_STREQ(book->GetAt(9999)->GetName(), L"Ann");
}

TEST(CsvImport, RowsBehindAFullBookAreStillCounted)
{
    TestBook book;
    FillTo(book, 10000);
    EXPECT_EQ(Import(*book, L"Ann,555\r\nBob,x\r\nheld 3,1"), Outcome(ImportExportStatus::RowRefused, 1, 1));
    EXPECT_EQ(book->GetCount(), 10000u);
}

TEST(CsvImport, GroupsCountForTheLimit)
{
    TestBook book;
    FillTo(book, 9999);
    book.AddGroup(L"Group", {1}, 20000);
    EXPECT_EQ(Import(*book, L"Ann,555"), Outcome(ImportExportStatus::BookFull));
}

TEST(CsvImport, Of200000RowsTheFirst10000AreImported)
{
    std::wstring rows;
    for (int row = 0; row < 200000; ++row)
        rows += L"Person " + std::to_wstring(row) + L"," + std::to_wstring(5550000 + row) + L",Example Ltd\r\n";
    TestBook book;
    EXPECT_EQ(Import(*book, rows), Outcome(ImportExportStatus::BookFull));
    EXPECT_EQ(book->GetCount(), 10000u);
    EXPECT_STREQ(book->GetAt(9999)->GetName(), L"Person 9999");
}

// Each would take minutes if every row were compared with every entry.
TEST(CsvImport, ManyRowsThatShareTheirFaxNumberOrHaveNamesWithoutAKeyAreNoTrouble)
{
    const std::wstring kinds[] = {L"Ann", L"Soft\u00adhyphen"};
    for (const std::wstring& kind : kinds) {
        std::wstring rows;
        for (int row = 0; row < 50000; ++row) {
            const std::wstring number = std::to_wstring(row);
            rows += kind + (kind == L"Ann" ? number + L",555,\r\n" : L"," + number + L",\r\n");
        }
        TestBook book;
        EXPECT_EQ(Import(*book, rows), Outcome(ImportExportStatus::BookFull));
        EXPECT_EQ(book->GetCount(), 10000u);
    }
}

// ---- the index against the rule taken literally --------------------------------------------------------------------

ImportOutcome ImportLiterally(PhoneBook& book, const std::wstring& rows)
{
    const std::wstring text = L"n,f,c\r\n" + rows;
    CsvFields fields;
    EXPECT_EQ(fields.Parse(text), CsvStatus::Good);
    ImportOutcome outcome;
    for (std::size_t line = 1; line < fields.Rows(); ++line) {
        ImportRow row;
        ReadImportRow(fields, line, kInOrder, row);
        bool invalid = false;
        if (!row.hasFaxNumberField || (!row.faxNumber.empty() && !IsValidFaxNumber(row.faxNumber))) {
            invalid = true;
            ++outcome.invalidFaxNumbers;
            outcome.status = ImportExportStatus::RowRefused;
        }
        if (row.name.empty() || row.faxNumber.empty())
            continue;
        PhoneBookEntry* const entry = book.Store().NewEntry();
        entry->SetId(book.NextId());
        entry->SetTexts(row);
        bool duplicate = false;
        for (DWORD i = 0; i < book.GetCount() && !duplicate; ++i) {
            const PhoneBookEntry* const held = AsEntry(book.GetAt(i));
            duplicate = held != nullptr && held->GetId() != entry->GetId() && IsSameEntry(*held, *entry);
        }
        if (duplicate) {
            ++outcome.duplicates;
            outcome.status = ImportExportStatus::RowRefused;
        } else if (invalid) {
            outcome.status = ImportExportStatus::RowRefused;
        } else if (book.GetCount() < 10000) {
            book.Add(entry);
            outcome.status = ImportExportStatus::Imported;
        } else {
            outcome.status = ImportExportStatus::BookFull;
        }
    }
    return outcome;
}

class RandomTexts {
public:
    explicit RandomTexts(unsigned seed) : random_(seed) {}

    unsigned Number(unsigned below) { return random_() % below; }

    // Pieces that differ in case, are equal in other spellings, or are passed over by a comparison.
    std::wstring Name()
    {
        static const wchar_t* const pieces[] = {L"a",
                                                L"A",
                                                L"b",
                                                L"\u00e9",
                                                L"e\u0301",
                                                L"\u00c9",
                                                L"E\u0301",
                                                L"\u00df",
                                                L"ss",
                                                L"\u00e6",
                                                L"ae",
                                                L"-",
                                                L"'",
                                                L".",
                                                L" ",
                                                L"\u00ad",
                                                L"\u200b",
                                                L"\u03a3",
                                                L"\u03c3",
                                                L"\u03c2",
                                                L"\u0385",
                                                L"\u00a8\u0301",
                                                L"\u05d0",
                                                L"\ufb2e",
                                                L"\u05d0\u05b7",
                                                L"\u0627",
                                                L"\u0640",
                                                L"\u064b",
                                                L"\ufe71",
                                                L"\u30ab",
                                                L"\uff76",
                                                L"\u3042",
                                                L"\u4e00",
                                                L"\uac00",
                                                L"\u1100\u1161",
                                                L"\ufb01",
                                                L"fi",
                                                L"\t",
                                                L"1",
                                                L"\uff11",
                                                L"\xd83d\xde00"};
        std::wstring name;
        for (unsigned left = Number(4); left > 0; --left)
            name += pieces[Number(few_ ? 6 : static_cast<unsigned>(std::size(pieces)))];
        few_ = Number(3) == 0;
        return name;
    }

    std::wstring FaxNumber()
    {
        static const wchar_t* const numbers[] = {L"1",   L"1", L"2",  L"1-2",    L"12",
                                                 L"(1)", L"",  L"1x", L"\u0661", L"\uff11"};
        return numbers[Number(std::size(numbers))];
    }

private:
    std::mt19937 random_;
    bool few_ = false;
};

void FillAtRandom(TestBook& book, unsigned seed)
{
    RandomTexts texts(seed);
    for (unsigned left = texts.Number(12); left > 0; --left) {
        const std::wstring name = texts.Name();
        const std::wstring faxNumber = texts.FaxNumber();
        if (texts.Number(6) == 0)
            book.AddGroup(name.c_str(), {1}, texts.Number(40));
        else
            book.AddEntry(texts.Number(8) == 0 ? nullptr : name.c_str(),
                          texts.Number(6) == 0 ? nullptr : faxNumber.c_str(), nullptr, texts.Number(40));
    }
}

std::wstring RowsAtRandom(unsigned seed)
{
    RandomTexts texts(seed);
    std::wstring rows;
    for (unsigned left = 1 + texts.Number(20); left > 0; --left) {
        rows += texts.Number(5) == 0 ? texts.Name() : L"\"" + texts.Name() + L"\"";
        rows += L",";
        rows += texts.Number(5) == 0 ? texts.FaxNumber() : L"\"" + texts.FaxNumber() + L"\"";
        rows += L",Acme\r\n";
    }
    return rows;
}

TEST(CsvImport, TheIndexGivesWhatComparingWithEveryEntryGives)
{
    for (unsigned seed = 1; seed <= 6000; ++seed) {
        TestBook book, literalBook;
        FillAtRandom(book, seed);
        FillAtRandom(literalBook, seed);
        const std::wstring rows = RowsAtRandom(seed + 100000);
        ASSERT_EQ(Import(*book, rows), ImportLiterally(*literalBook, rows)) << seed;
        ASSERT_EQ(ItemsOf(*book), ItemsOf(*literalBook)) << seed;
        ASSERT_EQ(book->NextId(), literalBook->NextId()) << seed;
    }
}

// ---- export --------------------------------------------------------------------------------------------------------

class CsvExport : public testing::Test {
protected:
    void Export(const PhoneBook& book)
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(ExportRows(book, writer));
        ASSERT_TRUE(writer.Write());
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / L"book.csv";
};

TEST_F(CsvExport, OnlyEntriesAreWrittenBelowTheHeader)
{
    TestBook book;
    book.AddEntry(L"Ann", L"555", L"Acme", 1);
    book.AddGroup(L"Everyone", {1}, 2);
    book.AddEntry(L"Bob", L"556", nullptr, 3);
    Export(*book);
    EXPECT_EQ(ReadBytes(file_), kUtf16Mark + Utf16Bytes(L"\"Name\",\"Fax Number\",\"Company Name\"\r\n"
                                                        L"\"Ann\",\"555\",\"Acme\"\r\n"
                                                        L"\"Bob\",\"556\",\"\"\r\n"));
}

TEST_F(CsvExport, AnEmptyBookIsAHeader)
{
    Export(*TestBook());
    EXPECT_EQ(ReadBytes(file_), kUtf16Mark + Utf16Bytes(L"\"Name\",\"Fax Number\",\"Company Name\"\r\n"));
}

TEST_F(CsvExport, LongTextsAreCutTo50Characters)
{
    TestBook book;
    book.AddEntry(std::wstring(60, L'n').c_str(), std::wstring(60, L'5').c_str(), std::wstring(60, L'c').c_str(), 1);
    Export(*book);
    const std::wstring row = L"\"" + std::wstring(50, L'n') + L"\",\"" + std::wstring(50, L'5') + L"\",\"" +
                             std::wstring(50, L'c') + L"\"\r\n";
    EXPECT_TRUE(ReadBytes(file_).ends_with(Utf16Bytes(L"\"\r\n" + row)));
}

TEST_F(CsvExport, WhatIsExportedComesBackIntoAnEmptyBook)
{
    std::mt19937 random(3);
    const auto text = [&random](std::wstring_view units, std::size_t atLeast) {
        std::wstring made(atLeast + random() % (51 - atLeast), L'?');
        for (wchar_t& unit : made)
            unit = units[random() % units.size()];
        return made;
    };
    for (int round = 0; round < 60; ++round) {
        TestBook book, empty;
        for (DWORD id = 0; id < 60; ++id) {
            // The number keeps the entries apart. Names end at line breaks, so those are left to the companies.
            std::wstring name = std::to_wstring(id) + text(L"aB\"\", \u00e9\u05d0\u5c71\xd83d'-", 1);
            name.resize(std::min<std::size_t>(name.size(), 50));
            book.AddEntry(name.c_str(), text(L"0123456789,-*#()[]", 1).c_str(),
                          text(L"cD\"\",\r\n \u00df\u4e00", 0).c_str(), id);
        }
        Export(*book);
        CsvTable table;
        ASSERT_TRUE(table.Open(file_));
        ASSERT_EQ(table.Read(), CsvStatus::Good);
        ASSERT_EQ(ImportRows(table.Fields(), kInOrder, *empty), Outcome(ImportExportStatus::Imported)) << round;
        ASSERT_EQ(ItemsOf(*empty), ItemsOf(*book)) << round;
    }
}

} // namespace
} // namespace qx
