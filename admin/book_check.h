// "phonebook check": what a phone book file holds, and what of it the dialogs would not show.
#pragma once

#include "admin/report.h"

#include <string>
#include <vector>

namespace qx::admin {

void CheckBooks(const std::vector<std::wstring>& paths, Report& report);

} // namespace qx::admin
