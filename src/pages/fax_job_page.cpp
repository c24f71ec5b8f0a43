#include "pages/fax_job_page.h"

#include "base/text_template.h"
#include "dialog/access_key.h"
#include "pages/cover_page.h"
#include "pages/recipient_rules.h"
#include "pages/send_button.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/recent_list.h"
#include "phonebook/ui/add_recipients_dialog.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/bitmaps_ids.h"
#include "settings/device_state.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

namespace qx {

namespace {

// ---- tables ---------------------------------------------------------------------------------------------------------

constexpr Control kControls[] = {
    {.id = IDC_FAX_TO_GROUP, .text = 5207, .fallback = L"Fax To"},
    {.id = IDC_NAME_LABEL, .text = 5208, .fallback = L"Recipient Name:", .topic = 15583},
    {.id = IDC_NAME_BOX, .limit = kNameLimit, .topic = 15583},
    // Its text is not drawn: a screen reader says it and the tooltip shows it.
    {.id = IDC_PHONE_BOOK, .text = 6093, .fallback = L"-Add Recipients From Phone Book", .topic = 15618},
    {.id = IDC_FAX_NUMBER_LABEL, .text = 5209, .fallback = L"Fax Number:", .topic = 15584},
    {.id = IDC_REQUIRED, .text = 5270, .fallback = L"(required)"},
    {.id = IDC_FAX_NUMBER, .limit = kNameLimit, .topic = 15584, .leftToRight = true, .noInputMethod = true},
    {.id = IDC_GROUP_TEXT},
    {.id = IDC_COMPANY_LABEL, .text = 5210, .fallback = L"Company Name:", .topic = 15585},
    {.id = IDC_COMPANY, .limit = kNameLimit, .topic = 15585},
    {.id = IDC_ADD_TO_PHONE_BOOK, .text = 5211, .fallback = L"Add to Phone Book", .topic = 15586},
    {.id = IDC_CLEAR_FIELDS, .text = 5212, .fallback = L"Clear Fields", .topic = 15587},
    {.id = IDC_TO, .text = 5214, .fallback = L"To ->", .topic = 15589},
    {.id = IDC_RECIPIENTS_LABEL, .text = 5213, .fallback = L"Fax Recipients:", .topic = 15588},
    {.id = IDC_RECIPIENTS, .topic = 15588},
    {.id = IDC_DELETE, .text = 5330, .fallback = L"Delete", .topic = 15590},
    {.id = IDC_COVER_PAGE_GROUP, .text = 5216, .fallback = L"Include With Fax"},
    {.id = IDC_COVER_PAGE, .text = 6094, .fallback = L"Co&ver Page", .topic = 15591},
    {.id = IDC_NOTES_LABEL, .text = 5218, .fallback = L"Notes:", .topic = 15592},
    {.id = IDC_NOTES, .limit = kNotesLimit, .topic = 15592},
    {.id = IDC_SUBJECT_LABEL, .text = 5219, .fallback = L"Subject:", .topic = 15593},
    {.id = IDC_SUBJECT, .limit = kNameLimit, .topic = 15593},
    {.id = IDC_IMAGE_LABEL, .text = 5310, .fallback = L"Image:", .topic = 15625},
    {.id = IDC_IMAGE, .limit = kImagePathLimit, .topic = 15625, .leftToRight = true},
    {.id = IDC_BROWSE, .text = 5220, .fallback = L"Browse", .topic = 15594},
    {.id = IDC_BILLING_GROUP, .text = 5221, .fallback = L"Billing Information"},
    {.id = IDC_BILLING_LABEL, .text = 5222, .fallback = L"Billing Code", .topic = 15595},
    {.id = IDC_BILLING_CODE, .limit = kBillingCodeLimit, .topic = 15595, .leftToRight = true, .noInputMethod = true},
};
static_assert(IdsAreUnique(kControls));

// Headings without a built-in text.
constexpr unsigned kColumns[] = {1104, 5269, 6216}; // name, fax number, company
constexpr int kColumnWidth = 112;                   // pixels

constexpr unsigned kOneMember = 6108; // also for none
constexpr unsigned kSomeMembers = 6109;

// The two warnings carry the stop icon on purpose.
constexpr Message kTooManyRecipients{
    {5265, L"The maximum number of fax numbers has been entered."}, MB_OK | MB_ICONSTOP, MessageTitle::Error};
constexpr Message kDuplicate{{5257, L"This is a duplicate entry.Please enter a different name or fax number"},
                             MB_OK | MB_ICONSTOP,
                             MessageTitle::Warning};
constexpr Message kPhoneBookFull{
    {6098, L"The maximum number of phone book entries has been entered."}, MB_OK | MB_ICONSTOP, MessageTitle::Warning};
constexpr Message kNoRecipient{
    {5255, L"At least one fax number is required."}, MB_OK | MB_ICONSTOP, MessageTitle::Error};
constexpr Text kInformationMissing{5256};
constexpr Text kBillingCode{5317};
constexpr Text kBillingCodeTooShort{5324, L"The billing code must be at least %d digits"};

// Posted to the page: a field may have been disabled under the focus.
constexpr UINT kFindFocus = WM_USER + 103;

constexpr std::size_t kFieldUnits = kTextUnits - 1; // read from one field

// ---- controls -------------------------------------------------------------------------------------------------------

HWND ControlOf(const FaxJobPage& page, int id) noexcept
{
    return GetDlgItem(page.dialog, id);
}

void Enable(const FaxJobPage& page, int id, bool enabled) noexcept
{
    EnableControl(page.dialog, id, enabled);
}

void Show(const FaxJobPage& page, int id, bool shown) noexcept
{
    ShowControl(page.dialog, id, shown);
}

// A text that stands there already is not set again: every keystroke in the name box may come here.
void SetText(const FaxJobPage& page, int id, const wchar_t* text)
{
    const HWND control = ControlOf(page, id);
    if (WindowText(control) != OrEmpty(text))
        SetWindowTextW(control, OrEmpty(text));
}

std::wstring TextOf(const FaxJobPage& page, int id)
{
    return WindowText(ControlOf(page, id), kFieldUnits);
}

// As the page decides, also while another page of the sheet is shown.
bool IsShown(const FaxJobPage& page, int id) noexcept
{
    return (GetWindowLongPtrW(ControlOf(page, id), GWL_STYLE) & WS_VISIBLE) != 0;
}

bool Holds(const FaxJobPage& page, int id) noexcept
{
    return HasText(ControlOf(page, id));
}

void Focus(const FaxJobPage& page, int id) noexcept
{
    FocusControl(page.dialog, id);
}

void ShowMessage(const FaxJobPage& page, const Message& message)
{
    ShowFaxMessage(page, message, page.dialog);
}

// ---- the fields -----------------------------------------------------------------------------------------------------

std::wstring ReadField(HWND field)
{
    return FieldText(field, kFieldUnits);
}

// Throws when a field cannot be read.
Recipient RecipientInFields(const FaxJobPage& page)
{
    return {ReadField(page.nameBox.edit), ReadField(ControlOf(page, IDC_FAX_NUMBER)),
            ReadField(ControlOf(page, IDC_COMPANY))};
}

void UpdateRecipientButtons(FaxJobPage& page)
{
    const RecipientButtons buttons = ButtonsFor({.name = Holds(page, IDC_NAME_BOX),
                                                 .faxNumber = Holds(page, IDC_FAX_NUMBER),
                                                 .company = Holds(page, IDC_COMPANY)});
    Enable(page, IDC_CLEAR_FIELDS, buttons.clear);
    Enable(page, IDC_ADD_TO_PHONE_BOOK, buttons.addToPhoneBook);
}

// What the user changes is the user's from then on, also when it is changed back.
void ForgetRefillIfChanged(FaxJobPage& page)
{
    const auto& refill = page.refill;
    if (refill && (TextOf(page, IDC_FAX_NUMBER) != refill->faxNumber || TextOf(page, IDC_COMPANY) != refill->company))
        page.refill.reset();
}

void AnswerCompany(FaxJobPage& page)
{
    ForgetRefillIfChanged(page);
    UpdateRecipientButtons(page);
}

void FilterFaxNumber(FaxJobPage& page)
{
    RefuseOtherCharacters(page.faxNumber, ControlOf(page, IDC_FAX_NUMBER));
    ForgetRefillIfChanged(page);
    Enable(page, IDC_TO, Holds(page, IDC_FAX_NUMBER));
    UpdateRecipientButtons(page);
}

void FilterBillingCode(FaxJobPage& page)
{
    RefuseOtherCharacters(page.billingCode, ControlOf(page, IDC_BILLING_CODE));
}

// The fax number and the text of a group share a place: the other one is hidden and disabled. The one that is shown
// stands right behind the label, which thus names it to a screen reader.
void ShowGroupText(const FaxJobPage& page, bool group) noexcept
{
    if (IsShown(page, IDC_GROUP_TEXT) == group && IsShown(page, IDC_FAX_NUMBER) != group)
        return;
    const bool hadFocus = GetFocus() == ControlOf(page, group ? IDC_FAX_NUMBER : IDC_GROUP_TEXT);
    for (const int id : {IDC_FAX_NUMBER, IDC_GROUP_TEXT}) {
        const bool shown = (id == IDC_GROUP_TEXT) == group;
        Enable(page, id, shown);
        Show(page, id, shown);
        if (shown)
            SetWindowPos(ControlOf(page, id), ControlOf(page, IDC_FAX_NUMBER_LABEL), 0, 0, 0, 0,
                         SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
    if (hadFocus)
        Focus(page, group ? IDC_GROUP_TEXT : IDC_FAX_NUMBER);
    Enable(page, IDC_COMPANY_LABEL, !group);
    Enable(page, IDC_COMPANY, !group);
}

// Empty when the library has no such text: such a group cannot be taken.
std::wstring MemberCountText(const FaxJobPage& page, std::size_t members)
{
    const std::wstring text = LocalizedText(page, {members < 2 ? kOneMember : kSomeMembers});
    return FillTemplate(text, L"", {static_cast<int>(members)});
}

void ShowGroup(FaxJobPage& page, const PhoneBookGroup& group)
{
    page.group = &group;
    SetText(page, IDC_FAX_NUMBER, L"");
    SetText(page, IDC_COMPANY, L"");
    ShowGroupText(page, true);
    SetText(page, IDC_GROUP_TEXT, MemberCountText(page, group.Members().size()).c_str());
    Enable(page, IDC_TO, Holds(page, IDC_GROUP_TEXT));
    page.refill = RecipientInFields(page);
}

// A null text leaves its field empty.
void ShowEntry(FaxJobPage& page, const wchar_t* faxNumber, const wchar_t* company)
{
    page.group = nullptr;
    ShowGroupText(page, false);
    // Emptied first: a stored number that the filter refuses must not bring back the one of another recipient.
    if (TextOf(page, IDC_FAX_NUMBER) != OrEmpty(faxNumber)) {
        SetText(page, IDC_FAX_NUMBER, L"");
        SetText(page, IDC_FAX_NUMBER, faxNumber);
    }
    SetText(page, IDC_COMPANY, company);
    Enable(page, IDC_TO, Holds(page, IDC_FAX_NUMBER));
    page.refill = RecipientInFields(page);
}

// Without an item the fields are emptied.
void ShowItem(FaxJobPage& page, const PhoneBookItem* item)
{
    if (const PhoneBookGroup* const group = AsGroup(item))
        ShowGroup(page, *group);
    else if (const PhoneBookEntry* const entry = AsEntry(item))
        ShowEntry(page, entry->FaxNumber(), entry->Company());
    else
        ShowEntry(page, nullptr, nullptr);
}

void RefillFields(FaxJobPage& page)
{
    ShowItem(page, static_cast<const PhoneBookItem*>(GetChosenItemData(page.nameBox)));
    UpdateRecipientButtons(page);
}

void RefillEmptyFields(FaxJobPage& page)
{
    if (!Holds(page, IDC_FAX_NUMBER) && !Holds(page, IDC_COMPANY))
        SendMessageW(page.dialog, kSuggestionChosen, 0, -1);
}

// While the user types, the fields are refilled as long as they are empty: typing on from one name to another leaves
// the number of the first. Before anything is done with the fields, and when the user leaves the name, the one that
// stands there gets its own number. What the user has put into the fields stays, and so it does for an unknown name.
void SettleFields(FaxJobPage& page)
{
    if (TakeUnansweredChange(page.nameBox))
        RefillEmptyFields(page);
    if (!page.refill)
        return;
    const std::wstring name = TextOf(page, IDC_NAME_BOX);
    const SuggestionItem* const found = name != page.refill->name ? SuggestionOfText(page.nameBox) : nullptr;
    if (found == nullptr || found->data == nullptr)
        return;
    // The name that was refilled from, in other letters: only an item of just these letters is another one.
    if (found->text != name && EqualUserText(name, page.refill->name))
        return;
    ShowItem(page, static_cast<const PhoneBookItem*>(found->data));
    UpdateRecipientButtons(page);
    PostMessageW(page.dialog, kFindFocus, 0, 0); // the focus may still be on its way
}

// A group takes the place of the very field, an entry without number disables the very button that the user was on the
// way to.
void FindFocus(const FaxJobPage& page) noexcept
{
    const HWND focus = GetFocus();
    const bool nowhere = focus == nullptr && GetActiveWindow() == GetAncestor(page.dialog, GA_ROOT);
    const bool inDisabled = focus != nullptr && IsChild(page.dialog, focus) && !IsWindowEnabled(focus);
    if (nowhere || inDisabled)
        Focus(page, page.group != nullptr ? IDC_GROUP_TEXT : IDC_FAX_NUMBER);
}

const PhoneBookGroup* RecentGroup(const FaxJobPage& page, const std::wstring& name) noexcept
{
    for (const PhoneBookItem* const item : page.recent->Slots()) {
        const PhoneBookGroup* const group = AsGroup(item);
        if (group != nullptr && EqualUserText(group->GetName(), name))
            return group;
    }
    return nullptr;
}

// After a change of the recent list, which owns the group in the fields: it may have gone, or have other members. It is
// looked for by its name, which stands in the name box: another item may meanwhile lie where it lay.
void RefreshGroup(FaxJobPage& page)
{
    if (page.group == nullptr)
        return;
    if (const PhoneBookGroup* const group = RecentGroup(page, WindowText(ControlOf(page, IDC_NAME_BOX))))
        ShowGroup(page, *group);
    else
        RefillFields(page);
}

void ClearRecipientFields(FaxJobPage& page)
{
    ClearNameBox(page.nameBox);
    SetText(page, IDC_GROUP_TEXT, L"");
    ShowEntry(page, nullptr, nullptr);
    UpdateRecipientButtons(page);
    Focus(page, IDC_NAME_BOX);
}

void AnswerNameBox(FaxJobPage& page, UINT code)
{
    if (!HandleNameBoxNotification(page.nameBox, code))
        return;
    if (code == CBN_SELCHANGE) {
        const LRESULT row = SendDlgItemMessageW(page.dialog, IDC_NAME_BOX, CB_GETCURSEL, 0, 0);
        if (row >= 0)
            SendMessageW(page.dialog, kSuggestionChosen, 0, row);
    }
    if (code == CBN_EDITCHANGE)
        RefillEmptyFields(page);
    if (code == CBN_KILLFOCUS)
        SettleFields(page);
    UpdateRecipientButtons(page);
}

// ---- the recipient list ---------------------------------------------------------------------------------------------

int RowCount(const FaxJobPage& page) noexcept
{
    return ListView_GetItemCount(ControlOf(page, IDC_RECIPIENTS));
}

bool SetCell(HWND list, int row, int column, const wchar_t* text) noexcept
{
    LVITEMW cell{};
    cell.iSubItem = column;
    cell.pszText = const_cast<wchar_t*>(OrEmpty(text));
    return SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&cell)) != FALSE;
}

// False, and no row, when the list does not take all of it.
bool AppendRow(const FaxJobPage& page, const FaxRecipient& recipient) noexcept
{
    const HWND list = ControlOf(page, IDC_RECIPIENTS);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = RowCount(page);
    item.pszText = const_cast<wchar_t*>(OrEmpty(recipient.Name));
    const auto row = static_cast<int>(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    if (row < 0)
        return false;
    if (SetCell(list, row, 1, recipient.FaxNumber) && SetCell(list, row, 2, recipient.Company))
        return true;
    ListView_DeleteItem(list, row);
    return false;
}

void RemoveRowsFrom(const FaxJobPage& page, int row) noexcept
{
    const HWND list = ControlOf(page, IDC_RECIPIENTS);
    for (int last = RowCount(page) - 1; last >= row; --last)
        ListView_DeleteItem(list, last);
}

// All recipients of the job or no row: some of them would pass for all.
void RefillList(FaxJobPage& page) noexcept
{
    const HWND list = ControlOf(page, IDC_RECIPIENTS);
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    ListView_DeleteAllItems(list);
    const auto append = [&page](const FaxRecipient* recipient) { return AppendRow(page, *recipient); };
    if (!std::ranges::all_of(RecipientsOf(*page.job), append))
        ListView_DeleteAllItems(list);
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    Enable(page, IDC_DELETE, false);
}

// Whether there is a row for each recipient. When there is not, the list is filled again, for the user to look at.
bool ListShowsJob(FaxJobPage& page) noexcept
{
    if (RowCount(page) == static_cast<int>(RecipientsOf(*page.job).size()))
        return true;
    RefillList(page);
    return false;
}

void SelectionChanged(FaxJobPage& page)
{
    Enable(page, IDC_DELETE, ListView_GetSelectedCount(ControlOf(page, IDC_RECIPIENTS)) > 0);
}

void SelectAllRows(FaxJobPage& page)
{
    ListView_SetItemState(ControlOf(page, IDC_RECIPIENTS), -1, LVIS_SELECTED, LVIS_SELECTED);
}

// Throws when memory is short.
UniqueItem<PhoneBookEntry> MakeEntry(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company)
{
    UniqueItem<PhoneBookEntry> entry(MakeRecipient(name, faxNumber, company));
    if (entry == nullptr)
        throw std::bad_alloc();
    return entry;
}

UniqueItem<PhoneBookEntry> MakeEntry(const Recipient& recipient)
{
    return MakeEntry(recipient.name.c_str(), recipient.faxNumber.c_str(), recipient.company.c_str());
}

// List and record take all of them, or neither takes any. No duplicate test: a recipient may stand in the job as often
// as the user likes.
bool AddWithRows(FaxJobPage& page, std::span<UniqueItem<PhoneBookEntry>> entries) noexcept
{
    const int before = RowCount(page);
    if (!MakeRoomForMore(*page.job, static_cast<INT32>(entries.size())))
        return false;
    const auto append = [&page](const auto& entry) { return AppendRow(page, *AsRecipient(entry.get())); };
    if (!std::ranges::all_of(entries, append)) {
        RemoveRowsFrom(page, before);
        return false;
    }
    for (UniqueItem<PhoneBookEntry>& entry : entries)
        AddRecipient(*page.job, AsRecipient(entry.release())); // there is room
    return true;
}

void RememberRecent(FaxJobPage& page, const PhoneBookItem& item)
{
    page.recent->AddRecent(&item, page.book);
    Guarded([&] { page.recent->Save(); }); // the name box must not go on showing an item that has dropped out
    RefreshNameBoxList(page);
}

void RememberRecent(FaxJobPage& page, const Recipient& recipient)
{
    PhoneBookEntry entry; // the list keeps a copy of its own
    entry.SetName(recipient.name.c_str());
    entry.SetFaxNumber(recipient.faxNumber.c_str());
    entry.SetCompany(recipient.company.c_str());
    RememberRecent(page, entry);
}

void AddGroupMembers(FaxJobPage& page, const PhoneBookGroup& group)
{
    if (!GroupFits(RowCount(page), group.Members().size())) {
        ShowMessage(page, kTooManyRecipients);
        return;
    }
    std::vector<UniqueItem<PhoneBookEntry>> entries;
    for (const PhoneBookItem* const member : group.Members()) {
        if (const PhoneBookEntry* const entry = AsEntry(member))
            entries.push_back(MakeEntry(entry->GetName(), entry->FaxNumber(), entry->Company()));
    }
    if (!AddWithRows(page, entries))
        return;
    RememberRecent(page, group);
    ClearRecipientFields(page);
}

void AddEntry(FaxJobPage& page)
{
    if (!RecipientFits(RowCount(page))) {
        ShowMessage(page, kTooManyRecipients);
        return;
    }
    const Recipient recipient = RecipientInFields(page);
    UniqueItem<PhoneBookEntry> entry = MakeEntry(recipient);
    if (!AddWithRows(page, {&entry, 1}))
        return;
    ClearRecipientFields(page);
    RememberRecent(page, recipient);
}

// What the fields show is what is added: a group while its text stands in them, else what was typed or picked.
void AddToRecipients(FaxJobPage& page)
{
    if (!ListShowsJob(page))
        return;
    SettleFields(page);
    if (!IsWindowEnabled(ControlOf(page, IDC_TO)))
        return;
    if (page.group != nullptr)
        AddGroupMembers(page, *page.group);
    else
        AddEntry(page);
}

void DeleteSelected(FaxJobPage& page)
{
    if (!ListShowsJob(page))
        return;
    const HWND list = ControlOf(page, IDC_RECIPIENTS);
    int before = -1;
    for (UINT left = ListView_GetSelectedCount(list); left > 0; --left) {
        const int row = ListView_GetNextItem(list, before, LVNI_SELECTED);
        if (row < 0 || !ListView_DeleteItem(list, row))
            break;
        DeleteRecipient(*page.job, row);
        before = row - 1;
    }
    Enable(page, IDC_DELETE, false);
    Focus(page, IDC_RECIPIENTS);
}

void AnswerListKey(FaxJobPage& page, WORD key)
{
    if (key == VK_DELETE && ListView_GetSelectedCount(ControlOf(page, IDC_RECIPIENTS)) > 0)
        DeleteSelected(page);
    else if (key == 'A' && GetKeyState(VK_CONTROL) < 0)
        SelectAllRows(page);
}

// ---- the phone book -------------------------------------------------------------------------------------------------

void PickFromPhoneBook(FaxJobPage& page)
{
    AddRecipientsContext context(page, *page.job, *page.book, page.recent);
    ShowModal<kAddRecipientsDialog>(page.dialog, context);
    // Whatever its result: the picker writes the record itself, and what it changed in the book is in the file.
    RefillList(page);
    page.book->Reload();
    RefreshNameBoxList(page);
}

bool AddToPhoneBook(FaxJobPage& page, const Recipient& recipient)
{
    PhoneBookEntry* const entry = page.book->Store().NewEntry();
    entry->SetId(page.book->NextId()); // drawn before the duplicate test: a refused entry leaves a gap
    entry->SetName(recipient.name.c_str());
    entry->SetFaxNumber(recipient.faxNumber.c_str());
    entry->SetCompany(recipient.company.c_str());
    if (page.book->HoldsSameEntry(*entry)) {
        page.book->Store().Discard(entry);
        return false;
    }
    page.book->Add(entry);
    page.book->Save(page.book->GetCount());
    return true;
}

void AddFieldsToPhoneBook(FaxJobPage& page)
{
    SettleFields(page);
    const Recipient recipient = RecipientInFields(page);
    if (page.book->GetCount() >= kMaxPhoneBookItems) {
        ShowMessage(page, kPhoneBookFull);
    } else if (!recipient.name.empty() && !recipient.faxNumber.empty()) {
        if (AddToPhoneBook(page, recipient)) {
            RefreshNameBoxList(page);
            BroadcastPhoneBookChanged();
        } else {
            ShowMessage(page, kDuplicate);
        }
    }
    Focus(page, IDC_NAME_BOX);
}

// ---- cover page and billing code ------------------------------------------------------------------------------------

void ToggleCoverPage(FaxJobPage& page)
{
    page.checkImage = OnCoverPageToggled(page.dialog);
}

void Browse(FaxJobPage& page)
{
    BrowseForOverlayImage(page.dialog);
}

void LoadCoverPage(FaxJobPage& page)
{
    page.checkImage = LoadCoverPageFields(page.dialog, *page.job);
    if (page.job->CoverPageLock == kCoverPageLocked) {
        LockCoverPageToOverlay(page.dialog);
        page.checkImage = false;
    }
    // Last: where there can be no cover page, none is forced on either.
    if (IsSpoolerThunkHost()) {
        ForbidCoverPage(page.dialog);
        page.checkImage = false;
    }
}

void LoadBillingCode(FaxJobPage& page)
{
    if (page.job->BillingCodeEnabled != 0) {
        SetFilteredText(page.billingCode, ControlOf(page, IDC_BILLING_CODE), page.job->BillingCode);
        return;
    }
    for (const int id : {IDC_BILLING_GROUP, IDC_BILLING_LABEL, IDC_BILLING_CODE})
        Show(page, id, false);
}

// ---- Send -----------------------------------------------------------------------------------------------------------

SendFacts FactsOf(const FaxJobPage& page)
{
    const std::wstring image = FieldText(ControlOf(page, IDC_IMAGE), kImagePathLimit);
    return {.rows = static_cast<int>(RecipientsOf(*page.job).size()), // a row each, or the Send is refused
            .typed = !ReadField(ControlOf(page, IDC_FAX_NUMBER)).empty(),
            .billingCodeWanted = page.job->BillingCodeEnabled != 0,
            .billingCodeLength = ReadField(ControlOf(page, IDC_BILLING_CODE)).size(),
            .billingCodeMinLength = page.job->BillingCodeMinLength,
            .image = page.checkImage && !image.empty() ? CheckImage(image) : ImageProblem::None};
}

void ShowBillingCodeMissing(const FaxJobPage& page)
{
    const std::wstring text = LocalizedText(page, kInformationMissing) + L"\n" + LocalizedText(page, kBillingCode);
    ShowPreparedMessage(page, text, MB_OK | MB_ICONSTOP, MessageTitle::Error, page.dialog);
}

void ShowBillingCodeTooShort(const FaxJobPage& page)
{
    const std::wstring text = FillTemplate(LocalizedText(page, kBillingCodeTooShort), kBillingCodeTooShort.fallback,
                                           {static_cast<int>(page.job->BillingCodeMinLength)});
    ShowPreparedMessage(page, text, MB_OK | MB_ICONSTOP, MessageTitle::Error, page.dialog);
}

// Tells the user and answers the field to correct.
int ReportProblem(const FaxJobPage& page, SendProblem problem)
{
    switch (problem) {
    case SendProblem::NoRecipient:
        ShowMessage(page, kNoRecipient);
        return IDC_FAX_NUMBER;
    case SendProblem::TooManyRecipients:
        ShowMessage(page, kTooManyRecipients);
        return IDC_FAX_NUMBER;
    case SendProblem::BillingCodeMissing:
        ShowBillingCodeMissing(page);
        return IDC_BILLING_CODE;
    case SendProblem::BillingCodeTooShort:
        ShowBillingCodeTooShort(page);
        return IDC_BILLING_CODE;
    case SendProblem::ImageNotFound:
        ShowMessage(page, ImageMessage(ImageProblem::NotFound));
        return IDC_IMAGE;
    case SendProblem::ImageNotABitmap:
        ShowMessage(page, ImageMessage(ImageProblem::NotABitmap));
        return IDC_IMAGE;
    }
    return IDC_FAX_NUMBER;
}

// The recipient that still stands in the fields, if any. False when memory is short.
bool PrepareTypedRecipient(FaxJobPage& page, FaxJobData& draft)
{
    const Recipient recipient = RecipientInFields(page);
    if (recipient.faxNumber.empty())
        return true;
    UniqueItem<PhoneBookEntry> entry = MakeEntry(recipient);
    if (!MakeRoomForMore(*page.job, 1) || !AddRecipient(draft, AsRecipient(entry.get())))
        return false;
    entry.release();
    return true;
}

// The control to correct after a failed Send; null before the first one. A group covers the fax number.
HWND ErrorFocus(const FaxJobPage& page) noexcept
{
    const bool covered = page.errorField == IDC_FAX_NUMBER && page.group != nullptr;
    return page.errorField != 0 ? ControlOf(page, covered ? IDC_GROUP_TEXT : page.errorField) : nullptr;
}

INT_PTR Send(FaxJobPage& page)
{
    page.sheet->Round().Ask(SendRound::kFaxJob);
    page.draft.reset();
    if (!ValidateFaxJobPage(page)) {
        FocusAfterRefusal(ErrorFocus(page));
        return Answer(page.dialog, PSNRET_INVALID);
    }
    if (!PrepareFaxJobPage(page))
        return Answer(page.dialog, PSNRET_INVALID);
    if (page.sheet->Round().Accept(SendRound::kFaxJob))
        page.sheet->SendJob();
    return Answer(page.dialog, PSNRET_NOERROR);
}

INT_PTR Cancel(FaxJobPage& page)
{
    page.job->Cancelled = 1;
    return Answer(page.dialog, 0);
}

// Once a Send has failed, for good: the page opens on the field that failed last.
INT_PTR AnswerInitialFocus(FaxJobPage& page)
{
    return AnswerWithField(page.dialog, ErrorFocus(page));
}

// ---- start-up -------------------------------------------------------------------------------------------------------

bool InsertColumns(const FaxJobPage& page, HWND list)
{
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i) {
        std::wstring heading = LocalizedText(page, {kColumns[i]});
        LVCOLUMNW column{};
        column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
        column.fmt = LVCFMT_LEFT;
        column.cx = kColumnWidth;
        column.pszText = heading.data();
        column.iSubItem = i;
        if (SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column)) < 0)
            return false;
    }
    return true;
}

