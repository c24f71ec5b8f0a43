#include "pages/recipient_fields.h"

#include "dialog/access_key.h"
#include "phonebook/recent/recent_list.h"
#include "phonebook/ui/group_announcements.h"
#include "res/fax_job_page_ids.h"

#include <stdexcept>
#include <utility>
#include <vector>

namespace qx {

namespace {

constexpr std::size_t kFieldUnits = kTextUnits - 1; // read from one field

// ---- controls -------------------------------------------------------------------------------------------------------

HWND ControlOf(const RecipientFields& fields, int id) noexcept
{
    return GetDlgItem(fields.dialog, id);
}

// In doubt not: a question that fails is answered as by an empty field.
bool Shows(HWND field, const std::wstring& text)
{
    return WindowText(field) == text && !(text.empty() && HasText(field));
}

// A text that stands there already is not set again: every keystroke in the name box may come here. A field that does
// not take the text is emptied, or it would go on showing that of another recipient.
void SetText(const RecipientFields& fields, int id, const wchar_t* text)
{
    const HWND control = ControlOf(fields, id);
    if (!Shows(control, OrEmpty(text)) && !SetWindowTextW(control, OrEmpty(text)) && !SetWindowTextW(control, L""))
        throw std::runtime_error("a field keeps the text of another recipient");
}

std::wstring TextOf(const RecipientFields& fields, int id)
{
    return WindowText(ControlOf(fields, id), kFieldUnits);
}

bool Holds(const RecipientFields& fields, int id) noexcept
{
    return HasText(ControlOf(fields, id));
}

// ---- what the fields show -------------------------------------------------------------------------------------------

// The fax number and the text of a group share a place: the other one is hidden and disabled. The one that is shown
// stands right behind the label, which thus names it to a screen reader.
void ShowGroupText(const RecipientFields& fields, bool group) noexcept
{
    if (IsShown(ControlOf(fields, IDC_GROUP_TEXT)) == group && IsShown(ControlOf(fields, IDC_FAX_NUMBER)) != group)
        return;
    const bool hadFocus = GetFocus() == ControlOf(fields, group ? IDC_FAX_NUMBER : IDC_GROUP_TEXT);
    for (const int id : {IDC_FAX_NUMBER, IDC_GROUP_TEXT}) {
        const bool shown = (id == IDC_GROUP_TEXT) == group;
        EnableControl(fields.dialog, id, shown);
        ShowControl(fields.dialog, id, shown);
        if (shown)
            SetWindowPos(ControlOf(fields, id), ControlOf(fields, IDC_FAX_NUMBER_LABEL), 0, 0, 0, 0,
                         SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
    if (hadFocus)
        FocusControl(fields.dialog, group ? IDC_GROUP_TEXT : IDC_FAX_NUMBER);
    EnableControl(fields.dialog, IDC_COMPANY_LABEL, !group);
    EnableControl(fields.dialog, IDC_COMPANY, !group);
}

void ShowGroup(RecipientFields& fields, const PhoneBookGroup& group)
{
    // Empty when the library has no such text: such a group cannot be taken.
    const std::wstring count = MemberCountText(*fields.texts, group.Members().size());
    const bool isNew = !IsShown(ControlOf(fields, IDC_GROUP_TEXT)) || TextOf(fields, IDC_GROUP_TEXT) != count;
    fields.group = &group;
    SetText(fields, IDC_GROUP_TEXT, count.c_str()); // before the number goes: "To ->" stays on under the mouse
    SetText(fields, IDC_FAX_NUMBER, L"");
    SetText(fields, IDC_COMPANY, L"");
    ShowGroupText(fields, true);
    Announcements* const announcements = Announcements::Of(fields.dialog);
    if (isNew && announcements != nullptr)
        announcements->Say(IDC_GROUP_TEXT, count);
    fields.refill = ReadRecipient(fields);
}

// A null text leaves its field empty.
void ShowEntry(RecipientFields& fields, const wchar_t* faxNumber, const wchar_t* company)
{
    fields.group = nullptr;
    ShowGroupText(fields, false);
    // Set at once: emptied before, the field would turn buttons off under the mouse. A stored number that the filter
    // refuses must not bring back the one of another recipient.
    if (!Shows(ControlOf(fields, IDC_FAX_NUMBER), OrEmpty(faxNumber))) {
        fields.faxNumber.accepted.clear();
        SetText(fields, IDC_FAX_NUMBER, faxNumber);
    }
    SetText(fields, IDC_COMPANY, company);
    fields.refill = ReadRecipient(fields);
}

// Better nobody's number than another one's.
void ShowNobody(RecipientFields& fields) noexcept
{
    fields.numberTaken = Holds(fields, IDC_FAX_NUMBER);
    fields.group = nullptr;
    fields.refill.reset();
    fields.faxNumber.accepted.clear();
    fields.keepAnothers = false;
    for (const int id : {IDC_FAX_NUMBER, IDC_COMPANY, IDC_GROUP_TEXT}) {
        SetWindowTextW(ControlOf(fields, id), L"");
        fields.keepAnothers = fields.keepAnothers || Holds(fields, id);
    }
    ShowGroupText(fields, false);
}

// Without an item the fields are emptied; so they are, and it throws, when they cannot be told apart from what stood
// there before.
void ShowItem(RecipientFields& fields, const PhoneBookItem* item)
try {
    fields.numberTaken = false;
    if (const PhoneBookGroup* const group = AsGroup(item))
        ShowGroup(fields, *group);
    else if (const PhoneBookEntry* const entry = AsEntry(item))
        ShowEntry(fields, entry->FaxNumber(), entry->Company());
    else
        ShowEntry(fields, nullptr, nullptr);
    fields.keepAnothers = false;
} catch (...) {
    ShowNobody(fields);
    throw;
}

void FillEmptyFields(RecipientFields& fields)
{
    if (!Holds(fields, IDC_FAX_NUMBER) && !Holds(fields, IDC_COMPANY))
        FillFieldsFromNameBox(fields);
}

const PhoneBookGroup* RecentGroup(const RecentRecipientList& recent, const std::wstring& name) noexcept
{
    for (const PhoneBookItem* const item : recent.Slots()) {
        const PhoneBookGroup* const group = AsGroup(item);
        if (group != nullptr && EqualUserText(group->GetName(), name))
            return group;
    }
    return nullptr;
}

// After a change of the recent list, which owns the group in the fields: it may have dropped out, or have been replaced
// by one with other members. It is looked for by its name, which stands in the name box.
void RefreshGroup(RecipientFields& fields, const RecentRecipientList& recent)
{
    if (fields.group == nullptr)
        return;
    if (const PhoneBookGroup* const group = RecentGroup(recent, WindowText(ControlOf(fields, IDC_NAME_BOX))))
        ShowGroup(fields, *group);
    else
        FillFieldsFromNameBox(fields);
}

// ---- what the user does ---------------------------------------------------------------------------------------------

// What the user changes is the user's from then on, also when it is changed back.
void ForgetRefillIfChanged(RecipientFields& fields)
{
    const auto& refill = fields.refill;
    if (refill &&
        (TextOf(fields, IDC_FAX_NUMBER) != refill->faxNumber || TextOf(fields, IDC_COMPANY) != refill->company)) {
        fields.refill.reset();
        fields.numberTaken = false;
    }
}

void FilterFaxNumber(RecipientFields& fields)
{
    RefuseOtherCharacters(fields.faxNumber, fields.dialog, IDC_FAX_NUMBER);
    ForgetRefillIfChanged(fields);
}

bool AnswerNameBox(RecipientFields& fields, UINT code)
{
    if (!HandleNameBoxNotification(fields.nameBox, code))
        return false;
    if (code == CBN_SELCHANGE && SendMessageW(fields.nameBox.combo, CB_GETCURSEL, 0, 0) >= 0)
        FillFieldsFromNameBox(fields);
    if (code == CBN_EDITCHANGE)
        FillEmptyFields(fields);
    if (code == CBN_KILLFOCUS)
        SettleFields(fields);
    return true;
}

constexpr Route<RecipientFields> kRoutes[] = {
    {IDC_FAX_NUMBER, EN_CHANGE, FilterFaxNumber},
    {IDC_COMPANY, EN_CHANGE, ForgetRefillIfChanged},
};

} // namespace

// ---- interface ------------------------------------------------------------------------------------------------------

void AttachRecipientFields(RecipientFields& fields, const TextOwner& texts, HWND dialog)
{
    fields.texts = &texts;
    fields.dialog = dialog;
    TypeAheadState& box = fields.nameBox;
    AttachTypeAhead(box, ControlOf(fields, IDC_NAME_BOX), dialog);
    if (box.comboProcedure == nullptr || box.editProcedure == nullptr || box.listProcedure == nullptr)
        throw std::runtime_error("the name box cannot be hooked");
    ShowGroupText(fields, false);
}

void OfferNames(RecipientFields& fields, const RecentRecipientList& recent)
{
    std::vector<SuggestionItem> items;
    for (const PhoneBookItem* const item : recent.Slots()) {
        if (item != nullptr)
            items.push_back({item->GetName(), item});
    }
    SetSuggestionItems(fields.nameBox, std::move(items));
    RefreshGroup(fields, recent);
}

Recipient ReadRecipient(const RecipientFields& fields)
{
    return {FieldText(fields.nameBox.edit, kFieldUnits), FieldText(fields.dialog, IDC_FAX_NUMBER, kFieldUnits),
            FieldText(fields.dialog, IDC_COMPANY, kFieldUnits)};
}

bool HasFaxNumber(const RecipientFields& fields)
{
    return !FieldText(fields.dialog, IDC_FAX_NUMBER, kFieldUnits).empty();
}

RecipientFacts FactsOf(const RecipientFields& fields) noexcept
{
    return {.name = Holds(fields, IDC_NAME_BOX),
            .faxNumber = Holds(fields, IDC_FAX_NUMBER),
            .company = Holds(fields, IDC_COMPANY),
            .group = fields.group != nullptr && Holds(fields, IDC_GROUP_TEXT)};
}

int NumberFieldOf(const RecipientFields& fields) noexcept
{
    return fields.group != nullptr ? IDC_GROUP_TEXT : IDC_FAX_NUMBER;
}

INT_PTR AnswerCommand(RecipientFields& fields, int control, UINT code)
{
    return control == IDC_NAME_BOX ? AnswerNameBox(fields, code) : RunRoute(kRoutes, fields, control, code);
}

void FillFieldsFromNameBox(RecipientFields& fields)
{
    ShowItem(fields, static_cast<const PhoneBookItem*>(GetChosenItemData(fields.nameBox)));
}

void SettleFields(RecipientFields& fields)
{
    if (fields.keepAnothers)
        ShowNobody(fields);
    if (fields.keepAnothers)
        throw std::runtime_error("the fields cannot be emptied");
    if (TakeUnansweredChange(fields.nameBox))
        FillEmptyFields(fields);
    if (!fields.refill)
        return;
    const std::wstring name = FieldText(fields.nameBox.edit, kFieldUnits);
    const SuggestionItem* const found = name != fields.refill->name ? fields.nameBox.suggestions.Find(name) : nullptr;
    if (found == nullptr || found->data == nullptr)
        return;
    // The name that was refilled from, in other letters: only an item of just these letters is another one.
    if (found->text != name && EqualUserText(name, fields.refill->name))
        return;
    const bool hadNumber = Holds(fields, IDC_FAX_NUMBER);
    ShowItem(fields, static_cast<const PhoneBookItem*>(found->data));
    fields.numberTaken = hadNumber && !Holds(fields, IDC_FAX_NUMBER);
    PostMessageW(fields.dialog, kFindFocus, 0, 0); // the focus may still be on its way
}

void AnnounceFields(const RecipientFields& fields, Announcements& announcements)
{
    // The mark stands beside the label.
    announcements.Name(IDC_FAX_NUMBER, WithoutAccessKey(WindowText(ControlOf(fields, IDC_FAX_NUMBER_LABEL))) + L" " +
                                           WindowText(ControlOf(fields, IDC_REQUIRED)));
    announcements.Name(IDC_GROUP_TEXT, WindowText(ControlOf(fields, IDC_GROUP_TEXT)));
}

void ClearFields(RecipientFields& fields)
{
    ClearNameBox(fields.nameBox);
    SetText(fields, IDC_GROUP_TEXT, L"");
    ShowItem(fields, nullptr);
}

void FindFocus(RecipientFields& fields) noexcept
{
    const HWND focus = GetFocus();
    const bool nowhere = focus == nullptr && GetActiveWindow() == GetAncestor(fields.dialog, GA_ROOT);
    const bool onPage = focus != nullptr && IsChild(fields.dialog, focus);
    if (onPage) // not on its way to the button that sends
        fields.numberTaken = false;
    if (nowhere || (onPage && !IsWindowEnabled(focus)))
        FocusControl(fields.dialog, NumberFieldOf(fields));
}

} // namespace qx
