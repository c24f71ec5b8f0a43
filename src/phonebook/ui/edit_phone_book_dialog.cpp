#include "phonebook/ui/edit_phone_book_dialog.h"

#include "phonebook/book/phone_book.h"
#include "phonebook/ui/button_rules.h"
#include "phonebook/ui/details_dialogs.h"
#include "phonebook/ui/entry_dialog.h"
#include "phonebook/ui/group_announcements.h"
#include "phonebook/ui/group_dialog.h"
#include "phonebook/ui/import_export.h"
#include "phonebook/ui/phone_book_changed.h"
#include "phonebook/ui/seen_item.h"
#include "res/edit_phone_book_ids.h"

#include <algorithm>

namespace qx {

namespace {

constexpr Control kControls[] = {
    {.id = IDC_BOOK_FRAME, .text = 5244, .fallback = L"-Phone Book"},
    {.id = IDC_BOOK_TYPED_LABEL, .text = 5245, .fallback = L"-Type Name or Select From list", .topic = 15709},
    {.id = IDC_BOOK_TYPED, .limit = kNameLimit, .topic = 15709},
    {.id = IDC_HIDDEN_LABEL, .text = 5244, .fallback = L"-Phone Book"},
    {.id = IDC_BOOK_LIST, .topic = 15723},
    {.id = IDC_BOOK_ADD_ENTRY, .text = 6070, .fallback = L"-Add Entry...", .topic = 15704},
    {.id = IDC_BOOK_ADD_GROUP, .text = 6071, .fallback = L"-Add Group...", .topic = 15705},
    {.id = IDC_BOOK_EXPORT, .text = 6072, .fallback = L"-Export", .topic = 15706},
    {.id = IDC_BOOK_IMPORT, .text = 6073, .fallback = L"-Import...", .topic = 15707},
    {.id = IDC_BOOK_EDIT, .text = 5248, .fallback = L"-Edit...", .topic = 15613},
    {.id = IDC_BOOK_DETAILS, .text = 6076, .fallback = L"-Details...", .topic = 15708},
    {.id = IDC_BOOK_DELETE, .text = 854, .fallback = L"-Delete...", .topic = 15623},
    {.id = IDOK, .text = 5249, .fallback = L"-OK"},
    {.id = IDCANCEL, .text = 5224, .fallback = L"-Cancel"},
};
static_assert(IdsAreUnique(kControls));

constexpr Message kConfirmDelete{{6097, L"Select OK to permanently remove the selected entries from the phone book."},
                                 MB_OKCANCEL | MB_ICONEXCLAMATION,
                                 MessageTitle::Warning};
constexpr Message kImportTooLarge{
    {6106, L"-Exceeded maximum phone book entries."}, MB_OK | MB_ICONSTOP, MessageTitle::Error};
constexpr Text kImported{6107, L"-Phone book entries imported successfully."};
constexpr Text kExported{6234, L"-Phone book entries exported successfully."};
constexpr Text kInformationTitle{5325, L"-QX MFP Send Fax"};

constexpr int kColumnWidth = 108;

void RefreshButtons(EditPhoneBookContext& editor)
{
    const HWND list = editor.list.window;
    const EditorButtons on = EditorButtonsFor(RowCount(list), SelectedCount(list));
    EnableControl(editor.dialog, IDC_BOOK_EXPORT, on.exportBook);
    EnableControl(editor.dialog, IDC_BOOK_EDIT, on.edit);
    EnableControl(editor.dialog, IDC_BOOK_DETAILS, on.details);
    EnableControl(editor.dialog, IDC_BOOK_DELETE, on.remove);
}

void RowChanged(EditPhoneBookContext& editor)
{
    AnnounceGroups(editor);
    RefreshButtons(editor);
}

// At the end of a command.
void ReturnTo(EditPhoneBookContext& editor, int control)
{
    FocusControl(editor.dialog, control);
    RefreshButtons(editor);
}

void Refill(EditPhoneBookContext& editor)
{
    FillPhoneBookList(editor.list, editor.book, ListedItems::All);
    AnnounceGroups(editor);
}

void ShowBook(EditPhoneBookContext& editor)
{
    Refill(editor);
    RefreshButtons(editor);
}

void SortAndRefill(EditPhoneBookContext& editor)
{
    editor.book.Sort(TRUE);
    Refill(editor);
}

// A new or changed item may have moved far away by its new name.
void SortAndShow(EditPhoneBookContext& editor, const PhoneBookItem* item)
{
    SortAndRefill(editor);
    const auto items = editor.book.Items(); // one row each
    ShowRow(editor.list, static_cast<std::size_t>(std::ranges::find(items, item) - items.begin()));
}

// ---- add ----------------------------------------------------------------------------------------------------------

bool RefuseWhenFull(EditPhoneBookContext& editor)
{
    if (editor.book.GetCount() < kMaxPhoneBookItems)
        return false;
    ShowFaxMessage(editor, kPhoneBookFull, editor.dialog);
    return true;
}

void SetId(PhoneBookItem* item, DWORD id) noexcept
{
    if (PhoneBookGroup* const group = AsGroup(item))
        group->SetId(id);
    else
        AsEntry(item)->SetId(id);
}

void AddToBook(PhoneBook& book, PhoneBookItem* item)
{
    // A reload under the open dialog may have brought another program's item with the id that was drawn for this one,
    // or a group that names it.
    if (book.IsTaken(item->GetId()))
        SetId(item, book.NextId());
    book.Add(item);
}

void TakeNewItem(EditPhoneBookContext& editor, PhoneBookItem* item)
{
    AddToBook(editor.book, item);
    SortAndShow(editor, item);
}

void AddEntry(EditPhoneBookContext& editor)
{
    if (RefuseWhenFull(editor))
        return;
    EntryDialogContext context{{editor, editor.book}};
    if (ShowModal<kAddEntryDialog>(editor.dialog, context) == IDOK)
        TakeNewItem(editor, context.made.release());
    RefreshButtons(editor);
}

// Kept: alone among the commands, this one leaves the buttons as they are.
void AddGroup(EditPhoneBookContext& editor)
{
    if (RefuseWhenFull(editor))
        return;
    GroupDialogContext context{{editor, editor.book}};
    if (ShowModal<kAddGroupDialog>(editor.dialog, context) != IDOK)
        return;
    context.seen.Update(*context.working, editor.book); // a reload may have followed the OK
    TakeNewItem(editor, context.working.release());
}

// ---- edit, details, delete ----------------------------------------------------------------------------------------

bool EditItem(EditPhoneBookContext& editor, PhoneBookItem* item)
{
    if (PhoneBookGroup* const group = AsGroup(item)) {
        GroupDialogContext context{{editor, editor.book}, group};
        const bool accepted = ShowModal<kEditGroupDialog>(editor.dialog, context) == IDOK;
        if (accepted)
            context.seen.Update(*group, editor.book); // a reload may have followed the OK
        return accepted;
    }
    EntryDialogContext context{{editor, editor.book}, AsEntry(item)};
    return ShowModal<kEditEntryDialog>(editor.dialog, context) == IDOK;
}

// At its place, wherever that is by now. A reload may have left none: the item was not saved yet, or another program
// has deleted it, or changed it beyond recognition. Then the user's OK adds it: neither their item is lost, nor the
// user's.
void StoreBack(PhoneBook& book, PhoneBookItem* item, const SeenItem& before, KeptItem& kept)
{
    if (const std::optional<DWORD> index = IndexOf(book, *item, before))
        book.SetAt(*index, item);
    else
        AddToBook(book, item);
    kept.TakenBack();
}

void EditSelected(EditPhoneBookContext& editor)
{
    PhoneBookItem* const item = OnlySelectedItem(editor.list, editor.book);
    if (item == nullptr)
        return;
    KeptItem kept(editor.book.Store(), item);
    const SeenItem before(*item);
    if (EditItem(editor, item)) {
        StoreBack(editor.book, item, before, kept);
        SortAndShow(editor, item);
    }
    ReturnTo(editor, IDC_BOOK_LIST);
}

void ShowDetails(EditPhoneBookContext& editor)
{
    if (ShowSelectedDetails(editor, editor.list))
        ReturnTo(editor, IDC_BOOK_DETAILS);
}

void DeleteSelected(EditPhoneBookContext& editor)
{
    if (ShowFaxMessage(editor, kConfirmDelete, editor.dialog) != IDOK)
        return;
    const std::vector<PhoneBookItem*> items = CollectSelectedItems(editor.list, editor.book);
    std::vector<DWORD> ids(items.size());
    std::ranges::transform(items, ids.begin(), &PhoneBookItem::GetId);
    editor.book.DeleteIds(ids);
    Refill(editor);
    ReturnTo(editor, IDC_BOOK_LIST);
}

// ---- import and export --------------------------------------------------------------------------------------------

void ShowInformation(const EditPhoneBookContext& editor, const Text& text)
{
    const std::wstring shown = LocalizedText(editor, text);
    MessageBoxW(editor.dialog, shown.c_str(), LocalizedText(editor, kInformationTitle).c_str(),
                MB_OK | MB_ICONINFORMATION | ReadingOrder(shown));
}

void TellImportResult(const EditPhoneBookContext& editor, const ImportExportResult& result)
{
    if (result.status == ImportExportStatus::BookFull) {
        ShowFaxMessage(editor, kImportTooLarge, editor.dialog);
        return;
    }
    ReportImportExportResult(editor, result, editor.dialog);
    if (result.status == ImportExportStatus::Imported)
        ShowInformation(editor, kImported);
}

void Import(EditPhoneBookContext& editor)
{
    if (!RefuseWhenFull(editor)) {
        const ImportExportResult result = ImportCsv(editor, editor.rightToLeft);
        if (result.status != ImportExportStatus::Cancelled) {
            TellImportResult(editor, result);
            SortAndRefill(editor);
        }
    }
    ReturnTo(editor, IDC_BOOK_IMPORT);
}

void Export(EditPhoneBookContext& editor)
{
    const ImportExportResult result = ExportCsv(editor);
    if (result.status == ImportExportStatus::Exported)
        ShowInformation(editor, kExported);
    else if (result.status != ImportExportStatus::Cancelled)
        ReportImportExportResult(editor, result, editor.dialog);
    ReturnTo(editor, IDC_BOOK_EXPORT);
}

// ---- end ----------------------------------------------------------------------------------------------------------

void Accept(EditPhoneBookContext& editor)
{
    editor.book.Save(editor.book.GetCount());
    BroadcastPhoneBookChanged(); // this dialog, still open, hears it as well
    EndDialog(editor.dialog, IDOK);
}

constexpr Route<EditPhoneBookContext> kRoutes[] = {
    {IDC_BOOK_TYPED, EN_CHANGE, FollowTyping<IDC_BOOK_TYPED>},
    {IDC_BOOK_LIST, static_cast<UINT>(LVN_ITEMCHANGED), RowChanged},
    {IDC_BOOK_LIST, static_cast<UINT>(LVN_ENDSCROLL), AnnounceGroups},
    {IDC_BOOK_ADD_ENTRY, BN_CLICKED, AddEntry},
    {IDC_BOOK_ADD_GROUP, BN_CLICKED, AddGroup},
    {IDC_BOOK_EDIT, BN_CLICKED, EditSelected},
    {IDC_BOOK_DETAILS, BN_CLICKED, ShowDetails},
    {IDC_BOOK_DELETE, BN_CLICKED, DeleteSelected},
    {IDC_BOOK_IMPORT, BN_CLICKED, Import},
    {IDC_BOOK_EXPORT, BN_CLICKED, Export},
    {IDOK, BN_CLICKED, Accept},
};

void Fill(EditPhoneBookContext& editor)
{
    ListenForPhoneBookChanged(editor.dialog);
    editor.rightToLeft = IsRightToLeftUi();
    editor.list.window = GetDlgItem(editor.dialog, IDC_BOOK_LIST);
    SetUpPhoneBookList(editor, editor.list.window, kColumnWidth,
                       {.activate = IDC_BOOK_EDIT, .remove = IDC_BOOK_DELETE});
    ShowBook(editor);
}

} // namespace

constexpr Dialog<EditPhoneBookContext> kEditPhoneBookDialog{
    .ids = {IDD_EDIT_PHONE_BOOK, IDD_EDIT_PHONE_BOOK_RTL},
    .title = {6068, L"-Edit Phone Book"},
    .controls = kControls,
    .routes = kRoutes,
    .fill = Fill,
    .other = FollowPhoneBook<ShowBook>,
    .announce = [](EditPhoneBookContext& editor, Announcements&) { AnnounceGroups(editor); },
};

} // namespace qx
