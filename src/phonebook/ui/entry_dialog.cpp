#include "phonebook/ui/entry_dialog.h"

#include "phonebook/book/phone_book.h"
#include "phonebook/ui/seen_item.h"
#include "res/entry_ids.h"

#include <array>

namespace qx {

namespace {

constexpr Message kDuplicate{{5257, L"This is a duplicate entry.  Please enter a different name or fax number"},
                             MB_OK | MB_ICONSTOP,
                             MessageTitle::Warning};

struct Topics {
    int name, faxNumber, company;
};

// The two modes differ in their help alone.
constexpr std::array<Control, 8> ControlsWith(Topics topics)
{
    return {{
        {.id = IDC_ENTRY_NAME_LABEL, .text = 5208, .fallback = L"Recipient Name:", .topic = topics.name},
        {.id = IDC_ENTRY_NAME, .limit = kNameLimit, .topic = topics.name},
        {.id = IDC_ENTRY_FAX_NUMBER_LABEL, .text = 5209, .fallback = L"Fax Number", .topic = topics.faxNumber},
        {.id = IDC_ENTRY_FAX_NUMBER,
         .limit = kNameLimit,
         .topic = topics.faxNumber,
         .leftToRight = true,
         .noInputMethod = true},
        {.id = IDC_ENTRY_COMPANY_LABEL, .text = 5210, .fallback = L"Company Name", .topic = topics.company},
        {.id = IDC_ENTRY_COMPANY, .limit = kNameLimit, .topic = topics.company},
        {.id = IDOK, .text = 5249, .fallback = L"OK"},
        {.id = IDCANCEL, .text = 5224, .fallback = L"Cancel"},
    }};
}

constexpr auto kAddControls = ControlsWith({.name = 15710, .faxNumber = 15711, .company = 15712});
constexpr auto kEditControls = ControlsWith({.name = 15720, .faxNumber = 15721, .company = 15722});
static_assert(IdsAreUnique(kAddControls));

std::wstring TypedText(const EntryDialogContext& entry, int id)
{
    return FieldText(entry.dialog, id, kNameLimit);
}

// ---- start-up -----------------------------------------------------------------------------------------------------

void ShowEntry(EntryDialogContext& context)
{
    SetFieldText(context.dialog, IDC_ENTRY_NAME, ToShown(context.entry->Name()));
    SetFilteredText(context.faxNumber, context.dialog, IDC_ENTRY_FAX_NUMBER, context.entry->FaxNumber());
    SetFieldText(context.dialog, IDC_ENTRY_COMPANY, ToShown(context.entry->Company()));
}

// ---- commands -----------------------------------------------------------------------------------------------------

void RefreshOk(EntryDialogContext& context)
{
    const auto holdsText = [&](int id) { return HasText(GetDlgItem(context.dialog, id)); };
    EnableControl(context.dialog, IDOK, holdsText(IDC_ENTRY_NAME) && holdsText(IDC_ENTRY_FAX_NUMBER));
}

void FilterFaxNumber(EntryDialogContext& context)
{
    RefuseOtherCharacters(context.faxNumber, context.dialog, IDC_ENTRY_FAX_NUMBER);
    RefreshOk(context);
}

void Accept(EntryDialogContext& context)
{
    PhoneBookEntry candidate;
    // What has its own id may be somebody else after a reload. No entry of the book has none.
    candidate.SetId(IdIn(context.book, *context.entry).value_or(kNoId));
    candidate.SetTexts({ToStored(TypedText(context, IDC_ENTRY_NAME)), TypedText(context, IDC_ENTRY_FAX_NUMBER),
                        ToStored(TypedText(context, IDC_ENTRY_COMPANY))});
    if (context.book.HoldsSameEntry(candidate)) {
        ShowFaxMessage(context, kDuplicate, context.dialog);
        return;
    }
    context.entry->SetTexts(candidate.Texts());
    EndDialog(context.dialog, IDOK);
}

constexpr Route<EntryDialogContext> kRoutes[] = {
    {IDC_ENTRY_NAME, EN_CHANGE, RefreshOk},
    {IDC_ENTRY_FAX_NUMBER, EN_CHANGE, FilterFaxNumber},
    {IDOK, BN_CLICKED, Accept},
};

void Fill(EntryDialogContext& context)
{
    if (context.entry == nullptr) {
        context.made = {context.book.Store().NewEntry(), {&context.book.Store()}};
        context.entry = context.made.get();
        context.entry->SetId(context.book.NextId());
    }
    ShowEntry(context);
    RefreshOk(context);
}

} // namespace

constexpr Dialog<EntryDialogContext> kAddEntryDialog{
    {IDD_ENTRY, IDD_ENTRY_RTL}, {6074, L"-Add Entry To Phone Book"}, kAddControls, kRoutes, Fill};
constexpr Dialog<EntryDialogContext> kEditEntryDialog{
    {IDD_ENTRY, IDD_ENTRY_RTL}, {5247, L"Edit Phone Book Entry"}, kEditControls, kRoutes, Fill};

} // namespace qx