void SetUpList(const FaxJobPage& page)
{
    const HWND list = ControlOf(page, IDC_RECIPIENTS);
    if (!InsertColumns(page, list))
        return;
    SetWindowLongPtrW(list, GWL_STYLE, GetWindowLongPtrW(list, GWL_STYLE) | LVS_SHOWSELALWAYS);
    constexpr DWORD kStyles = LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES;
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, kStyles, kStyles);
}

// Its text is a dialog's title as well, in which no letter is marked: a letter that nothing else has is marked here.
void GivePhoneBookButtonAKey(FaxJobPage& page)
{
    const HWND button = ControlOf(page, IDC_PHONE_BOOK);
    std::wstring taken = AccessKeysIn(page.dialog, button) + AccessKeysIn(GetParent(page.dialog), button);
    for (const Text& caption : {kSendText, kPreviewAndSendText}) // the button has the one or the other
        taken += AccessKeyOf(LocalizedText(page, caption));
    const std::wstring text = WindowText(button);
    page.phoneBookButton.Name(text, WithAccessKey(text, taken));
}

// ---- messages -------------------------------------------------------------------------------------------------------

// Noted before, since the fields may not take it.
void ReloadCoverPage(FaxJobPage& page)
{
    page.coverPageIsOld = true;
    LoadCoverPage(page);
    page.coverPageIsOld = false;
}

