#include "phonebook/ui/details_dialogs.h"

#include "phonebook/book/phone_book.h"
#include "phonebook/ui/group_members.h"
#include "phonebook/ui/phone_book_list.h"
#include "res/details_ids.h"

namespace qx {

namespace {

// These dialogs have no help.
constexpr Control kEntryControls[] = {
    {.id = IDC_DETAILS_NAME_LABEL, .text = 5208, .fallback = L"Recipient Name:"},
    {.id = IDC_DETAILS_FAX_NUMBER_LABEL, .text = 5209, .fallback = L"Fax Number"},
    {.id = IDC_DETAILS_FAX_NUMBER, .leftToRight = true},
    {.id = IDC_DETAILS_COMPANY_LABEL, .text = 5210, .fallback = L"Company Name"},
    {.id = IDOK, .text = 5249, .fallback = L"OK"},
};
static_assert(IdsAreUnique(kEntryControls));

constexpr Control kGroupControls[] = {
    // "Cancel" is what this label has always said without the text library.
    {.id = IDC_DETAILS_GROUP_NAME_LABEL, .text = 6077, .fallback = L"Cancel"},
    {.id = IDC_HIDDEN_LABEL, .text = 6079, .fallback = L"Members"},
    {.id = IDOK, .text = 5249, .fallback = L"OK"},
};
static_assert(IdsAreUnique(kGroupControls));

constexpr int kColumnWidth = 120;

void ShowEntry(DetailsContext& details)
{
    const PhoneBookEntry& entry = *AsEntry(&details.item);
    SetDlgItemTextW(details.dialog, IDC_DETAILS_NAME, OrEmpty(entry.Name()));
    SetDlgItemTextW(details.dialog, IDC_DETAILS_FAX_NUMBER, OrEmpty(entry.FaxNumber()));
    SetDlgItemTextW(details.dialog, IDC_DETAILS_COMPANY, OrEmpty(entry.Company()));
}

void ShowGroup(DetailsContext& details)
{
    const PhoneBookGroup& group = *AsGroup(&details.item);
    SetDlgItemTextW(details.dialog, IDC_DETAILS_GROUP_NAME, group.GetName());
    const HWND members = GetDlgItem(details.dialog, IDC_DETAILS_MEMBERS);
    SetUpPhoneBookList(details, members, kColumnWidth, {});
    FillEntryList(members, MembersInBookOrder(details.book, group.MemberIds()));
    SetFocus(members);
}

void Accept(DetailsContext& details)
{
    EndDialog(details.dialog, IDOK);
}

constexpr Route<DetailsContext> kRoutes[] = {
    {IDOK, BN_CLICKED, Accept},
};

} // namespace

constexpr Dialog<DetailsContext> kEntryDetailsDialog{
    .ids = {IDD_ENTRY_DETAILS, IDD_ENTRY_DETAILS_RTL},
    .title = {6096, L"-Details"},
    .controls = kEntryControls,
    .routes = kRoutes,
    .fill = ShowEntry,
};

constexpr Dialog<DetailsContext> kGroupDetailsDialog{
    .ids = {IDD_GROUP_DETAILS, IDD_GROUP_DETAILS_RTL},
    .title = {6095, L"-Group Details"},
    .controls = kGroupControls,
    .routes = kRoutes,
    .fill = ShowGroup,
};

void ShowItemDetails(HWND owner, const TextOwner& texts, const PhoneBook& book, const PhoneBookItem& item)
{
    DetailsContext details(texts, book, item);
    if (item.IsGroup())
        ShowModal<kGroupDetailsDialog>(owner, details);
    else
        ShowModal<kEntryDetailsDialog>(owner, details);
}

} // namespace qx
