// "phonebook import": the people of other programs' files into a phone book, or into a file that the dialog imports.
#pragma once

#include "admin/book_file.h"
#include "admin/contacts/csv_contacts.h"
#include "admin/contacts/fax_number.h"

namespace qx::admin {

struct ImportOptions {
    std::vector<std::wstring> files;
    BookChoice book;
    std::wstring out; // a CSV file instead of a book
    bool overwrite = false;
    std::string codePage; // a name, as --code-page takes it
    ColumnChoice columns;
    DialingRules dialing;
};

// Throws Refusal or UsageError before anything is changed.
void ImportContacts(const ImportOptions& options, Report& report);

} // namespace qx::admin
