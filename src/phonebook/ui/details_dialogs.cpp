#include "phonebook/ui/details_dialogs.h"

#include "dialog/dialog.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/ui/group_members.h"
#include "phonebook/ui/phone_book_list.h"
#include "res/details_ids.h"

namespace qx {

namespace {

constexpr DialogTemplate kEntryTemplate{IDD_ENTRY_DETAILS, IDD_ENTRY_DETAILS_RTL};
constexpr DialogTemplate kGroupTemplate{IDD_GROUP_DETAILS, IDD_GROUP_DETAILS_RTL};

constexpr Text kEntryTitle{6096, L"-Details"};
constexpr Text kGroupTitle{6095, L"-Group Details"};

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

struct DetailsContext : TextOwner {
    DetailsContext(const TextOwner& texts, const PhoneBook& phoneBook, const PhoneBookItem& shown) noexcept
        : TextOwner(texts.hStringDll, texts.HelpFilePath), book(phoneBook), item(shown)
    {
    }

    const PhoneBook& book;
    const PhoneBookItem& item;
    HWND dialog = nullptr;
};

void SetUp(DetailsContext& details, const Text& title, std::span<const Control> controls)
{
    SetWindowTextW(details.dialog, LocalizedText(details, title).c_str());
    SetUpControls(details, details.dialog, controls);
}

void ShowEntry(DetailsContext& details, const PhoneBookEntry& entry)
{
    SetUp(details, kEntryTitle, kEntryControls);
    SetDlgItemTextW(details.dialog, IDC_DETAILS_NAME, OrEmpty(entry.Name()));
    SetDlgItemTextW(details.dialog, IDC_DETAILS_FAX_NUMBER, OrEmpty(entry.FaxNumber()));
    SetDlgItemTextW(details.dialog, IDC_DETAILS_COMPANY, OrEmpty(entry.Company()));
}

void ShowGroup(DetailsContext& details, const PhoneBookGroup& group)
{
    SetUp(details, kGroupTitle, kGroupControls);
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
void Cancel(DetailsContext& details)
{
    EndDialog(details.dialog, IDCANCEL);
}

constexpr Route<DetailsContext> kRoutes[] = {
    {IDOK, BN_CLICKED, Accept},
    {IDCANCEL, BN_CLICKED, Cancel},
};

void Initialize(DetailsContext& details)
{
    if (const PhoneBookGroup* const group = AsGroup(&details.item))
        ShowGroup(details, *group);
    else
        ShowEntry(details, *AsEntry(&details.item));
}

std::span<const Route<DetailsContext>> RoutesOf(const DetailsContext&)
{
    return kRoutes;
}

INT_PTR HandleOther(DetailsContext&, UINT, WPARAM, LPARAM)
{
    return FALSE;
}

} // namespace

INT_PTR ShowItemDetails(HWND owner, const TextOwner& texts, const PhoneBook& book, const PhoneBookItem& item)
{
    DetailsContext details(texts, book, item);
    return ShowModal(item.IsGroup() ? kGroupTemplate : kEntryTemplate, owner, details);
}

std::span<const Control> EntryDetailsControls() noexcept
{
    return kEntryControls;
}
std::span<const Control> GroupDetailsControls() noexcept
{
    return kGroupControls;
}

} // namespace qx
