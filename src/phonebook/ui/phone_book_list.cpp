#include "phonebook/ui/phone_book_list.h"

#include "base/limits.h"
#include "base/module.h"
#include "base/window_procedure.h"
#include "dialog/contrast.h"
#include "dialog/dialog.h"
#include "dialog/drawing.h"
#include "dialog/typed_prefix.h"
#include "phonebook/book/phone_book.h"
#include "res/bitmaps_ids.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace qx {

namespace {

constexpr int kIconPixels = 16;
constexpr COLORREF kIconBackground = RGB(255, 0, 255);
constexpr COLORREF kIconOutline = RGB(40, 50, 70);

// ---- rows ---------------------------------------------------------------------------------------------------------

// Asks the entry for nothing virtual: recipients that a record comes with may be of a module that was unloaded since.
bool AppendItem(HWND list, const PhoneBookEntry& entry) noexcept
{
    return AppendRow(list, {OrEmpty(entry.Name()), NumberCell(entry.FaxNumber()), entry.Company()},
                     static_cast<LPARAM>(entry.PhoneBookEntry::GetId()));
}

bool AppendItem(HWND list, const PhoneBookItem& item) noexcept
{
    if (const PhoneBookEntry* const entry = AsEntry(&item))
        return AppendItem(list, *entry);
    return AppendRow(list, {item.GetName()}, static_cast<LPARAM>(item.GetId()), 0);
}

// The list stays where it was scrolled to. False when it does not take all rows whole: some are missing then. Throws
// when it keeps its old ones.
template <class Items> bool ReplaceRows(HWND list, const Items& items)
{
    const auto topRow = static_cast<int>(SendMessageW(list, LVM_GETTOPINDEX, 0, 0));
    bool whole = true;
    {
        const RedrawOff quiet(list);
        if (!SendMessageW(list, LVM_DELETEALLITEMS, 0, 0) && RowCount(list) > 0)
            throw std::runtime_error("a list keeps its old rows");
        SendMessageW(list, LVM_SETITEMCOUNT, items.size(), 0);
        for (const auto* const item : items)
            whole = AppendItem(list, *item) && whole;
    }
    if (!items.empty()) // a list learns how far it can be scrolled when it is drawn again
        ScrollItemToTop(list, std::min(topRow, static_cast<int>(items.size()) - 1));
    return whole;
}

// The outline in the colour of texts, what it encloses in that of their ground.
void DrawInSystemColors(HBITMAP icon) noexcept
{
    const UniqueMemoryDc dc(CreateCompatibleDC(nullptr));
    const SelectedObject selected(dc.Get(), icon);
    for (int y = 0; y < kIconPixels; ++y) {
        for (int x = 0; x < kIconPixels; ++x) {
            const COLORREF drawn = GetPixel(dc.Get(), x, y);
            if (drawn != kIconBackground)
                SetPixel(dc.Get(), x, y, GetSysColor(drawn == kIconOutline ? COLOR_WINDOWTEXT : COLOR_WINDOW));
        }
    }
}

// Null when it cannot be made.
HIMAGELIST MakeGroupIcon() noexcept
{
    const UniqueBitmap icon(static_cast<HBITMAP>(
        LoadImageW(ModuleInstance(), MAKEINTRESOURCEW(IDB_GROUP), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    if (icon && !HasRoomForColors(COLOR_WINDOWTEXT, COLOR_WINDOW))
        DrawInSystemColors(icon.Get());
    const HIMAGELIST icons = ImageList_Create(kIconPixels, kIconPixels, ILC_COLOR24 | ILC_MASK, 1, 0);
    if (icons == nullptr || (icon && ImageList_AddMasked(icons, icon.Get(), kIconBackground) >= 0))
        return icons;
    ImageList_Destroy(icons);
    return nullptr;
}

// What the list has stays when there is no new one.
void SetIcon(HWND list) noexcept
{
    const HIMAGELIST icons = MakeGroupIcon();
    if (icons == nullptr)
        return;
    const LRESULT before = SendMessageW(list, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(icons));
    ImageList_Destroy(reinterpret_cast<HIMAGELIST>(before));
}

bool HasIcon(HWND list) noexcept
{
    return SendMessageW(list, LVM_GETIMAGELIST, LVSIL_SMALL, 0) != 0;
}

// None when the row cannot be read: each number is an id, or that of a group without one.
std::optional<DWORD> IdOfRow(HWND list, int row) noexcept
{
    LVITEMW line{};
    line.mask = LVIF_PARAM;
    line.iItem = row;
    const LRESULT read = SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&line));
    return read != 0 ? std::optional(static_cast<DWORD>(line.lParam)) : std::nullopt;
}

// ---- keys ---------------------------------------------------------------------------------------------------------

void PressButton(HWND dialog, int id) noexcept
{
    const HWND button = id != 0 ? GetDlgItem(dialog, id) : nullptr;
    if (button != nullptr && IsWindowEnabled(button))
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

// What a list view's own window data points to. A subclass of the common controls' kind would be simpler, but it looks
// its data up by name with every message, and filling a long list takes ten times as long.
struct ListSubclass {
    ListKeys keys;
    WNDPROC previous;
};

// True when the key was for us. One that is held down presses its button once: nobody means to add a recipient a
// hundred times.
bool AnswerKey(HWND list, ListKeys keys, WPARAM key, LPARAM keystroke) noexcept
{
    const HWND dialog = GetParent(list);
    if (key == VK_RETURN || key == VK_DELETE) {
        if (!IsRepeated(keystroke))
            PressButton(dialog, key == VK_RETURN ? keys.activate : keys.remove);
    } else if (key == 'A' && GetKeyState(VK_CONTROL) < 0) {
        SelectAllRows(list);
    } else {
        return false;
    }
    return true;
}

// Enter belongs to the list while a row is selected; otherwise it presses the dialog's default button. One that is held
// down has been used already: what it pressed may have taken the selection away.
bool ClaimsEnter(HWND list, ListKeys keys, LPARAM question) noexcept
{
    const MSG* const asked = KeystrokeAskedAbout(question);
    return asked != nullptr && asked->wParam == VK_RETURN && keys.activate != 0 &&
           (SelectedCount(list) > 0 || IsRepeated(asked->lParam));
}

LRESULT CALLBACK ListProcedure(HWND list, UINT message, WPARAM w, LPARAM l) noexcept
{
    auto* const subclass = reinterpret_cast<ListSubclass*>(GetWindowLongPtrW(list, GWLP_USERDATA));
    if (subclass == nullptr)
        return DefWindowProcW(list, message, w, l);
    const ListKeys keys = subclass->keys;
    const WNDPROC previous = subclass->previous;
    switch (message) {
    case WM_GETDLGCODE:
        if (ClaimsEnter(list, keys, l))
            return DLGC_WANTALLKEYS;
        break;
    case WM_KEYDOWN:
        if (AnswerKey(list, keys, w, l))
            return 0;
        break;
    case WM_CHAR:
        if (w < L' ')
            return 0; // of keys answered above; the list view would search for it
        break;
    case WM_LBUTTONDBLCLK:
        CallWindowProcW(previous, list, message, w, l); // selects the row, or nothing beside the rows
        PressButton(GetParent(list), keys.activate);
        return 0;
    case WM_SYSCOLORCHANGE:
        if (HasIcon(list))
            SetIcon(list);
        break;
    case WM_NCDESTROY:
        SetWindowLongPtrW(list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
        delete subclass;
        break;
    default:
        break;
    }
    return CallWindowProcW(previous, list, message, w, l);
}

void AnswerKeys(HWND list, ListKeys keys)
{
    auto subclass = std::make_unique<ListSubclass>(ListSubclass{keys, nullptr});
    HookWithData(list, ListProcedure, subclass.get(), subclass->previous);
    static_cast<void>(subclass.release()); // the list's, until it is destroyed
}

} // namespace

void SetUpPhoneBookList(const TextOwner& texts, HWND list, int columnWidth, ListKeys keys)
{
    SetUpListView(texts, list, RecipientColumns(columnWidth));
    AnswerKeys(list, keys);
}

void FillPhoneBookList(PhoneBookList& list, const PhoneBook& book, ListedItems listed)
{
    if (listed == ListedItems::All && !HasIcon(list.window))
        SetIcon(list.window);
    std::vector<const PhoneBookItem*> rows;
    rows.reserve(book.GetCount());
    list.names.Clear();
    list.loads.reset(); // the ids of rows that stay, should this fail, may be those of others by now
    for (const PhoneBookItem* const item : book.Items()) {
        if (listed == ListedItems::EntriesOnly && item->IsGroup())
            continue;
        rows.push_back(item);
        list.names.Append(Cut(item->GetName(), kRowNameLimit));
    }
    ReplaceRows(list.window, rows);
    list.loads = book.Loads();
}

void ShowRow(const PhoneBookList& list, std::size_t row)
{
    if (row < list.names.Count())
        SendMessageW(list.window, LVM_ENSUREVISIBLE, row, FALSE);
}

void FillEntryList(HWND list, const std::vector<const PhoneBookEntry*>& entries)
{
    if (!ReplaceRows(list, entries))
        SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
}

PhoneBookItem* ItemOfRow(HWND list, int row, const PhoneBook& book)
{
    const std::optional<DWORD> id = IdOfRow(list, row);
    return id ? book.FindItem(*id) : nullptr;
}

std::vector<DWORD> SelectedIds(HWND list)
{
    std::vector<DWORD> ids;
    ids.reserve(static_cast<std::size_t>(SelectedCount(list)));
    for (int row = NextSelectedRow(list, -1); row >= 0; row = NextSelectedRow(list, row)) {
        if (const std::optional<DWORD> id = IdOfRow(list, row))
            ids.push_back(*id);
    }
    return ids;
}

std::vector<PhoneBookItem*> CollectSelectedItems(const PhoneBookList& list, const PhoneBook& book)
{
    std::vector<PhoneBookItem*> items;
    if (list.loads != book.Loads())
        return items;
    for (const DWORD id : SelectedIds(list.window)) {
        if (PhoneBookItem* const item = book.FindItem(id))
            items.push_back(item);
    }
    return items;
}

PhoneBookItem* OnlySelectedItem(const PhoneBookList& list, const PhoneBook& book)
{
    const std::vector<PhoneBookItem*> items = CollectSelectedItems(list, book);
    return items.size() == 1 ? items.front() : nullptr;
}

void FollowTypedName(const PhoneBookList& list, HWND edit)
{
    const std::wstring typed = WindowText(edit, kNameLimit);
    if (typed.empty())
        return;
    // The names, not the rows: asking the list view for 10000 texts would be felt with every keystroke.
    for (std::size_t row = 0; row < list.names.Count(); ++row) {
        if (MatchesTypedPrefix(list.names.Of(row), typed)) {
            ScrollItemToTop(list.window, static_cast<int>(row));
            return;
        }
    }
}

void ScrollItemToTop(HWND list, int row) noexcept
{
    const auto topRow = static_cast<int>(SendMessageW(list, LVM_GETTOPINDEX, 0, 0));
    if (topRow == row)
        return;
    RECT top{LVIR_BOUNDS, 0, 0, 0};
    RECT wanted{LVIR_BOUNDS, 0, 0, 0};
    SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(topRow), reinterpret_cast<LPARAM>(&top));
    SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&wanted));
    SendMessageW(list, LVM_SCROLL, 0, wanted.top - top.top);
}

} // namespace qx
