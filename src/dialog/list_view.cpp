#include "dialog/list_view.h"

#include "dialog/dialog.h"
#include "dialog/drawing.h"

#include <limits>
#include <string>

namespace qx {

namespace {

int ScaledToWindow(HWND window, int pixels) noexcept
{
    const WindowDc dc(window);
    return MulDiv(pixels, GetDeviceCaps(dc.Get(), LOGPIXELSX), USER_DEFAULT_SCREEN_DPI);
}

bool InsertColumns(const TextOwner& texts, HWND list, std::span<const ListColumn> columns)
{
    LVCOLUMNW column{};
    column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    column.fmt = LVCFMT_LEFT;
    for (const ListColumn& described : columns) {
        std::wstring heading = LocalizedText(texts, {described.heading});
        column.pszText = heading.data();
        column.cx = ScaledToWindow(list, described.pixels);
        if (ListView_InsertColumn(list, column.iSubItem, &column) < 0)
            return false;
        ++column.iSubItem;
    }
    return true;
}

// False for a text that the marks would cut.
bool MarkLeftToRight(const wchar_t* text, std::span<wchar_t> marked) noexcept
{
    constexpr wchar_t kLeftToRight[] = L"\u202A", kEndOfIt[] = L"\u202C";
    CopyText(marked, kLeftToRight);
    return AppendText(marked, text) == S_OK && AppendText(marked, kEndOfIt) == S_OK;
}

} // namespace

bool SetUpListView(const TextOwner& texts, HWND list, std::span<const ListColumn> columns)
{
    const RedrawOff redrawOff(list); // else each column lays the header out anew, several times
    if (!InsertColumns(texts, list, columns))
        return false;
    AddStyle(list, LVS_SHOWSELALWAYS);
    constexpr DWORD kStyles = LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES;
    ListView_SetExtendedListViewStyleEx(list, kStyles | LVS_EX_SUBITEMIMAGES, kStyles);
    return true;
}

bool AppendRow(HWND list, std::initializer_list<Cell> cells, LPARAM data, int image) noexcept
{
    LVITEMW line{};
    line.mask = LVIF_TEXT | LVIF_PARAM | LVIF_IMAGE;
    line.iItem = std::numeric_limits<int>::max();                      // behind the last
    line.pszText = const_cast<wchar_t*>(OrEmpty(cells.begin()->text)); // only read
    line.iImage = image;
    line.lParam = data;
    const int row = ListView_InsertItem(list, &line);
    bool whole = row >= 0;
    for (std::size_t column = 1; column < cells.size() && whole; ++column) {
        const Cell& cell = cells.begin()[column];
        // A new row's cells are empty.
        whole = *OrEmpty(cell.text) == L'\0' || SetCell(list, row, static_cast<int>(column), cell);
    }
    return whole;
}

bool SetCell(HWND list, int row, int column, Cell cell) noexcept
{
    wchar_t marked[kTextUnits];
    const wchar_t* const text = OrEmpty(cell.text);
    const bool isMarked = cell.isNumber && IsMirrored(list) && MarkLeftToRight(text, marked);
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = const_cast<wchar_t*>(isMarked ? marked : text); // only read
    return SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item)) != FALSE;
}

int RowCount(HWND list) noexcept
{
    return ListView_GetItemCount(list);
}

int SelectedCount(HWND list) noexcept
{
    return static_cast<int>(ListView_GetSelectedCount(list));
}

int NextSelectedRow(HWND list, int row) noexcept
{
    return ListView_GetNextItem(list, row, LVNI_SELECTED);
}

void SelectAllRows(HWND list) noexcept
{
    ListView_SetItemState(list, -1, LVIS_SELECTED, LVIS_SELECTED);
}

void FocusRow(HWND list, int row) noexcept
{
    if (row < 0) // would be every row
        return;
    ListView_SetItemState(list, row, LVIS_FOCUSED, LVIS_FOCUSED);
    ListView_EnsureVisible(list, row, FALSE);
}

} // namespace qx
