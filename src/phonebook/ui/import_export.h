// The conversations around a CSV file: asking for it, mapping its columns, importing or exporting, telling the outcome.
#pragma once

#include "phonebook/csv/csv_import.h"
#include "text/localized_text.h"

#include <string>
#include <windows.h>

namespace qx {

struct ImportExportResult : ImportOutcome {
    std::wstring path;  // full path of the chosen file; empty when none was chosen
    std::wstring title; // its file title, of an import
};

// What the phone book editor hands to both. Nothing is owned.
struct ImportExportBlock {
    PhoneBook* book = nullptr;
    const TextOwner* texts = nullptr;
    bool rightToLeft = false; // of the user interface when the editor opened: picks the mapping dialog's template
};

// Asks for a file and for the meaning of its columns, and adds its rows to the book, which is neither sorted nor saved.
// Entries added before a row that fails stay. The new entries belong to the book's store.
ImportExportResult ImportCsv(const ImportExportBlock& block, HWND owner);

// Asks for a file and writes the book's entries to it, without the groups.
ImportExportResult ExportCsv(const ImportExportBlock& block, HWND owner);

// Shows how many rows were refused and why, then what went wrong as a whole. The caller shows its own message after a
// success (Imported, Exported), after BookFull, and nothing after Cancelled.
void ReportImportExportResult(const TextOwner& texts, const ImportExportResult& result, HWND owner);

} // namespace qx
