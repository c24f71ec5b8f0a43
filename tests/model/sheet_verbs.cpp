// On the pages of the sheet, in the defaults dialog and in message boxes.
#include "phonebook/file/xml_text.h"
#include "res/edit_defaults_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "sheet_user.h"
#include "verbs.h"

#include <algorithm>
#include <commctrl.h>
#include <prsht.h>
#include <utility>

namespace qx::test {

namespace {

constexpr std::size_t kMostRows = kMaxRecipients;
constexpr const wchar_t* kNames[] = {L"Team", L"anna",      L"An",     L"Somebody", L" ",
                                     L"",     L"Tea party", L"NOBODY", L"Anna",     L"\x5D0\x5D1\x5D2"};

// ---- the name box ---------------------------------------------------------------------------------------------------

// One of these.
template <WPARAM... keys> void NameKey(SheetUser& user)
{
    constexpr WPARAM kOf[] = {keys...};
    SetFocus(user.nameEdit);
    PressKeyIn(user.nameEdit, user.OneOf(kOf));
}

void NameType(SheetUser& user)
{
    SetFocus(user.nameEdit);
    SendMessageW(user.nameEdit, WM_CHAR, user.OneOf(kKeys), 1);
}

void NamePaste(SheetUser& user)
{
    SetFocus(user.nameEdit);
    PasteInto(user.nameEdit, user.OneOf(kNames));
}

// Or a look at a row, with the mouse over it.
void NameClick(SheetUser& user)
{
    const int count = static_cast<int>(SendMessageW(user.nameList, LB_GETCOUNT, 0, 0));
    if (!IsWindowVisible(user.nameList) || count == 0)
        return;
    const int row = user.Pick(count);
    if (user.Pick(2) == 0)
        HoverRow(user.nameList, row);
    else
        ClickRow(user.nameList, row);
}

void NameDrop(SheetUser& user)
{
    SetFocus(user.nameEdit);
    if (!IsWindowVisible(user.nameList))
        ClickArrowOf(user.combo);
}

void NameSelect(SheetUser& user)
{
    SetFocus(user.nameEdit);
    const int from = user.Pick(4);
    SendMessageW(user.nameEdit, EM_SETSEL, static_cast<WPARAM>(from), user.Pick(8));
}

void NameOpenByKey(SheetUser& user)
{
    SetFocus(user.nameEdit);
    if (user.Pick(2) == 0)
        return PressKeyIn(user.nameEdit, VK_F4);
    PressAltKeyIn(user.nameEdit, user.Pick(2) ? VK_DOWN : VK_UP);
}

void NameWheel(SheetUser& user)
{
    SetFocus(user.nameEdit);
    const HWND window = user.Pick(2) ? user.nameEdit : user.combo;
    SendMessageW(window, WM_MOUSEWHEEL, MAKEWPARAM(0, user.Pick(2) ? WHEEL_DELTA : -WHEEL_DELTA), 0);
}

void NameLeave(SheetUser& user)
{
    SetFocus(user.Control(user.Pick(2) ? IDC_COMPANY : IDC_RECIPIENTS));
}

void NameCompose(SheetUser& user)
{
    SetFocus(user.nameEdit);
    SendMessageW(user.nameEdit, WM_IME_STARTCOMPOSITION, 0, 0);
    SendMessageW(user.nameEdit, WM_CHAR, L'a', 1);
    SendMessageW(user.nameEdit, WM_CHAR, L'n', 1);
    if (user.Pick(4) == 0)
        NameLeave(user);
    SendMessageW(user.nameEdit, WM_IME_ENDCOMPOSITION, 0, 0);
}

// ---- the Fax Job page -----------------------------------------------------------------------------------------------

void PasteField(SheetUser& user)
{
    user.pasted = true;
    if (user.Pick(3) != 0)
        user.Replace(IDC_FAX_NUMBER, user.OneOf(kNumbers));
    else
        user.Replace(IDC_COMPANY, user.OneOf(kCompanies));
}

void TakeGroup(SheetUser& user, const Offer& offer)
{
    const RecentItem* const group = user.recents.Group(offer.fields.name);
    Expect(group != nullptr, "a group that nobody suggested");
    const RecentItem used = *group;
    const bool fits = user.rows.size() + used.members.size() <= kMostRows;
    Expect(user.WasAnswered(offer) != fits, "whether a group finds room");
    if (!fits)
        return;
    user.rows.insert(user.rows.end(), used.members.begin(), used.members.end());
    user.Use(used);
}

void To(SheetUser& user)
{
    const Offer offer = user.OfferOf(user.Fields());
    const bool isGroup = user.IsShown(IDC_GROUP_TEXT);
    user.Press(IDC_TO);
    user.changed = true;
    const std::vector<Recipient> all = RecipientsIn(user.record);
    const bool asShown = all.size() == user.rows.size() + 1 && all.back() == offer.fields;
    if (isGroup || (offer.suggestion && offer.suggestion->isGroup && !asShown))
        return TakeGroup(user, offer);
    if (all.size() == user.rows.size()) { // no room, or a name that has become one without a number
        const bool without = offer.suggestion && user.Text(IDC_FAX_NUMBER).empty();
        return Expect(user.WasAnswered(offer) ? all.size() >= kMostRows : without, "nobody is taken, for no reason");
    }
    Expect(all.size() == user.rows.size() + 1 && all.size() <= kMostRows, "how many are taken");
    user.CheckTaken(offer, all.back());
    user.rows.push_back(all.back());
    user.Use({all.back()});
}

void DeleteRows(SheetUser& user)
{
    user.SelectSome(IDC_RECIPIENTS, 20);
    const std::vector<int> selected = user.SelectedRows(IDC_RECIPIENTS);
    for (auto row = selected.rbegin(); row != selected.rend(); ++row)
        user.rows.erase(user.rows.begin() + *row);
    user.changed = true;
    if (user.Pick(2) == 0)
        user.Press(IDC_DELETE);
    else
        PressKeyIn(user.Control(IDC_RECIPIENTS), VK_DELETE);
}

void AddToPhoneBook(SheetUser& user)
{
    const Offer offer = user.OfferOf(user.Fields());
    if (user.memory.items.size() >= kMostItems)
        return;
    user.Press(IDC_ADD_TO_PHONE_BOOK);
    const Recipient added = user.Fields();
    if (added.name.empty() || added.faxNumber.empty())
        return Expect(!user.WasAnswered(offer), "a box for nobody");
    user.CheckTaken(offer, added);
    Expect(user.WasAnswered(offer) == user.memory.HoldsSame({.texts = added}), "whether an entry is there already");
    if (user.WasAnswered(offer))
        return;
    const Recipient stored{XmlText(added.name), added.faxNumber, XmlText(added.company)};
    const std::vector<BookItem> saved = user.ReadFile();
    const auto made = std::ranges::find_if(
        saved, [&](const BookItem& item) { return item.texts == stored && user.memory.Find(item.id) == nullptr; });
    Expect(made != saved.end(), "what was added to the phone book is not in the file");
    Expect(!user.memory.IsTaken(made->id), "a new entry has the id of another item");
    user.memory.items.push_back(*made);
    user.TakeSaved();
}

void OpenPicker(SheetUser& user)
{
    user.chosen = user.rows;
    user.changed = true;
    user.Press(IDC_PHONE_BOOK);
}

void ChangeCoverPage(SheetUser& user)
{
    switch (user.Pick(3)) {
    case 0:
        user.Press(IDC_COVER_PAGE);
        break;
    case 1:
        user.Replace(IDC_NOTES, user.Pick(2) ? L"Two\r\nlines" : L"");
        break;
    default:
        user.Replace(IDC_SUBJECT, user.Pick(2) ? L"About" : L"");
        break;
    }
}

void ChangeJobsCoverPage(SheetUser& user)
{
    ChangeCoverPage(user);
    user.Note(CoverPageIn(user.Page()));
}

// ---- Send and Cancel ------------------------------------------------------------------------------------------------

template <int page> void GoTo(SheetUser& user)
{
    PropSheet_SetCurSel(user.Dialog(), nullptr, page);
}

void CancelSession(SheetUser& user)
{
    SendMessageW(user.Dialog(), PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
    ExpectEqual(user.record.Cancelled, DWORD{1}, "the outcome of a cancelled session");
}

void CheckSent(SheetUser& user, const Offer& offer, bool showsNumber)
{
    std::vector<Recipient> sent = RecipientsIn(user.record);
    Expect(!sent.empty() && sent.size() <= kMostRows, "a Send to nobody or too many");
    Expect(showsNumber == (sent.size() > user.rows.size()), "whether the number in the fields is sent");
    if (sent.size() > user.rows.size()) {
        user.CheckTaken(offer, sent.back());
        user.Use({sent.back()});
        sent.pop_back();
    } else {
        Expect(offer.fields.faxNumber.empty(), "nobody has seen that what was typed is not sent");
    }
    ExpectEqual(sent, user.rows, "sent to others than the list showed");
    UserDefaults expected = user.settings;
    if (expected[L"NotifyOn"] == DefaultValue(0u))
        expected[L"NotifyMethod"] = 0u;
    UserDefaults settings = DefaultsOf(user.record);
    settings.erase(L"ApplyDefaults");
    ExpectEqual(settings, expected, "sent with other settings");
}

void Send(SheetUser& user)
{
    const HWND sheet = user.Dialog(), faxJob = PropSheet_IndexToHwnd(sheet, kFaxJobPage);
    const Offer offer = user.OfferOf(faxJob != nullptr ? user.FieldsOn(faxJob) : Recipient{});
    SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
    if (user.record.Cancelled == 0) // the sheet itself goes later
        return CheckSent(user, offer, faxJob != nullptr && !user.FieldsOn(faxJob).faxNumber.empty());
    ExpectEqual(user.record.Cancelled, kNothingSaid, "the outcome of a session that goes on");
    const bool numberTaken = !offer.fields.faxNumber.empty() && user.FieldsOn(faxJob).faxNumber.empty();
    Expect(user.WasAnswered(offer) || numberTaken, "a Send is refused without a word");
    user.changed = true;
    ExpectEqual(RecipientsIn(user.record), user.rows, "the recipients after a Send that was refused");
}

// ---- the Setup page and the defaults --------------------------------------------------------------------------------

void ChangeSettings(SheetUser& user)
{
    constexpr int kEdits[] = {IDC_SENDER_NAME, IDC_SENDER_COMPANY};
    constexpr int kNumberEdits[] = {IDC_SENDER_FAX, IDC_SENDER_VOICE};
    constexpr int kButtons[] = {
        IDC_STANDARD,        IDC_FINE,         IDC_SUPERFINE,    IDC_NOTIFY_NEVER, IDC_NOTIFY_THIS_JOB,
        IDC_NOTIFY_ON_ERROR, IDC_NOTIFY_PRINT, IDC_NOTIFY_EMAIL, IDC_PREVIEW};
    constexpr const wchar_t* kEmails[] = {L"a@b", L"", L"nobody"};
    switch (user.Pick(4)) {
    case 0:
        user.Replace(user.OneOf(kEdits), user.OneOf(kCompanies));
        break;
    case 1:
        user.Replace(user.OneOf(kNumberEdits), user.OneOf(kNumbers));
        break;
    case 2:
        user.Replace(IDC_EMAIL, user.OneOf(kEmails));
        break;
    default:
        user.Press(user.OneOf(kButtons));
        break;
    }
}

void ChangeJobsSettings(SheetUser& user)
{
    ChangeSettings(user);
    user.Note(SenderSettingsIn(user.Page()));
}

void AcceptDefaults(SheetUser& user)
{
    const HWND dialog = user.Dialog();
    UserDefaults shown = SenderSettingsIn(dialog);
    shown.merge(CoverPageIn(dialog));
    const bool apply = IsDlgButtonChecked(dialog, IDC_APPLY_DEFAULTS) == BST_CHECKED, first = user.stored.empty();
    const Offer offer = user.OfferOf({});
    user.Press(IDOK);
    if (IsWindowVisible(dialog)) {
        Expect(user.WasAnswered(offer), "defaults are refused without a word");
        return user.CheckDefaults();
    }
    user.stored = shown;
    user.stored[L"ApplyDefaults"] = apply ? 1u : 0u;
    user.CheckDefaults();
    if (!first && !apply)
        return;
    if (shown[L"NotifyMethod"] == DefaultValue(0u)) // what was chosen before stays
        shown.erase(L"NotifyMethod");
    user.Note(shown);
    user.setupShown = user.coverPageShown = false;
}

// ---- boxes ----------------------------------------------------------------------------------------------------------

template <bool yes> void AnswerBox(SheetUser& user)
{
    user.AnswerBox(yes);
}

constexpr Verb kOutside[] = {{"somebody-saves", 1, SomebodySaves}};

constexpr Verb kFaxJob[] = {
    {"type", 80, NameType},
    {"back", 20, NameKey<VK_BACK>},
    {"delete-key", 20, NameKey<VK_DELETE>},
    {"paste-name", 20, NamePaste},
    {"list-key", 20, NameKey<VK_DOWN, VK_UP, VK_DOWN, VK_UP, VK_NEXT, VK_PRIOR>},
    {"enter", 40, NameKey<VK_RETURN>},
    {"escape", 20, NameKey<VK_ESCAPE>},
    {"click", 40, NameClick},
    {"drop", 20, NameDrop},
    {"select", 20, NameSelect},
    {"ends", 20, NameKey<VK_HOME, VK_END>},
    {"open-by-key", 20, NameOpenByKey},
    {"wheel", 20, NameWheel},
    {"compose", 20, NameCompose},
    {"leave", 20, NameLeave},
    {"paste-field", 30, PasteField},
    {"to", 40, To},
    {"delete-rows", 16, DeleteRows},
    {"clear", 6, Press<IDC_CLEAR_FIELDS>},
    {"add-to-phone-book", 8, AddToPhoneBook},
    {"pick", 8, OpenPicker},
    {"cover-page", 12, ChangeJobsCoverPage},
    {"other-page", 10, GoTo<kSetupPage>},
    {"send", 4, Send},
    {"cancel", 1, CancelSession},
    {"somebody-saves", 4, SomebodySaves},
    {"somebody-saves-unnoticed", 1, SomebodySavesUnnoticed},
    {"look", 2, Look},
};

constexpr Verb kSetup[] = {
    {"settings", 40, ChangeJobsSettings},
    {"other-page", 12, GoTo<kFaxJobPage>},
    {"edit-defaults", 4, Press<IDC_EDIT_DEFAULTS>},
    {"edit-phone-book", 6, Press<IDC_EDIT_PHONE_BOOK>},
    {"send", 2, Send},
    {"cancel", 1, CancelSession},
    {"somebody-saves", 2, SomebodySaves},
    {"look", 1, Look},
};

constexpr Verb kDefaults[] = {
    {"settings", 30, ChangeSettings},
    {"cover-page", 20, ChangeCoverPage},
    {"apply", 5, Press<IDC_APPLY_DEFAULTS>},
    {"ok", 8, AcceptDefaults},
    {"cancel", 3, Cancel},
};

constexpr Verb kBox[] = {{"yes", 3, AnswerBox<true>}, {"no", 1, AnswerBox<false>}};

} // namespace

void SomebodySaves(SheetUser& user)
{
    std::vector<BookItem>& items = user.file.items;
    const DWORD id = std::max(user.file.NextId(), user.memory.NextId());
    const int what = user.Pick(4);
    if (what == 0 && items.size() > 20)
        user.file.Delete({user.OneOf(items).id});
    else if (what == 1 && !items.empty())
        items[static_cast<std::size_t>(user.Pick(static_cast<int>(items.size())))].texts.name = user.OneOf(kNewNames);
    else if (items.size() < kMostItems)
        items.push_back(
            {.id = id, .texts = {user.OneOf(kNewNames), std::to_wstring(user.Pick(1000)), user.OneOf(kCompanies)}});
    user.SomebodySaves(true);
}

void SomebodySavesUnnoticed(SheetUser& user)
{
    if (user.file.items.size() >= kMostItems)
        user.file.Delete({user.file.items.front().id});
    user.file.items.push_back(
        {.id = user.file.NextId(), .texts = {L"Unnoticed", std::to_wstring(user.Pick(1000000)), L""}});
    user.SomebodySaves(false);
}

void Look(SheetUser& user)
{
    user.Look();
}

void Cancel(SheetUser& user)
{
    user.Cancel();
}

const std::span<const Verb> kOutsideVerbs = kOutside;
const std::span<const Verb> kFaxJobVerbs = kFaxJob;
const std::span<const Verb> kSetupVerbs = kSetup;
const std::span<const Verb> kDefaultsVerbs = kDefaults;
const std::span<const Verb> kBoxVerbs = kBox;

} // namespace qx::test
