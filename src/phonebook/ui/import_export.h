// The conversations around a CSV file: asking for it, mapping its columns, importing or exporting, telling the outcome.
#pragma once

#include "phonebook/csv/csv_import.h"
#include "text/localized_text.h"

#include <string>
#include <windows.h>

namespace qx {

struct PhoneBookDialog;

struct ImportExportResult : ImportOutcome {
    std::wstring path;  // full path of the chosen file; empty when none was chosen
    std::wstring title; // its file title, of an import
};

// Asks for a file and for the meaning of its columns, and adds its rows to the opener's book, which is neither sorted
// nor saved. Entries added before a row that fails stay. The new entries belong to the book's store. rightToLeft picks
// the mapping dialog's template.
ImportExportResult ImportCsv(const PhoneBookDialog& opener, bool rightToLeft);

// Asks for a file and writes the entries of the opener's book to it, without the groups.
ImportExportResult ExportCsv(const PhoneBookDialog& opener);

// Shows how many rows were refused and why, then what went wrong as a whole. The caller shows its own message after a
// success (Imported, Exported), after BookFull, and nothing after Cancelled.
void ReportImportExportResult(const TextOwner& texts, const ImportExportResult& result, HWND owner);

} // namespace qx
