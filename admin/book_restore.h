// "phonebook restore": the copies that the module has kept of a phone book.
#pragma once

#include "admin/report.h"

#include <cstddef>
#include <string>

namespace qx::admin {

// Lists the copies; then, unless copy is 0, the copy of that number takes the place of the phone book, of which a copy
// is kept first. Throws Refusal, with the phone book as it was.
void RestoreBook(const std::wstring& path, std::size_t copy, Report& report);

} // namespace qx::admin
