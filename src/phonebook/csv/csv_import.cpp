#include "phonebook/csv/csv_import.h"

#include "base/text.h"
#include "phonebook/book/duplicate_index.h"

#include <algorithm>
#include <array>
#include <exception>

namespace qx {

namespace {

class RowImport {
public:
    RowImport(PhoneBook& book, ImportOutcome& outcome) : book_(book), outcome_(outcome), held_(book.Items()) {}

    void Take(const ImportRow& row)
    {
        const bool invalid = !row.hasFaxNumberField || !IsValidFaxNumber(row.faxNumber);
        if (invalid)
            Refuse(outcome_.invalidFaxNumbers);
        if (row.name.empty() || row.faxNumber.empty())
            return;
        PhoneBookEntry& entry = MakeEntry(row);
        // An invalid row is tested for being a duplicate all the same, and may count as both.
        const DuplicateIndex::Keys keys = held_.KeysOf(entry);
        if (held_.HoldsSame(entry, keys))
            Refuse(outcome_.duplicates);
        else if (!invalid)
            Add(entry, keys);
    }

    void Finish() noexcept { book_.Store().Discard(unused_); }

private:
    void Refuse(int& count) noexcept
    {
        ++count;
        outcome_.status = ImportExportStatus::RowRefused;
    }

    // Each row draws an id, also one that is refused afterwards, while the entry made for that one serves again.
    PhoneBookEntry& MakeEntry(const ImportRow& row)
    {
        if (unused_ == nullptr)
            unused_ = book_.Store().NewEntry();
        unused_->SetId(book_.NextId());
        unused_->SetTexts(row);
        return *unused_;
    }

    void Add(PhoneBookEntry& entry, const DuplicateIndex::Keys& keys)
    {
        if (book_.GetCount() >= kMaxPhoneBookItems) {
            outcome_.status = ImportExportStatus::BookFull;
            return;
        }
        held_.Add(entry, keys);
        book_.Add(&entry);
        unused_ = nullptr;
        outcome_.status = ImportExportStatus::Imported;
    }

    PhoneBook& book_;
    ImportOutcome& outcome_;
    DuplicateIndex held_;
    PhoneBookEntry* unused_ = nullptr;
};

constexpr std::size_t kExportedColumns = 3;

void SetRow(CsvTableWriter& writer, std::size_t row,
            const std::array<std::wstring_view, kExportedColumns>& texts) noexcept
{
    for (std::size_t column = 0; column < kExportedColumns; ++column)
        writer.SetCell(row, column, Cut(texts[column], kNameLimit));
}

} // namespace

ImportOutcome ImportRows(const CsvFields& fields, const ImportColumns& columns, PhoneBook& book) noexcept
{
    ImportOutcome outcome;
    try {
        RowImport rows(book, outcome);
        ImportRow row;
        for (std::size_t line = 1; line < fields.Rows(); ++line) {
            ReadImportRow(fields, line, columns, row);
            rows.Take(row);
        }
        rows.Finish();
    } catch (const std::exception&) {
        outcome.status = ImportExportStatus::BookFull;
    }
    return outcome;
}

bool ExportRows(const PhoneBook& book, CsvTableWriter& writer) noexcept
{
    const auto entries = static_cast<std::size_t>(
        std::ranges::count_if(book.Items(), [](const PhoneBookItem* item) { return !item->IsGroup(); }));
    if (!writer.SetSize(entries + 1, kExportedColumns, kNameLimit + 1))
        return false;
    SetRow(writer, 0, {L"Name", L"Fax Number", L"Company Name"});
    std::size_t row = 1;
    for (const PhoneBookItem* const item : book.Items()) {
        if (const PhoneBookEntry* const entry = AsEntry(item))
            SetRow(writer, row++, {OrEmpty(entry->Name()), OrEmpty(entry->FaxNumber()), OrEmpty(entry->Company())});
    }
    return true;
}

} // namespace qx
