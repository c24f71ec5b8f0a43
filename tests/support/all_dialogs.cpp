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

namespace qx::test {

namespace {

template <class State> DialogCase Case(const char* name, const Dialog<State>& dialog, int fittedButton = 0)
{
    return {.name = name, .ids = dialog.ids, .controls = dialog.controls, .fittedButton = fittedButton};
}

template <class State> DialogCase Page(const char* name, const Dialog<State>& page)
{
    return {.name = name, .ids = page.ids, .controls = page.controls, .isPage = true};
}

const DialogCase kDialogs[] = {
    Page("FaxJobPage", kFaxJobPage),
    Page("SetupPage", kSetupPage),
    Case("EditDefaults", kEditDefaultsDialog),
    Case("AddRecipients", kAddRecipientsDialog, IDC_PICK_EDIT_BOOK),
    Case("EditPhoneBook", kEditPhoneBookDialog),
    Case("AddEntry", kAddEntryDialog),
    Case("EditEntry", kEditEntryDialog),
    Case("Group", kAddGroupDialog),
    Case("EntryDetails", kEntryDetailsDialog),
    Case("GroupDetails", kGroupDetailsDialog),
    Case("MapCustomFields", kMapCustomFieldsDialog),
};

} // namespace

std::span<const DialogCase> AllDialogs()
{
    return kDialogs;
}

} // namespace qx::test
