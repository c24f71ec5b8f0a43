#include "support/bare_sheet.h"

#include "base/activation_context.h"
#include "res/fax_job_page_ids.h"

#include <commctrl.h>
#include <prsht.h>
#include <stdexcept>
#include <windows.h>

namespace qx::test {

namespace {

constexpr UINT kUseBareSheet = WM_APP; // posted to the first page of a bare sheet once it is shown

// What a fax job's user sees, drawn now: in a quick session the sheet would be gone before its turn to be drawn.
void Draw(HWND sheet)
{
    RedrawWindow(sheet, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void FillBarePage(HWND page)
{
    wchar_t text[] = L"5550100";
    const HWND list = GetDlgItem(page, IDC_RECIPIENTS);
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES);
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH | LVCF_TEXT;
    column.cx = 112;
    column.pszText = text;
    for (int i = 0; i < 3; ++i)
        SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    LVITEMW row{};
    row.mask = LVIF_TEXT;
    row.pszText = text;
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row));
    SendDlgItemMessageW(page, IDC_NAME_BOX, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    SetDlgItemTextW(page, IDC_FAX_NUMBER, text);
}

INT_PTR CALLBACK BarePage(HWND page, UINT message, WPARAM, LPARAM l)
{
    const HWND sheet = GetParent(page);
    switch (message) {
    case WM_INITDIALOG:
        if (GetDlgItem(page, IDC_RECIPIENTS) != nullptr) {
            FillBarePage(page);
            PostMessageW(page, kUseBareSheet, 0, 0);
        }
        return TRUE;
    case kUseBareSheet:
        for (const WPARAM shown : {0u, 1u, 0u}) {
            SendMessageW(sheet, PSM_SETCURSEL, shown, 0);
            Draw(sheet);
        }
        SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
        return TRUE;
    case WM_NOTIFY:
        SetWindowLongPtrW(page, DWLP_MSGRESULT, 0);
        return reinterpret_cast<const NMHDR*>(l)->code == static_cast<UINT>(PSN_APPLY);
    default:
        return FALSE;
    }
}

} // namespace

void ShowBareSheet()
{
    const ActivationScope context;
    PROPSHEETPAGEW pages[2]{};
    for (int i = 0; i < 2; ++i) {
        pages[i].dwSize = sizeof pages[i];
        pages[i].dwFlags = PSP_PREMATURE;
        pages[i].hInstance = GetModuleHandleW(nullptr);
        pages[i].pszTemplate = MAKEINTRESOURCEW(IDD_FAX_JOB_PAGE + i);
        pages[i].pfnDlgProc = BarePage;
    }
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_RTLREADING;
    header.hInstance = GetModuleHandleW(nullptr);
    header.pszCaption = L"bare";
    header.nPages = 2;
    header.ppsp = pages;
    if (PropertySheetW(&header) <= 0)
        throw std::runtime_error("no bare sheet");
}

} // namespace qx::test