// Half of it would complete names without filling in their numbers.
bool IsWholeNameBox(const TypeAheadState& box) noexcept
{
    return box.comboProcedure != nullptr && box.editProcedure != nullptr && box.listProcedure != nullptr;
}

// The Setup page may have copied the user's defaults into the job since the page was last seen.
INT_PTR AnswerActivation(FaxJobPage& page)
{
    FaxJobData& job = *page.job;
    const bool reload = job.DefaultsSaved != 0 || (job.ApplyDefaults != 0 && job.CoverPageFromDefaults != 0);
    if (reload) {
        job.DefaultsSaved = 0;
        job.CoverPageFromDefaults = 0;
        ReloadCoverPage(page);
    }
    RefreshNameBoxList(page);
    return Answer(page.dialog, 0);
}

INT_PTR AnswerSheet(FaxJobPage& page, UINT code)
{
    switch (code) {
    case PSN_SETACTIVE:
        return AnswerActivation(page);
    case PSN_APPLY:
        return Send(page);
    case PSN_RESET:
        return Cancel(page);
    case PSN_QUERYINITIALFOCUS:
        return AnswerInitialFocus(page);
    default:
        return FALSE;
    }
}

INT_PTR AnswerNotification(FaxJobPage& page, const NMHDR& header)
{
    if (header.idFrom == IDC_RECIPIENTS && header.code == LVN_KEYDOWN) {
        AnswerListKey(page, reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey);
        return TRUE;
    }
    return AnswerSheet(page, header.code);
}

