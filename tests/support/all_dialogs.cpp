#include "support/all_dialogs.h"

#include "pages/edit_defaults_dialog.h"
#include "pages/fax_job_page.h"
#include "pages/setup_page.h"
#include "phonebook/ui/add_recipients_dialog.h"
#include "phonebook/ui/details_dialogs.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "phonebook/ui/entry_dialog.h"
#include "phonebook/ui/group_dialog.h"
#include "phonebook/ui/map_custom_fields_dialog.h"
#include "res/add_recipients_ids.h"
#include "res/details_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"

namespace qx::test {

namespace {

const DialogCase kDialogs[] = {
    {"FaxJobPage", kFaxJobPageTemplate, FaxJobPageControls, true},
    {"SetupPage", kSetupPageTemplate, SetupPageControls, true},
    {"EditDefaults", kEditDefaultsTemplate, EditDefaultsControls},
    {"AddRecipients", {IDD_ADD_RECIPIENTS, IDD_ADD_RECIPIENTS_RTL}, AddRecipientsControls, false, IDC_PICK_EDIT_BOOK},
    {"EditPhoneBook", {IDD_EDIT_PHONE_BOOK, IDD_EDIT_PHONE_BOOK_RTL}, EditPhoneBookControls},
    {"AddEntry", {IDD_ENTRY, IDD_ENTRY_RTL}, []() noexcept { return EntryControls(true); }},
    {"EditEntry", {IDD_ENTRY, IDD_ENTRY_RTL}, []() noexcept { return EntryControls(false); }},
    {"Group", {IDD_GROUP, IDD_GROUP_RTL}, GroupControls},
    {"EntryDetails", {IDD_ENTRY_DETAILS, IDD_ENTRY_DETAILS_RTL}, EntryDetailsControls},
    {"GroupDetails", {IDD_GROUP_DETAILS, IDD_GROUP_DETAILS_RTL}, GroupDetailsControls},
    {"MapCustomFields", {IDD_MAP_CUSTOM_FIELDS, IDD_MAP_CUSTOM_FIELDS_RTL}, MapCustomFieldsControls},
};

std::wstring ClassOf(HWND window)
{
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    return name;
}

} // namespace

std::span<const DialogCase> AllDialogs()
{
    return kDialogs;
}

bool Is(HWND window, const wchar_t* className)
{
    return window != nullptr && lstrcmpiW(ClassOf(window).c_str(), className) == 0;
}

} // namespace qx::test
