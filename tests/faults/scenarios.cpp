#include "scenarios.h"

#include "res/add_recipients_ids.h"
#include "res/cover_page_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"
#include "res/setup_page_ids.h"

#include <algorithm>
#include <commctrl.h>
#include <prsht.h>
#include <winspool.h>

namespace qx::test {

namespace {

using Items = std::vector<SavedItem>;
using Script = std::vector<ScriptedUser::Step>;

constexpr int kFaxJobPage = 0, kSetupPage = 1;
constexpr DWORD kOutcomeUnknown = 7; // what the driver would find had the module not written an outcome

const Recipient kBob{L"Bob", L"22", L"Mill"};
const Recipient kAnna{L"Anna", L"11", L"Orchard"};

std::wstring TextIn(HWND page, int id)
{
    wchar_t text[1024] = L"";
    GetDlgItemTextW(page, id, text, 1024);
    return text;
}

std::wstring CellText(HWND list, int row, int column)
{
    wchar_t text[260] = L"";
    ListView_GetItemText(list, row, column, text, 260);
    return text;
}

Job ShownIn(HWND sheet)
{
    Job shown;
    const HWND page = PropSheet_GetCurrentPageHwnd(sheet);
    const HWND list = GetDlgItem(page, IDC_RECIPIENTS);
    for (int row = 0; row < ListView_GetItemCount(list); ++row)
        shown.recipients.push_back({CellText(list, row, 0), CellText(list, row, 1), CellText(list, row, 2)});
    if (const std::wstring number = TextIn(page, IDC_FAX_NUMBER); !number.empty())
        shown.recipients.push_back({TextIn(page, IDC_NAME_BOX), number, TextIn(page, IDC_COMPANY)});
    shown.coverPage = IsDlgButtonChecked(page, IDC_COVER_PAGE) == BST_CHECKED;
    if (shown.coverPage) {
        shown.notes = TextIn(page, IDC_NOTES);
        shown.subject = TextIn(page, IDC_SUBJECT);
    }
    shown.billingCode = TextIn(page, IDC_BILLING_CODE);
    if (const HWND setup = PropSheet_IndexToHwnd(sheet, kSetupPage); setup != nullptr)
        shown.senderName = TextIn(setup, IDC_SENDER_NAME);
    return shown;
}

std::wstring OrNothing(const wchar_t* text)
{
    return text != nullptr ? text : L"";
}

Job JobOf(const FaxJobData& record)
{
    Job job;
    for (INT32 i = 0; i < record.RecipientCount; ++i) {
        const FaxRecipient& recipient = *record.Recipients.Items[i];
        job.recipients.push_back(
            {OrNothing(recipient.Name), OrNothing(recipient.FaxNumber), OrNothing(recipient.Company)});
    }
    job.coverPage = record.AddCoverPage != 0;
    job.notes = OrNothing(record.CoverPageNotes);
    job.subject = OrNothing(record.CoverPageSubject);
    job.billingCode = OrNothing(record.BillingCode);
    job.senderName = OrNothing(record.SenderName);
    return job;
}

std::string Difference(const Job& job, const Job& shown)
{
    std::string what;
    if (job.recipients != shown.recipients)
        what += " recipients";
    if (job.coverPage != shown.coverPage || job.notes != shown.notes || job.subject != shown.subject)
        what += " cover page";
    if (job.billingCode != shown.billingCode)
        what += " billing code";
    if (job.senderName != shown.senderName)
        what += " sender";
    return what;
}

void Fill(ScriptedUser& user, const Recipient& recipient)
{
    user.Paste(IDC_NAME_BOX, recipient.name);
    user.Paste(IDC_FAX_NUMBER, recipient.faxNumber);
    user.Paste(IDC_COMPANY, recipient.company);
}

// ---- sessions that may end with Send

class Sending : public Scenario {
protected:
    // What it shows counts. Where Send is refused it is pressed once more.
    void AddSend(Script& steps)
    {
        shown_ = {};
        for (int press = 0; press < 2; ++press)
            steps.emplace_back([this](ScriptedUser& user) {
                if (!user.IsSheet())
                    throw std::runtime_error("no sheet");
                user.Control(IDC_FAX_NUMBER);
                shown_ = ShownIn(user.Dialog());
                user.PressSheet(IDOK);
            });
    }

