#include "phonebook/ui/group_dialog.h"

#include "phonebook/book/phone_book.h"
#include "phonebook/ui/button_rules.h"
#include "phonebook/ui/details_dialogs.h"
#include "phonebook/ui/group_members.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/group_ids.h"

namespace qx {

namespace {

constexpr Control kControls[] = {
    {.id = IDC_GROUP_TYPED_LABEL, .text = 5245, .fallback = L"-Type Name or Select From list", .topic = 15714},
    {.id = IDC_GROUP_TYPED, .limit = kNameLimit, .topic = 15714},
    {.id = IDC_HIDDEN_LABEL, .text = 5244, .fallback = L"-Phone Book"},
    {.id = IDC_GROUP_ENTRIES, .topic = 15723},
    {.id = IDC_GROUP_DETAILS, .text = 6076, .fallback = L"-Details...", .topic = 15708},
    {.id = IDC_GROUP_ADD, .text = 6078, .fallback = L"-Add->", .topic = 15715},
    {.id = IDC_GROUP_NAME_LABEL, .text = 6077, .fallback = L"-Group Name", .topic = 15713},
    {.id = IDC_GROUP_NAME, .limit = kNameLimit, .topic = 15713},
    {.id = IDC_GROUP_MEMBERS_LABEL, .text = 6079, .fallback = L"-Members", .topic = 15716},
    {.id = IDC_GROUP_MEMBERS, .topic = 15716},
    {.id = IDC_GROUP_DELETE, .text = 854, .fallback = L"-Delete", .topic = 15752},
    {.id = IDOK, .text = 5249, .fallback = L"-OK"},
    {.id = IDCANCEL, .text = 5224, .fallback = L"-Cancel"},
};
static_assert(IdsAreUnique(kControls));

constexpr Message kDuplicate{{6099, L"This is a duplicate entry.  This is a duplicate phone book entry. Please enter a "
                                    L"different Group Name."},
                             MB_OK | MB_ICONSTOP,
                             MessageTitle::Warning};

constexpr int kColumnWidth = 90;

// Kept: one less than can be typed, a name of full length loses its last character when it is stored. Groups have
// always been stored so, and other copies of the phone book know them by these names.
constexpr std::size_t kStoredNameUnits = kNameLimit - 1;

// ---- what is enabled ----------------------------------------------------------------------------------------------

void RefreshButtons(GroupDialogContext& group)
{
    const GroupButtons on = GroupButtonsFor({.members = static_cast<int>(group.working->MemberIds().size()),
                                             .selectedEntries = SelectedCount(group.entries.window),
                                             .selectedMembers = SelectedCount(group.members)});
    EnableControl(group.dialog, IDC_GROUP_DETAILS, on.details);
    EnableControl(group.dialog, IDC_GROUP_ADD, on.add);
    EnableControl(group.dialog, IDC_GROUP_DELETE, on.remove);
}

void RefreshOk(GroupDialogContext& group)
{
    EnableControl(group.dialog, IDOK, HasText(GetDlgItem(group.dialog, IDC_GROUP_NAME)) && RowCount(group.members) > 0);
}

// ---- start-up -----------------------------------------------------------------------------------------------------

void FillMembers(GroupDialogContext& group)
{
    group.seen.Update(*group.working, group.book);
    FillEntryList(group.members, MembersInOwnOrder(group.book, group.working->MemberIds()));
    RefreshOk(group);
}

// The book as it is now.
void FillLists(GroupDialogContext& group)
{
    FillPhoneBookList(group.entries, group.book, ListedItems::EntriesOnly);
    FillMembers(group);
    RefreshButtons(group);
}

void SetUpLists(GroupDialogContext& group)
{
    group.entries.window = GetDlgItem(group.dialog, IDC_GROUP_ENTRIES);
    group.members = GetDlgItem(group.dialog, IDC_GROUP_MEMBERS);
    SetUpPhoneBookList(group, group.entries.window, kColumnWidth, {.activate = IDC_GROUP_ADD});
    SetUpPhoneBookList(group, group.members, kColumnWidth, {.remove = IDC_GROUP_DELETE});
}

// ---- commands -----------------------------------------------------------------------------------------------------

void FollowTyping(GroupDialogContext& group)
{
    FollowTypedName(group.entries, GetDlgItem(group.dialog, IDC_GROUP_TYPED));
}

void AddSelected(GroupDialogContext& group)
{
    AddMembers(*group.working, CollectSelectedItems(group.entries, group.book));
    FillMembers(group);
    RefreshButtons(group);
}

// Nothing is asked: the book changes only on OK.
void DeleteSelected(GroupDialogContext& group)
{
    for (const DWORD id : SelectedIds(group.members))
        group.working->RemoveMemberId(id);
    FillMembers(group);
    FocusControl(group.dialog, IDC_GROUP_MEMBERS);
    RefreshButtons(group);
}

void ShowDetails(GroupDialogContext& group)
{
    if (!ShowSelectedDetails(group, group.entries))
        return;
    RefreshButtons(group);
    FocusControl(group.dialog, IDC_GROUP_DETAILS);
}

// All of it or, when memory is short, nothing.
void StoreMembers(GroupDialogContext& group)
{
    std::vector<DWORD> ids(group.working->MemberIds().begin(), group.working->MemberIds().end());
    group.stored->SetName(group.working->Name());
    group.stored->SetMemberIds(std::move(ids));
}

void Accept(GroupDialogContext& group)
{
    if (group.seen.Update(*group.working, group.book)) {
        FillLists(group); // the user is to see who has left
        return;
    }
    PhoneBookGroup candidate;
    candidate.SetName(ToStored(FieldText(group.dialog, IDC_GROUP_NAME, kStoredNameUnits)).c_str());
    const PhoneBookGroup& itself = group.stored != nullptr ? *group.stored : *group.working;
    if (HoldsSameGroup(group.book, candidate, IdIn(group.book, itself))) {
        ShowFaxMessage(group, kDuplicate, group.dialog);
        return;
    }
    group.working->SetName(candidate.Name());
    if (group.stored != nullptr)
        StoreMembers(group);
    EndDialog(group.dialog, IDOK);
}

constexpr Route<GroupDialogContext> kRoutes[] = {
    {IDC_GROUP_TYPED, EN_CHANGE, FollowTyping},
    {IDC_GROUP_ENTRIES, static_cast<UINT>(LVN_ITEMCHANGED), RefreshButtons},
    {IDC_GROUP_DETAILS, BN_CLICKED, ShowDetails},
    {IDC_GROUP_ADD, BN_CLICKED, AddSelected},
    {IDC_GROUP_NAME, EN_CHANGE, RefreshOk},
    {IDC_GROUP_MEMBERS, static_cast<UINT>(LVN_ITEMCHANGED), RefreshButtons},
    {IDC_GROUP_MEMBERS, static_cast<UINT>(LVN_INSERTITEM), RefreshOk},
    {IDC_GROUP_DELETE, BN_CLICKED, DeleteSelected},
    {IDOK, BN_CLICKED, Accept},
};

void Fill(GroupDialogContext& group)
{
    ListenForPhoneBookChanged(group.dialog);
    SetUpLists(group);
    group.working = {group.book.Store().NewGroup(), {&group.book.Store()}};
    if (group.stored == nullptr) {
        group.working->SetId(group.book.NextId());
    } else {
        SetDlgItemTextW(group.dialog, IDC_GROUP_NAME, ToShown(group.stored->Name()));
        group.working->CopyFrom(*group.stored);
    }
    FillLists(group);
}

} // namespace

constexpr Dialog<GroupDialogContext> kAddGroupDialog{
    {IDD_GROUP, IDD_GROUP_RTL}, {6075, L"-Add Group To Phone Book"}, kControls, kRoutes, Fill,
    FollowPhoneBook<FillLists>};
constexpr Dialog<GroupDialogContext> kEditGroupDialog{
    {IDD_GROUP, IDD_GROUP_RTL}, {6081, L"-Edit Group"}, kControls, kRoutes, Fill, FollowPhoneBook<FillLists>};

} // namespace qx
