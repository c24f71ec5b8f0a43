// What the module's list views in report view share: set-up, rows, cells, selection.
#pragma once

#include "text/localized_text.h"

#include <array>
#include <initializer_list>
#include <span>
#include <windows.h> // before the headers that build on it

#include <commctrl.h>

namespace qx {

// Headings have no built-in texts: without the library they are empty.
struct ListColumn {
    unsigned heading; // text id
    int pixels;       // wide, at 96 dots per inch
};

inline constexpr unsigned kNameHeading = 1104;
inline constexpr unsigned kFaxNumberHeading = 5269;
inline constexpr unsigned kCompanyHeading = 6216;

// The columns of every list of entries or recipients.
constexpr std::array<ListColumn, 3> RecipientColumns(int pixels)
{
    return {{{kNameHeading, pixels}, {kFaxNumberHeading, pixels}, {kCompanyHeading, pixels}}};
}

// Inserts the columns, and then: selection by whole rows that stays in sight, and grid lines. False, and none of
// these, when a column could not be inserted.
bool SetUpListView(const TextOwner& texts, HWND list, std::span<const ListColumn> columns);

// What a cell shows: a text, or nothing when it is null.
struct Cell {
    // NOLINTNEXTLINE(google-explicit-constructor): a text is a cell
    Cell(const wchar_t* shown, bool shownAsNumber = false) noexcept : text(shown), isNumber(shownAsNumber) {}

    const wchar_t* text;
    bool isNumber;
};

// A number with its signs, which reads from left to right in a mirrored list, too. There the list's own text has marks
// around it: the number is to be taken from where it came from, never from the list.
inline Cell NumberCell(const wchar_t* number) noexcept
{
    return {number, true};
}

// Adds a row below all others, its cells from the first column on. False when the list does not take all of it: part of
// the row may be there.
bool AppendRow(HWND list, std::initializer_list<Cell> cells, LPARAM data = 0, int image = I_IMAGENONE) noexcept;
bool SetCell(HWND list, int row, int column, Cell cell) noexcept;

int RowCount(HWND list) noexcept;
int SelectedCount(HWND list) noexcept;
// Searches behind row (-1: from the top); -1 when there is none.
int NextSelectedRow(HWND list, int row) noexcept;
void SelectAllRows(HWND list) noexcept;
// The keys go on from row, which is in sight and selected as it was before. Nothing when there is no such row.
void FocusRow(HWND list, int row) noexcept;

} // namespace qx