    Verdict JudgeSending(const FaxJobData& record, const Job& typed) const
    {
        if (record.Cancelled != 0)
            return JudgeUnsent(record);
        const Job sent = JobOf(record);
        if (const std::string difference = Difference(sent, shown_); !difference.empty())
            return {Kind::Wrong, "sent otherwise:" + difference};
        if (const std::string difference = Difference(sent, typed); !difference.empty())
            return {Kind::Less, "sent as shown, not as typed"};
        return {Kind::AsAsked, "sent"};
    }

private:
    Job shown_;
};

class TypeAndSend : public Sending {
    Script Steps() override
    {
        Script steps{
            [](ScriptedUser& user) {
                user.GoToPage(kFaxJobPage);
                Fill(user, kBob);
                user.Press(IDC_TO);
                Fill(user, kAnna);
                user.Check(IDC_COVER_PAGE, true);
                user.Paste(IDC_NOTES, L"\r\nline 2");
                user.Paste(IDC_SUBJECT, L"Offer 7");
                user.Paste(IDC_BILLING_CODE, L"0042");
                user.GoToPage(kSetupPage);
            },
            [](ScriptedUser& user) {
                user.Paste(IDC_SENDER_NAME, L"Carol");
                user.GoToPage(kFaxJobPage);
            },
        };
        AddSend(steps);
        return steps;
    }
    Verdict Judge(const FaxJobData& record) override
    {
        const Verdict sending =
            JudgeSending(record, {{kBob, kAnna}, true, L"\r\nline 2", L"Offer 7", L"0042", L"Carol"});
        const Verdict book = JudgeBook({});
        return book.kind == Kind::Wrong ? book : sending;
    }
};

class OpenAndCancel : public Scenario {
    Script Steps() override { return {}; }
    Verdict Judge(const FaxJobData& record) override
    {
        const Verdict book = JudgeBook({});
        if (book.kind == Kind::Wrong)
            return book;
        const Verdict unsent = JudgeUnsent(record);
        return record.Cancelled == TRUE ? Verdict{Kind::AsAsked, "cancelled"} : unsent;
    }
};

// ---- the phone book

class AddToPhoneBook : public Scenario {
    Script Steps() override
    {
        Script steps;
        for (const Recipient* const recipient : {&kBob, &kAnna})
            steps.emplace_back([recipient](ScriptedUser& user) {
                user.GoToPage(kFaxJobPage);
                Fill(user, *recipient);
                user.Press(IDC_ADD_TO_PHONE_BOOK);
            });
        return steps;
    }
    Verdict Judge(const FaxJobData& record) override
    {
        if (record.Cancelled == 0)
            return {Kind::Wrong, "sent"};
        const SavedItem bob{kBob.name, kBob.faxNumber, kBob.company, {}};
        const SavedItem anna{kAnna.name, kAnna.faxNumber, kAnna.company, {}};
        std::vector<Items> accepted;
        for (const Items& added : {Items{bob, anna}, Items{bob}, Items{anna}}) {
            accepted.push_back(OldBook());
            accepted.back().insert(accepted.back().end(), added.begin(), added.end());
        }
        return JudgeBook(accepted);
    }
};

} // namespace

// ---- what all have in common

SessionOptions Scenario::Options() const
{
    SessionOptions options = WithDevice(L"EMAIL-SERVICE-OPERATIONAL", 1u);
    options.printer.SetDevice(L"FAX_BILLING_CODE_ENABLED", 1u);
    return options;
}

BookText Scenario::Book() const
{
    return BookText()
        .Entry(1, L"Dora", L"31", L"Dairy")
        .Entry(2, L"Emil", L"32", L"Estate & Co")
        .Entry(3, L"Finn", L"33")
        .Entry(4, L"Gerda", L"34", L"Garage")
        .Entry(5, L"Hans", L"35")
        .Group(6, L"Team", {1, 3, 5})
        .Group(7, L"Two", {2, 4});
}

void Scenario::Reset()
{
    namespace fs = std::filesystem;
    const fs::path file = Session().PhoneBookFile();
    for (const auto& entry : fs::directory_iterator(file.parent_path())) {
        if (entry.path().filename().wstring().starts_with(file.filename().wstring())) {
            SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
            fs::remove(entry.path());
        }
    }
    oldBytes_ = Book().Text();
    Session().WritePhoneBook(oldBytes_);
    if (oldBook_.empty())
        oldBook_ = Session().SavedBook();
    Prepare();
}

Verdict Scenario::JudgeUnsent(const FaxJobData& record) const
{
    if (record.Cancelled != TRUE && record.Cancelled != kOutcomeUnknown)
        return {Kind::Wrong, "an outcome that there is not"};
    return {Kind::Less, record.Cancelled == TRUE ? "cancelled" : "no sheet"};
}

Verdict Scenario::JudgeBook(const std::vector<Items>& accepted) const
{
    namespace fs = std::filesystem;
    const fs::path file = Session().PhoneBookFile();
    bool copied = false;
    for (const auto& entry : fs::directory_iterator(file.parent_path())) {
        const std::wstring name = entry.path().filename().wstring();
        if (!name.starts_with(file.filename().wstring()) || name == file.filename())
            continue;
        if (name.ends_with(L".bak"))
            copied = copied || ReadBytes(entry.path()) == oldBytes_;
    }
    // In no order: sorting may fail.
    const auto sorted = [](Items items) {
        std::ranges::sort(items, {}, &SavedItem::name);
        return items;
    };
    const Items now = sorted(Session().SavedBook());
    if (!accepted.empty() && now == sorted(accepted.front()))
        return {Kind::AsAsked, "saved"};
    if (now == sorted(OldBook()))
        return {accepted.empty() ? Kind::AsAsked : Kind::Less, "book as it was"};
    if (std::ranges::any_of(accepted, [&](const Items& items) { return now == sorted(items); }))
        return {Kind::Less, "saved in part"};
    if (copied)
        return {Kind::Less, "book in the kept copy"};
    return {Kind::Wrong, "book lost: " + std::to_string(now.size()) + " items"};
}

template <class Made> std::unique_ptr<Scenario> Make()
{
    return std::make_unique<Made>();
}

std::span<const NamedScenario> AllScenarios()
{
    static constexpr NamedScenario kScenarios[] = {
        {"type_and_send", Make<TypeAndSend>},
        {"add_to_phone_book", Make<AddToPhoneBook>},
        {"open_and_cancel", Make<OpenAndCancel>},
    };
    return kScenarios;
}

} // namespace qx::test