constexpr Route<FaxJobPage> kRoutes[] = {
    {IDC_FAX_NUMBER, EN_CHANGE, FilterFaxNumber},
    {IDC_COMPANY, EN_CHANGE, AnswerCompany},
    {IDC_PHONE_BOOK, BN_CLICKED, PickFromPhoneBook},
    {IDC_CLEAR_FIELDS, BN_CLICKED, ClearRecipientFields},
    {IDC_ADD_TO_PHONE_BOOK, BN_CLICKED, AddFieldsToPhoneBook},
    {IDC_TO, BN_CLICKED, AddToRecipients},
    {IDC_RECIPIENTS, static_cast<UINT>(LVN_ITEMCHANGED), SelectionChanged},
    {IDC_RECIPIENTS, static_cast<UINT>(NM_SETFOCUS), SelectionChanged},
    {IDC_DELETE, BN_CLICKED, DeleteSelected},
    {IDC_COVER_PAGE, BN_CLICKED, ToggleCoverPage},
    {IDC_BROWSE, BN_CLICKED, Browse},
    {IDC_BILLING_CODE, EN_CHANGE, FilterBillingCode},
};

} // namespace

// ---- what the dialog machinery looks for ----------------------------------------------------------------------------

void Initialize(FaxJobPage& page)
{
    AttachTypeAhead(page.nameBox, ControlOf(page, IDC_NAME_BOX), page.dialog);
    if (!IsWholeNameBox(page.nameBox))
        throw std::runtime_error("the name box cannot be hooked");
    RefreshNameBoxList(page);
    SetUpControls(page, page.dialog, kControls);
    SetUpList(page);
    RefillList(page);
    for (const int id : {IDC_CLEAR_FIELDS, IDC_TO, IDC_ADD_TO_PHONE_BOOK})
        Enable(page, id, false);
    ShowGroupText(page, false);
    LoadBillingCode(page);
    LoadCoverPage(page);
    page.phoneBookButton.Attach(ControlOf(page, IDC_PHONE_BOOK), IDB_PHONE_BOOK);
    if (!page.sheet->PageCreated(GetParent(page.dialog)))
        throw std::runtime_error("the sheet cannot be hooked");
    GivePhoneBookButtonAKey(page); // last: the sheet's buttons have their captions
}

