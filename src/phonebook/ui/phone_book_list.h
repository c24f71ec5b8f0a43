// What the phone book dialogs' lists have in common: columns, rows, selection, keys, and following the typed name.
#pragma once

#include "dialog/list_view.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

class PhoneBook;
class PhoneBookEntry;
class PhoneBookItem;

// Texts one behind the other in one block: ten thousand blocks would be felt when the list is filled.
class RowTexts {
public:
    void Clear() noexcept
    {
        all_.clear();
        ends_.clear();
    }
    void Append(std::wstring_view text)
    {
        all_ += text;
        ends_.push_back(all_.size());
    }
    std::size_t Count() const noexcept { return ends_.size(); }
    std::wstring_view Of(std::size_t row) const noexcept
    {
        const std::size_t start = row == 0 ? 0 : ends_[row - 1];
        return std::wstring_view(all_).substr(start, ends_[row] - start);
    }

private:
    std::wstring all_;
    std::vector<std::size_t> ends_;
};

// A list view that shows items of the phone book.
struct PhoneBookList {
    HWND window = nullptr;
    RowTexts names = {};                // of the rows: the items themselves may be gone with the next reload
    std::optional<unsigned> loads = {}; // of the book, when the rows were filled
};

enum class ListedItems { All, EntriesOnly };

// Buttons that keys and a double click in a list stand for; 0: none.
struct ListKeys {
    int activate = 0; // Enter and double click
    int remove = 0;   // Delete
};

// Selection by whole rows, grid lines, and the columns name, fax number and company, each columnWidth pixels wide at
// 96 dots per inch. From then on Ctrl+A selects all rows, and keys press the dialog's buttons while these are enabled.
void SetUpPhoneBookList(const TextOwner& texts, HWND list, int columnWidth, ListKeys keys);

// Replaces all rows: one row per item in the book's order, its item data the item's id. Groups show an icon and their
// name only.
void FillPhoneBookList(PhoneBookList& list, const PhoneBook& book, ListedItems listed);

// Scrolls a row into view; nothing when there is none of that number.
void ShowRow(const PhoneBookList& list, std::size_t row);

// Replaces all rows by the given entries, one row each, or by none when the list does not take them all: row i is entry
// i, and some would pass for all.
void FillEntryList(HWND list, const std::vector<const PhoneBookEntry*>& entries);

// The book's item with a row's id; null when there is none.
PhoneBookItem* ItemOfRow(HWND list, int row, const PhoneBook& book);
// The ids of the selected rows, in row order, but for rows that cannot be read.
std::vector<DWORD> SelectedIds(HWND list);
// The book's items behind the selected rows, in row order: for each row the first item that has the row's id. Rows
// whose id is not in the book are left out. None when the book has been loaded again since the list was filled: an id
// may be somebody else's by now, and the user has not seen that yet.
std::vector<PhoneBookItem*> CollectSelectedItems(const PhoneBookList& list, const PhoneBook& book);
// The item behind the only selected row; null when none or several are selected.
PhoneBookItem* OnlySelectedItem(const PhoneBookList& list, const PhoneBook& book);

// Brings the first row whose name begins with the text of edit to the top. The selection stays.
void FollowTypedName(const PhoneBookList& list, HWND edit);

// Scrolls row to the top of the list, as far as the rows below it allow.
void ScrollItemToTop(HWND list, int row) noexcept;

} // namespace qx
