#include "pages/fax_job_page.h"

#include "dialog/access_key.h"
#include "pages/send_button.h"
#include "pages/send_problems.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/recent_list.h"
#include "phonebook/ui/add_recipients_dialog.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/bitmaps_ids.h"
#include "settings/device_state.h"

#include <utility>
#include <vector>

namespace qx {

namespace {

// ---- tables ---------------------------------------------------------------------------------------------------------

constexpr auto kControls =
    Joined(std::to_array<Control>({
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
               {.id = IDC_RECIPIENT_COUNT, .topic = 15588},
               {.id = IDC_RECIPIENTS_LABEL, .text = 5213, .fallback = L"Fax Recipients:", .topic = 15588},
               {.id = IDC_RECIPIENTS, .topic = 15588},
               {.id = IDC_DELETE, .text = 5330, .fallback = L"Delete", .topic = 15590},
               {.id = IDC_BILLING_GROUP, .text = 5221, .fallback = L"Billing Information"},
               {.id = IDC_BILLING_LABEL, .text = 5222, .fallback = L"Billing Code", .topic = 15595},
               {.id = IDC_BILLING_CODE,
                .limit = kBillingCodeLimit,
                .topic = 15595,
                .leftToRight = true,
                .noInputMethod = true},
           }),
           CoverPageControls({5218, L"Notes:"}));
static_assert(IdsAreUnique(kControls));

// Kept: the warning carries the icon of errors.
constexpr Message kDuplicate{{5257, L"This is a duplicate entry.Please enter a different name or fax number"},
                             MB_OK | MB_ICONSTOP,
                             MessageTitle::Warning};

// ---- recipients -----------------------------------------------------------------------------------------------------

// "3 / 100", the same in every language. From right to left it begins with a mark, or its numbers would change places.
void ShowRecipientCount(const FaxJobPage& page)
{
    const HWND label = GetDlgItem(page.dialog, IDC_RECIPIENT_COUNT);
    const std::wstring count = (IsMirrored(label) ? L"\u200E" : L"") + std::to_wstring(page.recipients.Count()) +
                               L" / " + std::to_wstring(kMaxRecipients);
    if (WindowText(label) != count)
        SetWindowTextW(label, count.c_str());
}

// After every change of the fields, the list or its selection.
void UpdateRecipientButtons(FaxJobPage& page)
{
    ShowRecipientCount(page);
    RecipientFacts facts = FactsOf(page.fields);
    facts.selected = page.recipients.HasSelection();
    const RecipientButtons buttons = ButtonsFor(facts);
    EnableControl(page.dialog, IDC_TO, buttons.to);
    EnableControl(page.dialog, IDC_CLEAR_FIELDS, buttons.clear);
    EnableControl(page.dialog, IDC_ADD_TO_PHONE_BOOK, buttons.addToPhoneBook);
    EnableControl(page.dialog, IDC_DELETE, buttons.remove);
}

void Settle(FaxJobPage& page)
{
    SettleFields(page.fields);
    UpdateRecipientButtons(page);
}

void ClearRecipientFields(FaxJobPage& page)
{
    ClearFields(page.fields);
    UpdateRecipientButtons(page);
    FocusControl(page.dialog, IDC_NAME_BOX);
}

void ReportTooManyRecipients(const FaxJobPage& page)
{
    ReportProblem(page, page.dialog, SendProblem::TooManyRecipients);
}

void AddGroupMembers(FaxJobPage& page, const PhoneBookGroup& group)
{
    if (!GroupFits(page.recipients.Count(), group.Members().size()))
        return ReportTooManyRecipients(page);
    std::vector<UniqueItem<PhoneBookEntry>> entries;
    for (const PhoneBookEntry* const member : group.Members())
        entries.push_back(MakeRecipient(member->Texts()));
    if (!page.recipients.Add(entries))
        return;
    RememberRecent(page, group);
    ClearRecipientFields(page);
}

void AddEntry(FaxJobPage& page)
{
    if (!RecipientFits(page.recipients.Count()))
        return ReportTooManyRecipients(page);
    UniqueItem<PhoneBookEntry> entry = MakeRecipient(ReadRecipient(page.fields));
    const PhoneBookEntry& added = *entry; // the record's, and there to stay for now
    if (!page.recipients.Add({&entry, 1}))
        return;
    ClearRecipientFields(page);
    RememberRecent(page, added);
}

// What the fields show is what is added: a group while its text stands in them, else what was typed or picked.
void AddToRecipients(FaxJobPage& page)
{
    if (!page.recipients.ShowsJob())
        return UpdateRecipientButtons(page);
    Settle(page);
    if (!IsWindowEnabled(GetDlgItem(page.dialog, IDC_TO)))
        return;
    if (page.fields.group != nullptr)
        AddGroupMembers(page, *page.fields.group);
    else
        AddEntry(page);
}

void DeleteSelected(FaxJobPage& page)
{
    const bool showsJob = page.recipients.ShowsJob();
    if (showsJob)
        page.recipients.RemoveSelected();
    UpdateRecipientButtons(page);
    if (showsJob)
        FocusControl(page.dialog, IDC_RECIPIENTS);
}

void AnswerListKey(FaxJobPage& page, WORD key)
{
    if (key == VK_DELETE && page.recipients.HasSelection())
        DeleteSelected(page);
    else if (key == 'A' && GetKeyState(VK_CONTROL) < 0)
        page.recipients.SelectAll();
}

// ---- the phone book -------------------------------------------------------------------------------------------------

void PickFromPhoneBook(FaxJobPage& page)
{
    AddRecipientsContext context{{page, *page.book}, *page.job, page.recent};
    ShowModal<kAddRecipientsDialog>(page.dialog, context);
    // Whatever its result: the picker writes the record itself, and what it changed in the book is in the file.
    page.recipients.Refill();
    page.book->Reload();
    RefreshNameBoxList(page);
}

bool AddToPhoneBook(FaxJobPage& page, const Recipient& recipient)
{
    PhoneBookEntry* const entry = page.book->Store().NewEntry();
    entry->SetId(page.book->NextId()); // Kept: drawn before the duplicate test, a refused entry leaves a gap
    entry->SetTexts(recipient);
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
    Settle(page);
    const Recipient recipient = ReadRecipient(page.fields);
    if (page.book->GetCount() >= kMaxPhoneBookItems) {
        ShowFaxMessage(page, kPhoneBookFull, page.dialog);
    } else if (!recipient.name.empty() && !recipient.faxNumber.empty()) {
        if (AddToPhoneBook(page, recipient)) {
            RefreshNameBoxList(page);
            BroadcastPhoneBookChanged();
        } else {
            ShowFaxMessage(page, kDuplicate, page.dialog);
        }
    }
    FocusControl(page.dialog, IDC_NAME_BOX);
}

// ---- cover page and billing code ------------------------------------------------------------------------------------

void LoadCoverPage(FaxJobPage& page)
{
    LoadCoverPageFields(page.coverPage, *page.job);
    if (page.job->CoverPageLock == kCoverPageLocked)
        LockCoverPageToOverlay(page.coverPage);
    // Last: where there can be no cover page, none is forced on either.
    if (IsSpoolerThunkHost())
        ForbidCoverPage(page.coverPage);
}

// Noted before, since the fields may not take it.
void ReloadCoverPage(FaxJobPage& page)
{
    page.coverPageIsOld = true;
    LoadCoverPage(page);
    page.coverPageIsOld = false;
}

// The room of the hidden billing code: the list takes it, and what lies between them moves down.
void GiveRoomToRecipients(HWND dialog)
{
    const auto bottomOf = [dialog](int id) { return PlaceOf(GetDlgItem(dialog, id)).bottom; };
    const LONG room = bottomOf(IDC_BILLING_GROUP) - bottomOf(IDC_COVER_PAGE_GROUP);
    const auto move = [dialog](int id, LONG top, LONG bottom) {
        const HWND control = GetDlgItem(dialog, id);
        RECT place = PlaceOf(control);
        place.top += top;
        place.bottom += bottom;
        SetPlace(control, place);
    };
    for (const int id : {IDC_FAX_TO_GROUP, IDC_RECIPIENTS})
        move(id, 0, room);
    for (const Control& row : CoverPageControls({}))
        move(row.id, room, room);
}

void LoadBillingCode(FaxJobPage& page)
{
    if (page.job->BillingCodeEnabled != 0) {
        SetFilteredText(page.billingCode, page.dialog, IDC_BILLING_CODE, page.job->BillingCode);
        return;
    }
    for (const int id : {IDC_BILLING_GROUP, IDC_BILLING_LABEL, IDC_BILLING_CODE})
        ShowControl(page.dialog, id, false);
    GiveRoomToRecipients(page.dialog);
}

std::wstring BillingCode(const FaxJobPage& page)
{
    return FieldText(page.dialog, IDC_BILLING_CODE, kTextUnits - 1);
}

// ---- the sheet's questions ------------------------------------------------------------------------------------------

// The Setup page may have copied the user's defaults into the job since the page was last seen.
void Activate(FaxJobPage& page)
{
    FaxJobData& job = *page.job;
    if (job.DefaultsSaved != 0 || (job.ApplyDefaults != 0 && job.CoverPageFromDefaults != 0)) {
        job.DefaultsSaved = 0;
        job.CoverPageFromDefaults = 0;
        ReloadCoverPage(page);
    }
    RefreshNameBoxList(page);
}

SendFacts FactsOf(const FaxJobPage& page)
{
    return {.rows = page.recipients.Count(), // a row each, or the Send is refused
            .typed = HasFaxNumber(page.fields),
            .billingCodeWanted = page.job->BillingCodeEnabled != 0,
            .billingCodeLength = BillingCode(page).size(),
            .billingCodeMinLength = page.job->BillingCodeMinLength,
            .image = CheckImage(page.coverPage)};
}

// Shows a message for everything that keeps the job from being sent, in order. Without a message a Send is refused that
// would leave out whose number was in sight when the user pressed it.
bool ValidateFaxJobPage(FaxJobPage& page)
{
    Settle(page);
    const bool numberTaken = std::exchange(page.fields.numberTaken, false);
    if (numberTaken)
        page.errorField = IDC_FAX_NUMBER; // the user has not seen it yet
    const std::vector<SendProblem> problems = CheckSend(FactsOf(page));
    for (const SendProblem problem : problems)
        page.errorField = ReportProblem(page, page.dialog, problem, page.job->BillingCodeMinLength);
    return problems.empty() && !numberTaken;
}

// Kept: a group that still stands in the fields has no fax number of its own, and is left out.
UniqueItem<PhoneBookEntry> TypedRecipient(const FaxJobPage& page)
{
    const Recipient recipient = ReadRecipient(page.fields);
    return recipient.faxNumber.empty() ? nullptr : MakeRecipient(recipient);
}

bool PrepareFaxJobPage(FaxJobPage& page)
{
    if (!page.recipients.ShowsJob() || !page.recipients.Prepare(TypedRecipient(page))) {
        UpdateRecipientButtons(page);
        return false;
    }
    if (page.coverPageIsOld) {
        ReloadCoverPage(page);
        return false; // the user has not seen it yet
    }
    FaxJobData& draft = page.draft.emplace().Get();
    SaveCoverPageFields(page.coverPage, draft);
    SetBillingCode(draft, BillingCode(page).c_str());
    return draft.BillingCode != nullptr;
}

// The text of a group covers the fax number.
int ErrorField(const FaxJobPage& page)
{
    return page.errorField == IDC_FAX_NUMBER ? NumberFieldOf(page.fields) : page.errorField;
}

constexpr PageDuties<FaxJobPage> kDuties{.place = SendRound::kFaxJob,
                                         .activate = Activate,
                                         .validate = ValidateFaxJobPage,
                                         .prepare = PrepareFaxJobPage,
                                         .errorField = ErrorField};

// ---- messages -------------------------------------------------------------------------------------------------------

INT_PTR AnswerCommand(FaxJobPage& page, int control, UINT code)
{
    const bool inFields = AnswerCommand(page.fields, control, code) != FALSE;
    if (inFields)
        UpdateRecipientButtons(page);
    return inFields || AnswerCommand(page.coverPage, control, code);
}

INT_PTR AnswerNotification(FaxJobPage& page, const NMHDR& header)
{
    if (header.idFrom == IDC_RECIPIENTS && header.code == LVN_KEYDOWN) {
        AnswerListKey(page, reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey);
        return TRUE;
    }
    return AnswerSheet(page, kDuties, header.code);
}

constexpr Route<FaxJobPage> kRoutes[] = {
    {IDC_PHONE_BOOK, BN_CLICKED, PickFromPhoneBook},
    {IDC_CLEAR_FIELDS, BN_CLICKED, ClearRecipientFields},
    {IDC_ADD_TO_PHONE_BOOK, BN_CLICKED, AddFieldsToPhoneBook},
    {IDC_TO, BN_CLICKED, AddToRecipients},
    {IDC_DELETE, BN_CLICKED, DeleteSelected},
    {IDC_RECIPIENTS, static_cast<UINT>(LVN_ITEMCHANGED), UpdateRecipientButtons},
    {IDC_RECIPIENTS, static_cast<UINT>(NM_SETFOCUS), UpdateRecipientButtons},
    {IDC_BILLING_CODE, EN_CHANGE, FilterField<&FaxJobPage::billingCode, IDC_BILLING_CODE>},
};

INT_PTR AnswerOther(FaxJobPage& page, UINT message, WPARAM w, LPARAM l)
{
    switch (message) {
    case WM_COMMAND:
        return AnswerCommand(page, LOWORD(w), HIWORD(w));
    case WM_NOTIFY:
        return AnswerNotification(page, *reinterpret_cast<const NMHDR*>(l));
    case kSuggestionChosen:
        FillFieldsFromNameBox(page.fields);
        UpdateRecipientButtons(page);
        return TRUE;
    case kFindFocus:
        FindFocus(page.fields);
        return TRUE;
    case WM_DRAWITEM:
        return w == IDC_PHONE_BOOK && page.phoneBookButton.Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(l));
    case WM_LBUTTONDOWN: // beside all controls: the focus stays, the list does not
        SendMessageW(page.fields.nameBox.combo, CB_SHOWDROPDOWN, FALSE, 0);
        return FALSE;
    case WM_DESTROY:
        DetachTypeAhead(page.fields.nameBox);
        return FALSE;
    default:
        return FALSE;
    }
}

// ---- start-up -------------------------------------------------------------------------------------------------------

// Its text is a dialog's title as well, in which no letter is marked: a letter that nothing else has is marked here.
void GivePhoneBookButtonAKey(FaxJobPage& page)
{
    std::wstring taken = AccessKeysIn(GetParent(page.dialog));
    for (const Text& caption : {kSendText, kPreviewAndSendText}) // the button has the one or the other
        taken += AccessKeyOf(LocalizedText(page, caption));
    for (const Control& control : kControls) {
        if (control.text != 0 && control.id != IDC_PHONE_BOOK)
            taken += AccessKeyOf(LocalizedText(page, {control.text, control.fallback}));
    }
    const std::wstring text = WindowText(GetDlgItem(page.dialog, IDC_PHONE_BOOK));
    page.phoneBookButton.Name(text, WithAccessKey(text, taken));
}

void Fill(FaxJobPage& page)
{
    AttachRecipientFields(page.fields, page, page.dialog);
    OfferNames(page.fields, *page.recent);
    page.recipients.Attach(page, GetDlgItem(page.dialog, IDC_RECIPIENTS), *page.job);
    UpdateRecipientButtons(page);
    LoadBillingCode(page);
    page.coverPage.dialog = page.dialog;
    LoadCoverPage(page);
    page.phoneBookButton.Attach(GetDlgItem(page.dialog, IDC_PHONE_BOOK), IDB_PHONE_BOOK);
    HookSheet(page);
    GivePhoneBookButtonAKey(page); // last: the sheet's buttons have their captions
}

void CouldNotBeFilled(FaxJobPage& page) noexcept
{
    DetachTypeAhead(page.fields.nameBox); // the page hears of its end no more
    EndAsCancelled(page);
}

} // namespace