void CouldNotBeFilled(FaxJobPage& page) noexcept
{
    DetachTypeAhead(page.nameBox); // the page hears of its end no more
    EndSheetAsCancelled(page.dialog, *page.job);
}

std::span<const Route<FaxJobPage>> RoutesOf(const FaxJobPage&) noexcept
{
    return kRoutes;
}

INT_PTR HandleOther(FaxJobPage& page, UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case WM_COMMAND:
        if (LOWORD(w) == IDC_NAME_BOX)
            AnswerNameBox(page, HIWORD(w));
        return FALSE;
    case WM_NOTIFY:
        return AnswerNotification(page, *reinterpret_cast<const NMHDR*>(l));
    case kSuggestionChosen:
        RefillFields(page);
        return TRUE;
    case kFindFocus:
        FindFocus(page);
        return TRUE;
    case WM_DRAWITEM:
        return w == IDC_PHONE_BOOK && page.phoneBookButton.Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(l));
    case WM_LBUTTONDOWN: // beside all controls: the focus stays, the list does not
        SendDlgItemMessageW(page.dialog, IDC_NAME_BOX, CB_SHOWDROPDOWN, FALSE, 0);
        return FALSE;
    case WM_DESTROY:
        DetachTypeAhead(page.nameBox);
        return FALSE;
    default:
        return AnswerHelp(page, page.dialog, message, w, l, kControls);
    }
}

