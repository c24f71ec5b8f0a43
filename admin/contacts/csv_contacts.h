// The people in a table of another program.
#pragma once

#include "admin/contacts/contact.h"

#include <string>
#include <string_view>
#include <vector>

namespace qx::admin {

// Columns by their headers, as the user names them; none: they are recognised. Several names' texts are joined with
// blanks, each fax column is a contact of its own, and the first company that is there counts.
struct ColumnChoice {
    std::vector<std::wstring> name;
    std::vector<std::wstring> fax;
    std::vector<std::wstring> company;
};

// The text of a whole file. A row with more fields than the header is unusable: its columns are not where they seem.
ContactFile ReadCsvContacts(std::wstring_view text, const ColumnChoice& choice);

} // namespace qx::admin
