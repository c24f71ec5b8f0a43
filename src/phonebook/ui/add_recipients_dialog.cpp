#include "phonebook/ui/add_recipients_dialog.h"

#include "dialog/button_width.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/recent_list.h"
#include "phonebook/ui/button_rules.h"
#include "phonebook/ui/details_dialogs.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "phonebook/ui/group_announcements.h"
#include "phonebook/ui/phone_book_changed.h"
#include "phonebook/ui/recipient_picks.h"
#include "record/fax_job_data.h"
#include "res/add_recipients_ids.h"

#include <utility>

namespace qx {

namespace {

constexpr Control kControls[] = {
    {.id = IDC_PICK_TYPED_LABEL, .text = 5245, .fallback = L"Type Name or Select From list", .topic = 15611},
    {.id = IDC_PICK_TYPED, .limit = kNameLimit, .topic = 15611},
    {.id = IDC_HIDDEN_LABEL, .text = 5244, .fallback = L"Phone Book"},
    {.id = IDC_PICK_LIST, .topic = 15622},
    {.id = IDC_PICK_DETAILS, .text = 6076, .fallback = L"Details...", .topic = 15708},
    {.id = IDC_PICK_EDIT_BOOK, .text = 6067, .fallback = L"Edit PhoneBook...", .topic = 15703},
    {.id = IDC_PICK_TO, .text = 5214, .fallback = L"To ->", .topic = 15624},
    {.id = IDC_PICK_CHOSEN_LABEL, .text = 5213, .fallback = L"Fax Recipients", .topic = 15588},
    {.id = IDC_PICK_CHOSEN, .topic = 15588},
    {.id = IDC_PICK_DELETE, .text = 854, .fallback = L"Delete...", .topic = 15590},
    {.id = IDOK, .text = 5249, .fallback = L"OK"},
    {.id = IDCANCEL, .text = 5224, .fallback = L"Cancel"},
};
static_assert(IdsAreUnique(kControls));

constexpr int kColumnWidth = 90;

void RefreshBookButtons(AddRecipientsContext& picker)
{
    const PickerButtons on = PickerButtonsFor(SelectedCount(picker.list.window));
    EnableControl(picker.dialog, IDC_PICK_DETAILS, on.details);
    EnableControl(picker.dialog, IDC_PICK_TO, on.to);
}

void RefreshDelete(AddRecipientsContext& picker)
{
    EnableControl(picker.dialog, IDC_PICK_DELETE, SelectedCount(picker.chosenList) > 0);
}

void BookRowChanged(AddRecipientsContext& picker)
{
    AnnounceGroups(picker);
    RefreshBookButtons(picker);
}

void FillBookList(AddRecipientsContext& picker)
{
    FillPhoneBookList(picker.list, picker.book, ListedItems::All);
    AnnounceGroups(picker);
    RefreshBookButtons(picker);
}

void FillChosenList(AddRecipientsContext& picker)
{
    FillEntryList(picker.chosenList, picker.ChosenRecipients);
    RefreshDelete(picker);
}

// Whether there is a row for each that is chosen. When there is not, the list is filled again, for the user to look at.
bool ShowsChosen(AddRecipientsContext& picker)
{
    if (RowCount(picker.chosenList) == static_cast<int>(picker.ChosenRecipients.size()))
        return true;
    FillChosenList(picker);
    return false;
}

// ---- start-up -----------------------------------------------------------------------------------------------------

void SetUpLists(AddRecipientsContext& picker)
{
    picker.list.window = GetDlgItem(picker.dialog, IDC_PICK_LIST);
    picker.chosenList = GetDlgItem(picker.dialog, IDC_PICK_CHOSEN);
    SetUpPhoneBookList(picker, picker.list.window, kColumnWidth, {.activate = IDC_PICK_TO});
    SetUpPhoneBookList(picker, picker.chosenList, kColumnWidth, {.remove = IDC_PICK_DELETE});
}

void TakeRecipients(AddRecipientsContext& picker)
{
    picker.ChosenRecipients.clear();
    for (const FaxRecipient* const recipient : RecipientsOf(picker.job))
        picker.ChosenRecipients.push_back(AsEntry(recipient));
}

// ---- commands -----------------------------------------------------------------------------------------------------

void Remember(AddRecipientsContext& picker, const std::vector<const PhoneBookItem*>& used)
{
    if (picker.recent == nullptr || used.empty())
        return;
    for (const PhoneBookItem* const item : used)
        picker.recent->AddRecent(item, &picker.book);
    picker.recent->Save();
}

// The editor changes entries in place, and its Cancel does not change them back: what was chosen must not follow, or a
// fax would go to a number that nobody sees.
const PhoneBookEntry* CopyOf(const AddRecipientsContext& picker, const PhoneBookEntry& entry)
{
    PhoneBookEntry* const copy = picker.book.Store().NewEntry();
    copy->CopyFrom(entry);
    return copy;
}

// The right list is filled and the recent list saved once, for all items together. When memory is short nobody is
// chosen, rather than some of whom the list does not tell.
void MoveToRecipients(AddRecipientsContext& picker)
{
    if (!ShowsChosen(picker))
        return;
    const RecipientPicks picks =
        PickRecipients(CollectSelectedItems(picker.list, picker.book), picker.ChosenRecipients.size(), picker.book);
    std::vector<const PhoneBookEntry*> chosen = picker.ChosenRecipients;
    for (const PhoneBookEntry* const entry : picks.entries)
        chosen.push_back(CopyOf(picker, *entry));
    picker.ChosenRecipients = std::move(chosen);
    FillChosenList(picker);
    Remember(picker, picks.used);
    if (picks.tooMany)
        ShowFaxMessage(picker, kTooManyRecipients, picker.dialog);
}

void DeleteChosen(AddRecipientsContext& picker)
{
    if (!ShowsChosen(picker))
        return;
    const HWND list = picker.chosenList;
    std::vector<const PhoneBookEntry*> left;
    left.reserve(picker.ChosenRecipients.size());
    int selected = NextSelectedRow(list, -1);
    for (int row = 0; row < static_cast<int>(picker.ChosenRecipients.size()); ++row) {
        if (row == selected)
            selected = NextSelectedRow(list, row);
        else
            left.push_back(picker.ChosenRecipients[static_cast<std::size_t>(row)]);
    }
    picker.ChosenRecipients = std::move(left);
    FillChosenList(picker); // the button goes off, and its list has the focus
}

void ShowDetails(AddRecipientsContext& picker)
{
    if (ShowSelectedDetails(picker, picker.list))
        FocusControl(picker.dialog, IDC_PICK_LIST);
}

// The editor leaves its changes in the book in memory, whatever its result.
void EditBook(AddRecipientsContext& picker)
{
    EditPhoneBookContext editor(picker, picker.book);
    ShowModal<kEditPhoneBookDialog>(picker.dialog, editor);
    ReloadSorted(picker.book);
    FillBookList(picker);
}

void Accept(AddRecipientsContext& picker)
{
    if (!ShowsChosen(picker))
        return;
    ReplaceRecipients(picker.job, picker.ChosenRecipients);
    EndDialog(picker.dialog, IDOK);
}

constexpr Route<AddRecipientsContext> kRoutes[] = {
    {IDC_PICK_TYPED, EN_CHANGE, FollowTyping<IDC_PICK_TYPED>},
    {IDC_PICK_LIST, static_cast<UINT>(LVN_ITEMCHANGED), BookRowChanged},
    {IDC_PICK_LIST, static_cast<UINT>(LVN_ENDSCROLL), AnnounceGroups},
    {IDC_PICK_DETAILS, BN_CLICKED, ShowDetails},
    {IDC_PICK_EDIT_BOOK, BN_CLICKED, EditBook},
    {IDC_PICK_TO, BN_CLICKED, MoveToRecipients},
    {IDC_PICK_CHOSEN, static_cast<UINT>(LVN_ITEMCHANGED), RefreshDelete},
    {IDC_PICK_DELETE, BN_CLICKED, DeleteChosen},
    {IDOK, BN_CLICKED, Accept},
};

void Fill(AddRecipientsContext& picker)
{
    ListenForPhoneBookChanged(picker.dialog);
    SetUpLists(picker);
    FillBookList(picker);
    TakeRecipients(picker);
    FillChosenList(picker);
    FitButtonToText(GetDlgItem(picker.dialog, IDC_PICK_EDIT_BOOK));
}

} // namespace

constexpr Dialog<AddRecipientsContext> kAddRecipientsDialog{
    .ids = {IDD_ADD_RECIPIENTS, IDD_ADD_RECIPIENTS_RTL},
    .title = {6093, L"-Add Recipients From Phone Book"},
    .controls = kControls,
    .routes = kRoutes,
    .fill = Fill,
    .other = FollowPhoneBook<FillBookList>,
    .announce = [](AddRecipientsContext& picker, Announcements&) { AnnounceGroups(picker); },
};

} // namespace qx