// ---- interface ------------------------------------------------------------------------------------------------------

INT_PTR CALLBACK FaxJobPageProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l) noexcept
{
    return PageProcedure<FaxJobPage>(dialog, message, w, l);
}

std::span<const Control> FaxJobPageControls() noexcept
{
    return kControls;
}

void RefreshNameBoxList(FaxJobPage& page)
{
    if (page.nameBox.combo == nullptr)
        return;
    std::vector<SuggestionItem> items;
    for (const PhoneBookItem* const item : page.recent->Slots()) {
        if (item != nullptr)
            items.push_back({item->GetName(), item});
    }
    SetSuggestionItems(page.nameBox, std::move(items));
    RefreshGroup(page);
}

bool ValidateFaxJobPage(FaxJobPage& page)
{
    SettleFields(page);
    const std::vector<SendProblem> problems = CheckSend(FactsOf(page));
    for (const SendProblem problem : problems)
        page.errorField = ReportProblem(page, problem);
    return problems.empty();
}

bool PrepareFaxJobPage(FaxJobPage& page)
{
    FaxJobData& draft = page.draft.emplace().Get();
    if (!ListShowsJob(page) || !PrepareTypedRecipient(page, draft))
        return false;
    if (page.coverPageIsOld) {
        ReloadCoverPage(page);
        return false; // the user has not seen it yet
    }
    SaveCoverPageFields(page.dialog, draft);
    SetBillingCode(draft, ReadField(ControlOf(page, IDC_BILLING_CODE)).c_str());
    return draft.BillingCode != nullptr;
}

void SaveFaxJobPage(FaxJobPage& page) noexcept
{
    FaxJobData& job = *page.job;
    FaxJobData& draft = page.draft->Get();
    page.sentTyped = draft.RecipientCount > 0 ? RecipientsOf(draft).front() : nullptr;
    MoveRecipients(draft, job);
    // The user's defaults may just have replaced the job's cover page: the fields are then the older ones.
    if (job.CoverPageFromDefaults == 0)
        ExchangeCoverPage(job, draft);
    ExchangeBillingCode(job, draft);
    page.draft.reset();
    job.Cancelled = 0;
}

void RememberTypedRecipient(FaxJobPage& page)
{
    if (const PhoneBookEntry* const entry = AsEntry(std::exchange(page.sentTyped, nullptr)))
        RememberRecent(page, *entry);
}

} // namespace qx
