// Entries out of the rows of a CSV file, and rows out of the entries of the book.
#pragma once

#include "phonebook/book/phone_book.h"
#include "phonebook/csv/csv_table.h"
#include "phonebook/csv/import_rules.h"

namespace qx {

struct ImportOutcome {
    ImportExportStatus status = ImportExportStatus::Cancelled; // of the last row that counted
    int duplicates = 0;
    int invalidFaxNumbers = 0;
    bool operator==(const ImportOutcome&) const = default;
};

// Adds every row below the header that has a name and a valid fax number and that the book does not hold yet, until the
// book is full; the rows behind are still looked at. A row counts as a duplicate once, and once more when its fax
// number is invalid too. When memory gives out, that ends the import as a full book does.
ImportOutcome ImportRows(const CsvFields& fields, const ImportColumns& columns, PhoneBook& book) noexcept;

// Fills the writer with a header and a row for each entry. False when memory is short.
bool ExportRows(const PhoneBook& book, CsvTableWriter& writer) noexcept;

} // namespace qx
