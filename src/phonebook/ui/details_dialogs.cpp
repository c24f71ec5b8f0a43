#include "phonebook/ui/details_dialogs.h"

#include "phonebook/book/phone_book.h"
#include "phonebook/ui/group_members.h"
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
    // Kept: "Cancel" is what this label has always said without the text library.
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
    {IDD_ENTRY_DETAILS, IDD_ENTRY_DETAILS_RTL}, {6096, L"-Details"}, kEntryControls, kRoutes, ShowEntry};

constexpr Dialog<DetailsContext> kGroupDetailsDialog{
    {IDD_GROUP_DETAILS, IDD_GROUP_DETAILS_RTL}, {6095, L"-Group Details"}, kGroupControls, kRoutes, ShowGroup};

bool ShowSelectedDetails(const PhoneBookDialog& opener, const PhoneBookList& list)
{
    PhoneBookItem* const item = OnlySelectedItem(list, opener.book);
    if (item == nullptr)
        return false;
    const KeptItem kept(opener.book.Store(), item); // the book may be reloaded meanwhile
    DetailsContext details{{opener, opener.book}, *item};
    if (item->IsGroup())
        ShowModal<kGroupDetailsDialog>(opener.dialog, details);
    else
        ShowModal<kEntryDetailsDialog>(opener.dialog, details);
    return true;
}

} // namespace qx
