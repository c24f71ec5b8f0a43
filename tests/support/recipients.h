// Recipients as texts to compare and to print: those of a job, and those that a page or a list shows.
#pragma once

#include "record/recipient.h"

#include <iosfwd>
#include <qxfax/send_fax.h>
#include <string>
#include <vector>
#include <windows.h>

namespace qx {

void PrintTo(const Recipient& texts, std::ostream* out);

namespace test {

std::vector<Recipient> RecipientsIn(const FaxJobData& record);

// Of lists whose columns are name, fax number and company, on the calling thread.
std::wstring CellText(HWND list, int row, int column);
std::vector<Recipient> RowsIn(HWND list);
std::vector<std::wstring> NamesIn(HWND list);

} // namespace test

} // namespace qx
