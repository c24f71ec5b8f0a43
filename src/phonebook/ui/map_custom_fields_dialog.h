// Map Custom Fields: which column of a CSV file feeds which field of an entry.
#pragma once

#include "dialog/dialog.h"
#include "phonebook/csv/import_rules.h"

#include <optional>
#include <string>
#include <vector>

namespace qx {

// What the dialog is opened with, and what it leaves behind.
struct MapCustomFieldsContext : TextOwner {
    using TextOwner::TextOwner;

    HWND dialog = nullptr;
    HWND sourceList = nullptr;
    HWND destinationList = nullptr;
    std::wstring fileName;                            // full path of the CSV file, shown to the user
    DWORD result = 1;                                 // 0 once the user has cancelled
    std::vector<std::optional<std::wstring>> headers; // one per column, none for an empty one; trimmed in place
    std::vector<std::size_t> sources;                 // the header that each row of the left list shows
    std::vector<FieldMapping> mapping;                // filled by OK
};

// IDOK: the mapping is filled.
extern const Dialog<MapCustomFieldsContext> kMapCustomFieldsDialog;

} // namespace qx
