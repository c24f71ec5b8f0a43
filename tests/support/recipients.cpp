#include "support/recipients.h"

#include "host/utf8.h"

#include <commctrl.h>
#include <ostream>

namespace qx {

void PrintTo(const Recipient& texts, std::ostream* out)
{
    *out << '{' << host::Utf8(texts.name) << " | " << host::Utf8(texts.faxNumber) << " | " << host::Utf8(texts.company)
         << '}';
}

namespace test {

std::vector<Recipient> RecipientsIn(const FaxJobData& record)
{
    std::vector<Recipient> recipients;
    for (INT32 i = 0; i < record.RecipientCount; ++i) {
        const FaxRecipient& recipient = *record.Recipients.Items[i];
        recipients.push_back({recipient.Name, recipient.FaxNumber, recipient.Company});
    }
    return recipients;
}

std::wstring CellText(HWND list, int row, int column)
{
    wchar_t text[300] = L"";
    ListView_GetItemText(list, row, column, text, 300);
    return text;
}

std::vector<Recipient> RowsIn(HWND list)
{
    std::vector<Recipient> rows;
    for (int row = 0; row < ListView_GetItemCount(list); ++row)
        rows.push_back({CellText(list, row, 0), CellText(list, row, 1), CellText(list, row, 2)});
    return rows;
}

std::vector<std::wstring> NamesIn(HWND list)
{
    std::vector<std::wstring> names;
    for (const Recipient& row : RowsIn(list))
        names.push_back(row.name);
    return names;
}

} // namespace test

} // namespace qx