constexpr Dialog<FaxJobPage> kFaxJobPage{
    .ids = {IDD_FAX_JOB_PAGE, IDD_FAX_JOB_PAGE_RTL},
    .controls = kControls,
    .routes = kRoutes,
    .fill = Fill,
    .other = AnswerOther,
    .couldNotBeFilled = CouldNotBeFilled,
    .announce = [](FaxJobPage& page, Announcements& announcements) { AnnounceFields(page.fields, announcements); },
};

void RefreshNameBoxList(FaxJobPage& page)
{
    if (page.fields.nameBox.combo == nullptr)
        return;
    OfferNames(page.fields, *page.recent);
    UpdateRecipientButtons(page);
}

const PhoneBookEntry* SaveFaxJobPage(FaxJobPage& page) noexcept
{
    FaxJobData& job = *page.job;
    FaxJobData& draft = page.draft->Get(); // NOLINT(bugprone-unchecked-optional-access): the page has accepted
    const PhoneBookEntry* const typed = page.recipients.Send();
    // The user's defaults may just have replaced the job's cover page: the fields are then the older ones.
    if (job.CoverPageFromDefaults == 0)
        ExchangeCoverPage(job, draft);
    std::swap(job.BillingCode, draft.BillingCode); // with its owner
    page.draft.reset();
    job.Cancelled = 0;
    return typed;
}

void RememberRecent(FaxJobPage& page, const PhoneBookItem& item)
{
    page.recent->AddRecent(&item, page.book);
    Guarded([&] { page.recent->Save(); }); // the name box must not go on showing an item that has dropped out
    RefreshNameBoxList(page);
}

} // namespace qx
