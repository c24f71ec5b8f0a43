// "phonebook merge": what other phone book files hold, added to one.
#pragma once

#include "admin/book_file.h"

namespace qx::admin {

// Entries by the module's duplicate rule; a group joins the one of its name, up to 100 members. Throws Refusal when a
// file cannot be read as a whole, with nothing changed.
void MergeBooks(const BookChoice& choice, const std::vector<std::wstring>& files, Report& report);

} // namespace qx::admin
